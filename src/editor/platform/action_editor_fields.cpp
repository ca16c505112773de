#include "editor/platform/action_editor_fields.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"

namespace lectern {

Gtk::Box* actionFormSection(const std::string& title, Gtk::Widget& content, const std::string& footnote,
                            Gtk::Widget* accessory) {
    auto* section = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    if (!title.empty() || accessory) {
        auto* heading = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
        auto* label = Gtk::make_managed<Gtk::Label>(title);
        label->add_css_class("heading");
        label->set_xalign(0);
        label->set_hexpand(true);
        heading->append(*label);
        if (accessory) heading->append(*accessory);
        section->append(*heading);
    }
    section->append(content);
    if (!footnote.empty()) {
        auto* note = Gtk::make_managed<Gtk::Label>(footnote);
        note->add_css_class("caption");
        note->add_css_class("dim-label");
        note->set_xalign(0);
        note->set_wrap(true);
        section->append(*note);
    }
    return section;
}

Gtk::Box* actionFormCard() {
    auto* card = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    card->add_css_class("card");
    return card;
}

void appendToCard(Gtk::Box& card, Gtk::Widget& row) {
    if (card.get_first_child()) card.append(*Gtk::make_managed<Gtk::Separator>(Gtk::Orientation::HORIZONTAL));
    card.append(row);
}

Gtk::Box* actionFormRow(const std::string& title, const std::string& subtitle, Gtk::Widget& control) {
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
    texts->set_hexpand(true);
    texts->set_valign(Gtk::Align::CENTER);
    auto* label = Gtk::make_managed<Gtk::Label>(title);
    label->set_xalign(0);
    label->set_wrap(true);
    texts->append(*label);
    if (!subtitle.empty()) {
        auto* sub = Gtk::make_managed<Gtk::Label>(subtitle);
        sub->set_xalign(0);
        sub->set_wrap(true);
        sub->add_css_class("caption");
        sub->add_css_class("dim-label");
        texts->append(*sub);
    }
    control.set_valign(Gtk::Align::CENTER);
    setAccessibleLabel(control, title);
    auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
    row->set_margin(10);
    row->append(*texts);
    row->append(control);
    return row;
}

Gtk::Box* actionFormSwitch(const std::string& title, const std::string& subtitle, Gtk::Switch& toggle) {
    return actionFormRow(title, subtitle, toggle);
}

StepperField::StepperField(DraftStepper rules, const std::string& label)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6), rules_(std::move(rules)) {
    entry_.set_width_chars(rules_.decimals > 0 ? 6 : 4);
    entry_.set_max_width_chars(rules_.decimals > 0 ? 6 : 4);
    entry_.set_alignment(1.0);
    entry_.set_input_purpose(rules_.decimals > 0 ? Gtk::InputPurpose::NUMBER : Gtk::InputPurpose::DIGITS);
    entry_.set_enable_undo(false);  // undone through the document
    setAccessibleLabel(entry_, label);
    entry_.signal_changed().connect([this] {
        if (!showing_) drafting_ = true;
    });
    entry_.signal_activate().connect([this] { commit(); });
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_leave().connect([this] { commit(); });
    entry_.add_controller(focus);
    append(entry_);
    if (!rules_.unit.empty()) {
        unit_.set_text(rules_.unit);
        unit_.add_css_class("dim-label");
        append(unit_);
    }
    minus_.set_icon_name("list-remove-symbolic");
    plus_.set_icon_name("list-add-symbolic");
    setAccessibleLabel(minus_, _("Decrease ") + label);
    setAccessibleLabel(plus_, _("Increase ") + label);
    minus_.set_tooltip_text(_("Decrease"));
    plus_.set_tooltip_text(_("Increase"));
    auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    buttons->add_css_class("linked");
    buttons->append(minus_);
    buttons->append(plus_);
    append(*buttons);
    // A step starts from the draft if one was typed.
    minus_.signal_clicked().connect([this] {
        commit();
        write(rules_.stepDown(value_));
    });
    plus_.signal_clicked().connect([this] {
        commit();
        write(rules_.stepUp(value_));
    });
    setValue(0);
}

void StepperField::setValue(double value) {
    value_ = value;
    if (drafting_) return;
    showing_ = true;
    entry_.set_text(rules_.format(value));
    showing_ = false;
}

void StepperField::commit() {
    if (!drafting_) return;
    drafting_ = false;
    double next = rules_.commit(std::string(entry_.get_text()), value_);
    write(next);
}

void StepperField::write(double value) {
    drafting_ = false;
    bool changed = value != value_;
    setValue(value);  // also shows a reverted or clamped draft as the value
    if (changed && committed) committed(value);
}

ActionCodeEditor::ActionCodeEditor(const std::string& placeholder, int height, const std::string& label) {
    view_.set_monospace(true);
    view_.set_wrap_mode(Gtk::WrapMode::WORD_CHAR);
    view_.set_top_margin(8);
    view_.set_bottom_margin(8);
    view_.set_left_margin(8);
    view_.set_right_margin(8);
    view_.get_buffer()->set_enable_undo(false);  // undone through the document
    setAccessibleLabel(view_, label);
    scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller_.set_size_request(-1, height);
    scroller_.set_child(view_);
    scroller_.add_css_class("card");
    set_child(scroller_);

    placeholder_.set_text(placeholder);
    placeholder_.add_css_class("dim-label");
    placeholder_.add_css_class("monospace");
    placeholder_.set_halign(Gtk::Align::START);
    placeholder_.set_valign(Gtk::Align::START);
    placeholder_.set_margin(8);
    placeholder_.set_can_target(false);
    add_overlay(placeholder_);

    view_.get_buffer()->signal_changed().connect([this] {
        std::string now = text();
        placeholder_.set_visible(now.empty());
        if (!showing_ && changed) changed(now);
    });
}

std::string ActionCodeEditor::text() const { return std::string(view_.get_buffer()->get_text()); }

void ActionCodeEditor::setText(const std::string& text) {
    placeholder_.set_visible(text.empty());
    if (this->text() == text) return;
    showing_ = true;
    view_.get_buffer()->set_text(text);
    showing_ = false;
}

}  // namespace lectern
