#pragma once

#include <gtkmm.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "editor/platform/body_editor.h"

namespace lectern {

// The formatting buttons above the body while it is edited: every control
// of formatControls() as an icon button named by its label, the groups
// separated, the toggles showing the selection's state. Compact, the bar
// keeps the character styles and moves the other groups into the "More
// formatting" menu. No button takes the focus from the text on a click, so
// the selection stays where it is.
class FormatBar : public Gtk::Box {
public:
    explicit FormatBar(BodyEditor& editor);
    ~FormatBar() override;

    void setCompact(bool compact);  // below 520 points of body width (the caller decides)
    // The colours offered for text, "#RRGGBB": the deck's and the app's accents.
    void setPalettes(std::vector<std::string> deckPalette, std::vector<std::string> appPalette);

private:
    Gtk::Widget* makeControl(const FormatControl& control);
    void buildColourMenu();
    void fillSwatches(Gtk::Box& row, const std::vector<std::string>& hexes);
    void chooseCustomColour();
    void pickColour(std::optional<std::string> hex);
    void arrange();
    void refresh();

    BodyEditor& editor_;
    // Groups are members, not managed, so they can move between the bar and
    // the "More formatting" menu.
    std::map<FormatControlGroup, std::unique_ptr<Gtk::Box>> groups_;
    std::vector<std::unique_ptr<Gtk::Separator>> separators_;
    Gtk::MenuButton more_;
    Gtk::Box moreBox_{Gtk::Orientation::VERTICAL, 6};
    Gtk::MenuButton colour_;
    Gtk::Box deckSwatches_{Gtk::Orientation::HORIZONTAL, 4};
    Gtk::Box appSwatches_{Gtk::Orientation::HORIZONTAL, 4};
    std::map<FormatControlId, Gtk::ToggleButton*> toggles_;
    std::map<FormatControlId, Gtk::Button*> buttons_;
    std::unique_ptr<Gtk::ColorChooserDialog> dialog_;
    bool compact_ = false;
    Signal<>::Connection stateConnection_;
};

}  // namespace lectern
