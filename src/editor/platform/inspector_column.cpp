#include "editor/platform/inspector_column.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"

namespace lectern {

namespace {

Gtk::ScrolledWindow* scrolling(Gtk::Box& page) {
    page.set_margin_start(12);
    page.set_margin_end(12);
    page.set_margin_top(12);
    page.set_margin_bottom(12);
    auto* scroller = Gtk::make_managed<Gtk::ScrolledWindow>();
    scroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller->set_vexpand(true);
    scroller->set_child(page);
    return scroller;
}

}  // namespace

InspectorColumn::InspectorColumn() : Gtk::Box(Gtk::Orientation::VERTICAL) {
    add_css_class("inspector");
    stack_.set_transition_type(Gtk::StackTransitionType::CROSSFADE);
    stack_.set_transition_duration(200);
    stack_.add(*scrolling(slidePage_), "slide", _("Slide"));
    stack_.add(*scrolling(deckPage_), "deck", _("Deck"));
    switcher_.set_stack(stack_);
    switcher_.set_halign(Gtk::Align::CENTER);
    switcher_.set_margin_top(8);
    switcher_.set_margin_bottom(4);
    setAccessibleLabel(switcher_, _("Inspector"));
    append(switcher_);
    append(stack_);
    stack_.property_visible_child_name().signal_changed().connect([this] {
        Focus shown = stack_.get_visible_child_name() == "deck" ? Focus::deck : Focus::slide;
        if (shown == focus_) return;
        focus_ = shown;
        focusChanged_.emit(focus_);
    });
}

void InspectorColumn::setFocus(Focus focus) { stack_.set_visible_child(focus == Focus::deck ? "deck" : "slide"); }

}  // namespace lectern
