#include "gui_harness.h"

#include <gdk/x11/gdkx.h>
#include <glib.h>

#include <chrono>
#include <thread>

#include "editor/platform/deck_window.h"
#include "present/action_trust.h"
#include "present/presenter_display_settings.h"
#include "support/temp_dir.h"

namespace lectern::testing {

namespace {

std::string windowId(Gtk::Window& window) {
    auto surface = window.get_surface();
    if (!surface || !GDK_IS_X11_SURFACE(surface->gobj())) return {};
    return std::to_string(gdk_x11_surface_get_xid(surface->gobj()));
}

// A point of a widget in the coordinates of its window's X window.
std::pair<int, int> surfacePoint(Gtk::Widget& widget, double x, double y) {
    auto* root = widget.get_root();
    auto* native = widget.get_native();
    graphene_point_t in{static_cast<float>(x), static_cast<float>(y)}, out{};
    if (!gtk_widget_compute_point(widget.gobj(), GTK_WIDGET(root->gobj()), &in, &out)) return {-1, -1};
    double dx = 0, dy = 0;
    gtk_native_get_surface_transform(native->gobj(), &dx, &dy);
    return {static_cast<int>(out.x + dx), static_cast<int>(out.y + dy)};
}

}  // namespace

bool haveDisplay() {
    const char* display = g_getenv("DISPLAY");
    return display && *display;
}

PreferencesStore& preferences() {
    static TempDir folder;
    static PreferencesStore store(folder / "preferences.json");
    return store;
}

LecternApplication& app() {
    static Glib::RefPtr<LecternApplication> application = [] {
        // Keep the tests on X11, where xdotool reaches the windows.
        g_setenv("GDK_BACKEND", "x11", true);
        // Browser profiles and web caches in a folder of the tests' own.
        static TempDir home;
        g_setenv("XDG_DATA_HOME", (home / "data").c_str(), true);
        g_setenv("XDG_CACHE_HOME", (home / "cache").c_str(), true);
        // Recovery copies and the places decks were left at, too.
        g_setenv("XDG_STATE_HOME", (home / "state").c_str(), true);
        // And the desktop's settings, such as which folder takes downloads.
        g_setenv("XDG_CONFIG_HOME", (home / "config").c_str(), true);
        g_setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", true);
        auto created = LecternApplication::create(Gio::Application::Flags::NON_UNIQUE, &preferences());
        created->register_application();
        // Keep the application alive while tests open and close windows.
        created->hold();
        return created;
    }();
    return *application;
}

void closeAllWindows() {
    // The main windows take their own sheets and panels with them; what is
    // left after that goes one by one, each held while it closes.
    app().activate_action("quit");
    pumpUntil([] { return app().get_windows().empty(); }, 5);
    for (auto* window : app().get_windows()) {
        g_object_ref(window->gobj());
        gtk_window_destroy(window->gobj());
        g_object_unref(window->gobj());
    }
    pumpUntil([] { return app().get_windows().empty(); }, 5);
    pumpFor(0.1);
}

bool pumpUntil(const std::function<bool()>& done, double seconds) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        if (!g_main_context_iteration(nullptr, false)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

void pumpFor(double seconds) {
    pumpUntil([] { return false; }, seconds);
}

int runProgram(const std::vector<std::string>& argv, std::string* output) {
    std::vector<char*> args;
    for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    char* out = nullptr;
    int status = 0;
    GError* error = nullptr;
    bool started = g_spawn_sync(nullptr, args.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &out, nullptr,
                                &status, &error);
    if (!started) {
        g_clear_error(&error);
        return -1;
    }
    if (output) *output = out ? out : "";
    g_free(out);
    return g_spawn_check_wait_status(status, nullptr) ? 0 : (WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

// Until the widget's window has been through a whole frame: a widget just
// shown or moved has its place only after the layout of the next one.
static void waitForFrame(Gtk::Widget& widget) {
    GdkFrameClock* clock = gtk_widget_get_frame_clock(widget.gobj());
    if (!clock) return;
    bool painted = false;
    gulong handler = g_signal_connect(clock, "after-paint",
                                      G_CALLBACK(+[](GdkFrameClock*, gpointer done) { *static_cast<bool*>(done) = true; }),
                                      &painted);
    gdk_frame_clock_request_phase(clock, GDK_FRAME_CLOCK_PHASE_PAINT);
    pumpUntil([&] { return painted; }, 1);
    g_signal_handler_disconnect(clock, handler);
}

void focus(Gtk::Window& window) {
    pumpUntil([&] { return window.get_mapped(); });
    runProgram({"xdotool", "windowfocus", windowId(window)});
    pumpUntil([&] { return window.is_active(); }, 2);
    waitForFrame(window);
}

void pressKeys(Gtk::Window& window, const std::vector<std::string>& keys) {
    focus(window);
    std::vector<std::string> argv{"xdotool", "key", "--delay", "30"};
    argv.insert(argv.end(), keys.begin(), keys.end());
    runProgram(argv);
    pumpFor(0.15);
}

void movePointer(Gtk::Widget& widget, double x, double y) {
    waitForFrame(widget);
    auto [sx, sy] = surfacePoint(widget, x, y);
    auto* window = dynamic_cast<Gtk::Window*>(widget.get_root());
    runProgram({"xdotool", "mousemove", "--window", windowId(*window), std::to_string(sx), std::to_string(sy)});
    pumpFor(0.1);
}

void click(Gtk::Widget& widget, double x, double y) {
    movePointer(widget, x, y);
    runProgram({"xdotool", "click", "1"});
    pumpFor(0.15);
}

void doubleClick(Gtk::Widget& widget, double x, double y, double seconds) {
    movePointer(widget, x, y);
    runProgram({"xdotool", "click", "--repeat", "2", "--delay", std::to_string(static_cast<int>(seconds * 1000)), "1"});
    pumpFor(0.15);
}

void drag(Gtk::Widget& widget, double fromX, double fromY, double toX, double toY) {
    movePointer(widget, fromX, fromY);
    runProgram({"xdotool", "mousedown", "1"});
    pumpFor(0.05);
    const int steps = 12;
    for (int i = 1; i <= steps; ++i) {
        double t = static_cast<double>(i) / steps;
        auto [sx, sy] = surfacePoint(widget, fromX + (toX - fromX) * t, fromY + (toY - fromY) * t);
        auto* window = dynamic_cast<Gtk::Window*>(widget.get_root());
        runProgram({"xdotool", "mousemove", "--window", windowId(*window), std::to_string(sx), std::to_string(sy)});
        pumpFor(0.03);
    }
    pumpFor(0.1);
    runProgram({"xdotool", "mouseup", "1"});
    pumpFor(0.2);
}

void dragFileOnto(const std::filesystem::path& file, Gtk::Widget& target, const std::function<void()>& hovering) {
    Gtk::Window source;
    source.set_default_size(160, 120);
    source.set_title("Files");
    Gtk::Label name(file.filename().string());
    source.set_child(name);
    auto dragSource = Gtk::DragSource::create();
    dragSource->set_actions(Gdk::DragAction::COPY);
    dragSource->signal_prepare().connect(
        [&](double, double) {
            GFile* dragged = g_file_new_for_path(file.c_str());
            GSList* files = g_slist_append(nullptr, dragged);
            GdkContentProvider* provider = gdk_content_provider_new_typed(GDK_TYPE_FILE_LIST, files);
            g_slist_free(files);
            g_object_unref(dragged);
            return Glib::wrap(provider);
        },
        false);
    // A refused drag ends after its icon has flown back; until then it
    // holds the pointer and keyboard of the whole display.
    bool ended = false;
    auto end = dragSource->signal_drag_end().connect([&](const Glib::RefPtr<Gdk::Drag>&, bool) { ended = true; });
    name.add_controller(dragSource);
    source.present();
    pumpUntil([&] { return source.get_mapped(); });
    pumpFor(0.3);

    movePointer(name, 40, 40);
    runProgram({"xdotool", "mousedown", "1"});
    for (int step = 1; step <= 6; ++step) movePointer(name, 40 + step * 4, 40 + step * 3);
    for (int step = 0; step <= 10; ++step) {
        movePointer(target, target.get_width() * (0.4 + step * 0.02), target.get_height() * 0.5);
    }
    pumpFor(0.2);
    if (hovering) hovering();
    runProgram({"xdotool", "mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return ended; }, 5));
    end.disconnect();
    source.close();
}

void typeText(Gtk::Window& window, const std::string& text) {
    focus(window);
    runProgram({"xdotool", "type", "--delay", "20", "--", text});
    pumpFor(0.15);
}

std::vector<Gtk::Widget*> named(Gtk::Widget& root, const std::string& name) {
    std::vector<Gtk::Widget*> out;
    auto found = findWidgets(GTK_WIDGET(root.gobj()), [&](GtkWidget* widget) {
        if (!gtk_widget_is_drawable(widget) || GTK_IS_LABEL(widget)) return false;
        char* mismatch = gtk_test_accessible_check_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                                            name.c_str());
        g_free(mismatch);
        return mismatch == nullptr;
    });
    for (GtkWidget* widget : found) out.push_back(Glib::wrap(widget));
    return out;
}

void clickMiddle(Gtk::Widget& widget) { click(widget, widget.get_width() / 2.0, widget.get_height() / 2.0); }

bool showsText(Gtk::Widget& root, const std::string& text) {
    return !findWidgets(GTK_WIDGET(root.gobj()), [&](GtkWidget* widget) {
                return GTK_IS_LABEL(widget) && gtk_widget_is_drawable(widget) &&
                       text == gtk_label_get_text(GTK_LABEL(widget));
            }).empty();
}

void screenshot(const std::string& name) {
    pumpFor(0.3);  // let transitions settle
    std::filesystem::path folder = LECTERN_ARTIFACTS_DIR;
    std::filesystem::create_directories(folder);
    runProgram({"import", "-window", "root", (folder / (name + ".png")).string()});
}

std::filesystem::path examplesDir() { return LECTERN_EXAMPLES_DIR; }

std::vector<GtkWidget*> findWidgets(GtkWidget* root, const std::function<bool(GtkWidget*)>& match) {
    std::vector<GtkWidget*> found;
    if (match(root)) found.push_back(root);
    for (GtkWidget* child = gtk_widget_get_first_child(root); child; child = gtk_widget_get_next_sibling(child)) {
        auto below = findWidgets(child, match);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

void WindowTest::SetUp() {
    if (!haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
    app();
    (void)preferences().removeValue(ActionTrust::preferencesKey);
    (void)preferences().removeValue(PresenterDisplaySettings::notesSizeKey);
    (void)preferences().removeValue(PresenterDisplaySettings::windowSizeKey);
}

DeckWindow& WindowTest::open(Deck deck) {
    DeckWindow* window = app().openDeck(std::move(deck), std::nullopt);
    EXPECT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
    pumpFor(0.2);
    return *window;
}

void WindowTest::TearDown() {
    if (haveDisplay()) closeAllWindows();
}

}  // namespace lectern::testing
