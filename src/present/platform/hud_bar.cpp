#include "present/platform/hud_bar.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "present/presenter_hud.h"

namespace lectern {

HudBar::HudBar(PresentationState& state, std::function<const Deck&()> deck)
    : state_(state), deck_(std::move(deck)), timer_(state, [this] { return deck_().targetMinutes; }) {
    set_transition_type(Gtk::RevealerTransitionType::SLIDE_UP);
    set_transition_duration(200);
    set_halign(Gtk::Align::CENTER);
    set_valign(Gtk::Align::END);
    set_can_target(true);

    bar_.add_css_class("hud");
    bar_.add_css_class("osd");
    bar_.add_css_class("toolbar");
    auto* controls = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 2);
    present_ = &addButton(*controls, "media-playback-start-symbolic", "win.present", _("Present"),
                          _("Present (Ctrl+Shift+P)"));
    notes_ = &addButton(*controls, "format-justify-left-symbolic", "win.toggle-notes", _("Presenter Notes"), "");
    addButton(*controls, "document-edit-symbolic", "win.toggle-editor", _("Open editor"), _("Open editor (Ctrl+E)"));
    addButton(*controls, "view-refresh-symbolic", "win.reset-web-page", _("Reset Web Page"),
              _("Reset Web Page (Ctrl+R)"));
    addButton(*controls, "video-display-symbolic", "win.toggle-presenter-display", _("Toggle Presenter Display"),
              _("Toggle Presenter Display (Alt+Ctrl+P)"));
    bar_.append(*controls);

    bar_.append(*Gtk::make_managed<Gtk::Separator>(Gtk::Orientation::VERTICAL));
    counter_.add_css_class("numeric");
    counter_.add_css_class("hud-counter");
    bar_.append(counter_);

    notice_.add_css_class("hud-notice");
    notice_.set_visible(false);
    bar_.append(notice_);

    auto* warning = Gtk::make_managed<Gtk::Image>();
    warning->set_from_icon_name("dialog-warning-symbolic");
    failureMark_.append(*warning);
    failureMark_.append(failureText_);
    failureMark_.add_css_class("hud-failure");
    failureMark_.add_css_class("warning");
    failureMark_.set_visible(false);
    bar_.append(failureMark_);

    bar_.append(*Gtk::make_managed<Gtk::Separator>(Gtk::Orientation::VERTICAL));
    bar_.append(timer_);
    set_child(bar_);

    auto motion = Gtk::EventControllerMotion::create();
    motion->signal_enter().connect([this](double, double) { hovering_.emit(true); });
    motion->signal_leave().connect([this] { hovering_.emit(false); });
    bar_.add_controller(motion);

    stateConnection_ = state_.changed().connect([this](PresentationField field) {
        switch (field) {
        case PresentationField::hudVisible: set_reveal_child(state_.hudVisible()); break;
        case PresentationField::current:
        case PresentationField::presenting:
        case PresentationField::notesHidden: refresh(); break;
        default: break;
        }
    });
    runnerConnection_ = state_.autoRun().runner().changed().connect([this] { refresh(); });
    set_reveal_child(state_.hudVisible());
    refresh();
}

Gtk::Button& HudBar::addButton(Gtk::Box& box, const char* icon, const char* action, const char* name,
                               const char* tooltip) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    // An icon alone names nothing: screen readers hear the command.
    setAccessibleLabel(*button, name);
    button->set_action_name(action);
    button->set_tooltip_text(tooltip);
    button->add_css_class("flat");
    box.append(*button);
    return *button;
}

void HudBar::refresh() {
    const Deck& deck = deck_();
    present_->set_icon_name(state_.presenting() ? "view-restore-symbolic" : "media-playback-start-symbolic");
    setAccessibleLabel(*present_, state_.presenting() ? _("Stop Presenting") : _("Present"));
    notes_->set_tooltip_text(state_.notesHidden() ? _("Show Presenter Notes (Alt+Ctrl+I)")
                                                  : _("Hide Presenter Notes (Alt+Ctrl+I)"));
    auto count = static_cast<std::int64_t>(deck.slides.size());
    counter_.set_text(count == 0 ? _("No slides")
                                 : std::to_string(state_.current() + 1) + " / " + std::to_string(count));
    const Slide* slide = state_.currentSlide(deck.slides);
    std::string notice = slide ? PresenterHud::autoRunNotice(*slide) : std::string();
    notice_.set_text(notice);
    notice_.set_visible(!notice.empty());
    auto failed = slide ? PresenterHud::failureMark(*slide, state_.autoRun().runner()) : std::nullopt;
    failureMark_.set_visible(failed.has_value());
    failureText_.set_text(failed ? failed->text : "");
    failureMark_.set_tooltip_text(failed ? failed->details : "");
    gtk_accessible_update_property(GTK_ACCESSIBLE(failureMark_.gobj()), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                   failed ? failed->details.c_str() : "", -1);
    timer_.refresh();
}

}  // namespace lectern
