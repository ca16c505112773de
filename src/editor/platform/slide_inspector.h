#pragma once

#include <glib/gi18n.h>

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/deck_editor.h"
#include "editor/slide_inspector_model.h"
#include "model/app_accent_palette.h"

namespace lectern {

class LayoutPicker;

// The Slide page of the inspector: the current slide's layout (and the
// position of its web page or image), its reveal mode, where "Next" goes
// from it, its accent colour, its link subtitles (decisions), the fill of
// its image, whether the talk skips it and the browser session of its web
// page. Every change goes through the editor as one undoable step. On a
// change of the deck it updates only the controls whose values differ, so
// typing on the stage stays cheap.
class SlideInspector : public Gtk::Box {
public:
    explicit SlideInspector(DeckEditor& editor);
    ~SlideInspector() override;

private:
    Gtk::Box& section(const std::string& title);
    void buildReveal();
    void buildNext();
    void buildAccent();
    void buildToggles();
    void buildProfile();

    void refresh();
    void refreshAccent(const Slide& slide);
    void fillSwatches(Gtk::Box& row, const std::vector<std::string>& hexes);
    void chooseCustomAccent();
    void setAccent(std::optional<std::string> hex);
    void setToggle(Gtk::CheckButton& button, bool active);
    void setChoices(Gtk::DropDown& dropDown, const std::vector<std::string>& titles,
                    std::vector<std::string>& shown);

    DeckEditor& editor_;
    AppAccentPalette appPalette_;
    bool syncing_ = false;  // controls set from the deck: not the presenter's choice

    LayoutPicker* layout_ = nullptr;
    Gtk::CheckButton revealAll_;
    Gtk::CheckButton revealSteps_;
    Gtk::DropDown next_;
    std::vector<NextRouteChoice> nextChoices_;
    std::vector<std::string> nextTitles_;
    Gtk::Box* accentSection_ = nullptr;
    Gtk::ToggleButton deckAccent_;
    Gtk::Box deckSwatches_{Gtk::Orientation::HORIZONTAL, 4};
    Gtk::Box appSwatches_{Gtk::Orientation::HORIZONTAL, 4};
    std::vector<std::pair<std::string, Gtk::ToggleButton*>> swatchButtons_;
    std::optional<AccentSwatches> swatches_;
    std::optional<std::string> accentShown_;
    std::unique_ptr<Gtk::ColorChooserDialog> dialog_;
    Gtk::CheckButton subtitles_{_("Show link subtitles")};
    Gtk::CheckButton fill_{_("Fill")};
    Gtk::CheckButton skip_{_("Skip in presentation")};
    Gtk::Box* profileSection_ = nullptr;
    Gtk::DropDown profile_;
    std::vector<ProfileChoice> profileChoices_;
    std::vector<std::string> profileTitles_;

    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<>::Connection paletteConnection_;
};

}  // namespace lectern
