#pragma once

#include <gtkmm.h>

#include <functional>
#include <string>

#include "editor/draft_stepper.h"

namespace lectern {

// The action editor's building blocks: a titled section with an optional
// footnote and accessory, a card of rows, a row with a title, a subtitle
// and its control, and the two editing fields of their own kind.

// A section: its title (and accessory at the right), the content, then the
// footnote in small dim text.
Gtk::Box* actionFormSection(const std::string& title, Gtk::Widget& content, const std::string& footnote = {},
                            Gtk::Widget* accessory = nullptr);
// A rounded card that holds rows one under the other, with dividers.
Gtk::Box* actionFormCard();
void appendToCard(Gtk::Box& card, Gtk::Widget& row);
// A row: the title and the subtitle on the left, the control on the right;
// the control reads the title to a screen reader.
Gtk::Box* actionFormRow(const std::string& title, const std::string& subtitle, Gtk::Widget& control);
// A row with a switch.
Gtk::Box* actionFormSwitch(const std::string& title, const std::string& subtitle, Gtk::Switch& toggle);

// A numeric field with a stepper: the number as text, its unit, and a minus
// and a plus button. Typing edits a draft; the draft is written (clamped)
// when the field commits (Enter or leaving it) and reverts when it is not a
// number. `committed` is called with each new value.
class StepperField : public Gtk::Box {
public:
    StepperField(DraftStepper rules, const std::string& label);

    double value() const { return value_; }
    // Shows a value of the deck (a draft being typed is left alone).
    void setValue(double value);
    void commit();

    std::function<void(double)> committed;

    Gtk::Entry& entry() { return entry_; }
    Gtk::Button& minus() { return minus_; }
    Gtk::Button& plus() { return plus_; }

private:
    void write(double value);

    DraftStepper rules_;
    double value_ = 0;
    bool drafting_ = false;  // the text was typed since the last commit
    bool showing_ = false;   // the text is being set from the value
    Gtk::Entry entry_;
    Gtk::Label unit_;
    Gtk::Button minus_;
    Gtk::Button plus_;
};

// A monospace text editor with a placeholder shown while it is empty.
class ActionCodeEditor : public Gtk::Overlay {
public:
    ActionCodeEditor(const std::string& placeholder, int height, const std::string& label);

    std::string text() const;
    // Sets the text unless it is already that; `changed` is not called.
    void setText(const std::string& text);
    std::function<void(const std::string&)> changed;

    Gtk::TextView& view() { return view_; }

private:
    Gtk::ScrolledWindow scroller_;
    Gtk::TextView view_;
    Gtk::Label placeholder_;
    bool showing_ = false;
};

}  // namespace lectern
