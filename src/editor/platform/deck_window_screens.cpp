// Presenting with more than one monitor: the stage full screen on one, the
// presenter display full screen on the monitor the deck window was on,
// "Present On" to choose the stage's monitor (kept with the deck's place)
// and the talk going on when monitors are plugged in or out.

#include <glibmm/main.h>

#include "base/platform/accessible.h"
#include "base/translation.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"

namespace lectern {

namespace {

// Long enough for the window manager to settle after monitors changed; a
// stage leaving full screen meanwhile is put back instead of ending the talk.
constexpr double screensSettleSeconds = 1.0;

Glib::RefPtr<Gio::ListModel> monitorList(const Gtk::Widget& widget) {
    return const_cast<Gtk::Widget&>(widget).get_display()->get_monitors();
}

Glib::RefPtr<Gdk::Monitor> monitorAt(const Glib::RefPtr<Gio::ListModel>& monitors, guint i) {
    return std::dynamic_pointer_cast<Gdk::Monitor>(monitors->get_object(i));
}

Screen screenOf(const Glib::RefPtr<Gdk::Monitor>& monitor) {
    Gdk::Rectangle area;
    monitor->get_geometry(area);
    Screen screen{monitor->get_connector(), monitor->get_model(), area.get_x(), area.get_y(), area.get_width(),
                  area.get_height()};
    // A monitor without a connector name is known by its place.
    if (screen.connector.empty()) screen.connector = formatText("%d,%d", screen.x, screen.y);
    return screen;
}

}  // namespace

std::vector<Screen> DeckWindow::screens() const {
    std::vector<Screen> found;
    auto monitors = monitorList(*this);
    for (guint i = 0; monitors && i < monitors->get_n_items(); ++i) {
        if (auto monitor = monitorAt(monitors, i)) found.push_back(screenOf(monitor));
    }
    return found;
}

Glib::RefPtr<Gdk::Monitor> DeckWindow::monitorNamed(const std::string& connector) const {
    auto monitors = monitorList(*this);
    for (guint i = 0; !connector.empty() && monitors && i < monitors->get_n_items(); ++i) {
        auto monitor = monitorAt(monitors, i);
        if (monitor && screenOf(monitor).connector == connector) return monitor;
    }
    return {};
}

std::string DeckWindow::windowScreen() const {
    auto self = const_cast<DeckWindow*>(this);
    auto surface = self->get_surface();
    if (!surface) return {};
    auto monitor = self->get_display()->get_monitor_at_surface(surface);
    return monitor ? screenOf(monitor).connector : std::string();
}

void DeckWindow::buildScreenActions() {
    auto action = Gio::SimpleAction::create("present-on", Glib::VARIANT_TYPE_STRING,
                                            Glib::Variant<Glib::ustring>::create(place_.presentOn));
    auto choose = [this](const Glib::VariantBase& value) {
        std::string connector = Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(value).get();
        actions_["present-on"]->set_state(Glib::Variant<Glib::ustring>::create(connector));
        if (connector == place_.presentOn) return;
        place_.presentOn = connector;
        placeChangedSoon();
        if (state_->presenting() && !connector.empty()) {
            applyScreenPlan(ScreenPlacement::afterChange(screenPlan_, screens(), presentingFrom_, connector));
        }
    };
    action->signal_activate().connect(choose);
    action->signal_change_state().connect(choose);
    add_action(action);
    actions_["present-on"] = action;
    presentOnMenu_ = Gio::Menu::create();

    if (auto monitors = get_display()->get_monitors()) {
        monitorsConnection_ = monitors->signal_items_changed().connect([this](guint, guint, guint) {
            // The window manager may take the stage out of full screen in
            // the same batch of events: from now on that moves it, it does
            // not end the talk.
            if (state_->presenting()) settleScreens();
            // A change comes as removals and additions: acted on once, after.
            if (screensIdle_.connected()) return;
            screensIdle_ = Glib::signal_idle().connect([this] {
                screensChanged();
                return false;
            });
        });
    }
    refreshPresentOnMenu();
}

void DeckWindow::refreshPresentOnMenu() {
    presentOnMenu_->remove_all();
    auto entry = [this](const std::string& label, const std::string& connector) {
        auto item = Gio::MenuItem::create(label, "");
        item->set_action_and_target("win.present-on", Glib::Variant<Glib::ustring>::create(connector));
        presentOnMenu_->append_item(item);
    };
    entry(_("Automatic"), "");
    for (const auto& screen : screens()) {
        std::string name = screen.model.empty() || screen.model == screen.connector
                               ? screen.connector
                               : formatText("%s (%s)", screen.model.c_str(), screen.connector.c_str());
        // TRANSLATORS: a monitor's name, then its width and height in pixels.
        entry(formatText(_("%s, %d × %d"), name.c_str(), screen.width, screen.height), screen.connector);
    }
}

void DeckWindow::screensChanged() {
    refreshPresentOnMenu();
    if (!state_->presenting()) return;
    settleScreens();
    applyScreenPlan(ScreenPlacement::afterChange(screenPlan_, screens(), presentingFrom_, place_.presentOn));
}

void DeckWindow::settleScreens() {
    if (settleTimer_) scheduler_.cancel(settleTimer_);
    settleTimer_ = scheduler_.after(screensSettleSeconds, [this] { settleTimer_ = 0; });
}

void DeckWindow::placeStage(bool presenting) {
    if (!presenting) {
        screenPlan_ = {};
        unfullscreen();
        if (panel_ && panel_->is_fullscreen()) panel_->unfullscreen();
        if (openedPanelForScreens_ && state_->presenterPanelVisible()) state_->togglePresenterPanel();
        openedPanelForScreens_ = false;
        return;
    }
    presentingFrom_ = windowScreen();
    applyScreenPlan(ScreenPlacement::start(screens(), presentingFrom_, place_.presentOn));
}

void DeckWindow::applyScreenPlan(const ScreenPlan& plan) {
    bool moved = plan.stage != screenPlan_.stage;
    screenPlan_ = plan;
    if (auto monitor = monitorNamed(plan.stage)) {
        if (moved) settleScreens();
        fullscreen_on_monitor(monitor);
    } else {
        fullscreen();
    }
    if (plan.twoScreens()) {
        if (!state_->presenterPanelVisible()) {
            openedPanelForScreens_ = true;
            state_->togglePresenterPanel();
        }
        if (auto monitor = monitorNamed(plan.presenter); monitor && panel_) panel_->fullscreen_on_monitor(monitor);
    } else if (panel_ && panel_->is_fullscreen()) {
        // Back to one monitor: the presenter display is a window over the
        // stage again, and the stage goes on.
        panel_->unfullscreen();
    }
}

}  // namespace lectern
