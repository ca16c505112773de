// The talk's keys with real key presses: blacking and whiting out the stage
// over a live page, Home and End, and a typed slide number.

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <set>
#include <sstream>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/slide_navigator.h"
#include "present/platform/deck_commands.h"
#include "present/platform/shortcuts_window.h"
#include "gui_harness.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"

namespace lectern {
namespace {

using testing::LocalServer;
using testing::pressKeys;
using testing::pumpUntil;

// The colour GTK draws at the middle of a widget, as red, green, blue.
std::array<int, 3> colourInTheMiddle(Gtk::Widget& widget) {
    int width = widget.get_width(), height = widget.get_height();
    GdkPaintable* paintable = gtk_widget_paintable_new(widget.gobj());
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, width, height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(paintable);
    if (!node) return {-1, -1, -1};  // not drawn yet
    GskRenderer* renderer = gtk_native_get_renderer(gtk_widget_get_native(widget.gobj()));
    GdkTexture* texture = gsk_renderer_render_texture(renderer, node, nullptr);
    int stride = gdk_texture_get_width(texture) * 4;
    std::vector<guchar> pixels(static_cast<std::size_t>(stride) * gdk_texture_get_height(texture));
    gdk_texture_download(texture, pixels.data(), stride);
    const guchar* at = pixels.data() + (gdk_texture_get_height(texture) / 2) * stride + (gdk_texture_get_width(texture) / 2) * 4;
    std::array<int, 3> colour{at[2], at[1], at[0]};  // the download is B, G, R, A
    g_object_unref(texture);
    gsk_render_node_unref(node);
    return colour;
}

constexpr std::array<int, 3> black{0, 0, 0}, white{255, 255, 255}, pageBlue{0x20, 0x60, 0xc0};

bool near(const std::array<int, 3>& a, const std::array<int, 3>& b) {
    for (std::size_t i = 0; i < 3; ++i) {
        if (std::abs(a[i] - b[i]) > 6) return false;
    }
    return true;
}

class PresenterKeysWindowTest : public testing::WindowTest {
protected:
    LocalServer server;
};

TEST_F(PresenterKeysWindowTest, BlackAndWhiteOutHomeEndAndASlideNumber) {
    server.route("/blue", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.body = "<!doctype html><title>Blue</title><body style='margin:0;background:#2060c0'>";
        return answer;
    });
    Deck deck;
    Slide web = Slide::make(SlideLayout::web);
    web.url = server.url("/blue");
    deck.slides.push_back(web);
    for (int n = 2; n <= 13; ++n) {
        deck.slides.push_back(Slide::make(SlideLayout::regular));
        deck.slides.back().title = "Slide " + std::to_string(n);
    }
    DeckWindow& window = open(std::move(deck));
    PresentationState& state = window.state();
    PresentingStage& stage = window.presentingStage();

    // In the editor's slide list, End and Home go to the last and first slide.
    window.navigator().focusCurrentRow();
    pressKeys(window, {"End"});
    EXPECT_EQ(state.current(), 12);
    pressKeys(window, {"Home"});
    EXPECT_EQ(state.current(), 0);

    pressKeys(window, {"F5"});
    ASSERT_TRUE(pumpUntil([&] { return state.presenting(); }));
    ASSERT_TRUE(pumpUntil([&] {
        const WebPaneController* pane = window.webCard().pane();
        return pane && pane->status().kind == WebLoadStatus::Kind::loaded;
    }, 10));
    ASSERT_TRUE(pumpUntil([&] { return near(colourInTheMiddle(stage), pageBlue); }, 5)) << "the live page is on stage";

    auto coverShows = [&](const std::array<int, 3>& colour) {
        return pumpUntil([&] { return stage.cover().get_mapped() && near(colourInTheMiddle(stage), colour); }, 3);
    };
    auto uncovered = [&] {
        return pumpUntil([&] { return !stage.cover().get_visible() && near(colourInTheMiddle(stage), pageBlue); }, 3);
    };
    pressKeys(window, {"b"});
    EXPECT_TRUE(coverShows(black)) << "B blacks out the page too";
    testing::screenshot("presenter-keys-black");
    pressKeys(window, {"Right"});
    EXPECT_TRUE(uncovered());
    EXPECT_EQ(state.current(), 0) << "the key that ends the cover does nothing else";
    pressKeys(window, {"period"});
    EXPECT_TRUE(coverShows(black));
    testing::click(stage.cover(), 20, 20);
    EXPECT_TRUE(uncovered()) << "a click ends it too";

    pressKeys(window, {"comma"});
    EXPECT_TRUE(coverShows(white));
    auto blackOut = window.lookup_action("black-out");
    EXPECT_FALSE(Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(blackOut->get_state_variant()).get());
    pressKeys(window, {"comma"});
    EXPECT_TRUE(uncovered());
    // Over D-Bus, as a stateful action; Space then only uncovers.
    window.activate_action("win.black-out");
    EXPECT_TRUE(coverShows(black));
    pressKeys(window, {"space"});
    EXPECT_TRUE(uncovered());
    EXPECT_EQ(state.current(), 0);

    pressKeys(window, {"End"});
    EXPECT_EQ(state.current(), 12);
    pressKeys(window, {"Home"});
    EXPECT_EQ(state.current(), 0);

    pressKeys(window, {"1", "2"});
    EXPECT_TRUE(stage.numberBox().get_mapped());
    EXPECT_EQ(stage.numberBox().get_text(), "Go to slide 12");
    testing::screenshot("presenter-keys-number");
    pressKeys(window, {"Return"});
    EXPECT_EQ(state.current(), 11);
    EXPECT_FALSE(stage.numberBox().get_visible());
    pressKeys(window, {"9", "9", "Return"});
    EXPECT_EQ(state.current(), 11);
    EXPECT_EQ(stage.numberBox().get_text(), "There is no slide 99");

    pressKeys(window, {"ctrl+shift+p"});
    EXPECT_FALSE(state.presenting());
}

// Every key of every command is listed, and none shows or reads as an X key
// name.
TEST_F(PresenterKeysWindowTest, ShortcutsWindowListsEveryKeyReadably) {
    DeckWindow& window = open(Deck{});
    GtkWidget* shortcuts = GTK_WIDGET(window.get_help_overlay()->gobj());
    std::set<std::pair<guint, GdkModifierType>> listed;
    for (GtkWidget* shortcut : testing::findWidgets(shortcuts, [](GtkWidget* w) { return GTK_IS_SHORTCUTS_SHORTCUT(w); })) {
        char* accelerators = nullptr;
        g_object_get(shortcut, "accelerator", &accelerators, nullptr);
        std::istringstream stream(accelerators ? accelerators : "");
        for (std::string one; stream >> one;) {
            guint key = 0;
            GdkModifierType modifiers{};
            if (gtk_accelerator_parse(one.c_str(), &key, &modifiers)) listed.insert({key, modifiers});
        }
        g_free(accelerators);
    }
    for (const auto* table : {&fileCommands(), &editCommands(), &slideCommands(), &presentationCommands(),
                              &applicationCommands()}) {
        for (const DeckCommand& command : *table) {
            for (const std::string& accelerator : command.accelerators) {
                guint key = 0;
                GdkModifierType modifiers{};
                ASSERT_TRUE(gtk_accelerator_parse(accelerator.c_str(), &key, &modifiers)) << accelerator;
                EXPECT_TRUE(listed.count({key, modifiers})) << command.title << " " << accelerator;
            }
        }
    }
    for (GtkWidget* label : testing::findWidgets(shortcuts, [](GtkWidget* w) {
             return GTK_IS_LABEL(w) && GTK_IS_SHORTCUT_LABEL(gtk_widget_get_parent(w));
         })) {
        std::string text = gtk_label_get_text(GTK_LABEL(label));
        EXPECT_EQ(text.find('_'), std::string::npos) << text;
        EXPECT_NE(text, "BackSpace");
    }
    EXPECT_EQ(keysInWords("Left Up Page_Up"), "Left or Up or Page Up");
    EXPECT_EQ(keysInWords("0...9+KP_Enter BackSpace <Shift>F5"), "0 to 9, then Enter or Backspace or Shift+F5");
}

}  // namespace
}  // namespace lectern
