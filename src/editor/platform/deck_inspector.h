#pragma once

#include <gtkmm.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/deck_editor.h"
#include "model/app_accent_palette.h"

namespace lectern {

class ProfilesSection;

// The Deck page of the inspector: the deck's title, its theme (each with
// its one-line description), its accent colour, its palette of eight
// swatches, the planned talk length and its browser profiles. Every change
// is an edit of the document, so it can be undone; a change of the deck,
// wherever it comes from, updates only the controls whose value changed.
class DeckInspector : public Gtk::Box {
public:
    explicit DeckInspector(DeckEditor& editor);
    ~DeckInspector() override;

    Gtk::Entry& titleEntry() { return title_; }
    Gtk::ListBox& themeList() { return themes_; }
    Gtk::Entry& talkLengthEntry() { return talk_; }
    // The eight palette swatches; each opens its own colour menu.
    Gtk::MenuButton& swatch(std::size_t index) { return *swatches_.at(index); }
    ProfilesSection& profiles() { return *profiles_; }
    const Gtk::Label& accentValue() const { return accentValue_; }

private:
    void buildTitle();
    void buildTheme();
    void buildAccent();
    void buildPalette();
    void buildTalkLength();
    void deckChanged();
    // The accent buttons for the colours on offer now.
    void fillAccentChoices();
    void showAccent();
    Gtk::Popover* swatchMenu(std::size_t index);
    void setAccent(std::optional<std::string> hex);
    void setSwatch(std::size_t index, std::optional<std::string> hex);
    void commitTalkLength();
    void chooseColour(const std::string& title, std::function<void(std::string)> chosen);

    DeckEditor& editor_;
    AppAccentPalette appPalette_;
    bool syncing_ = false;  // controls being set from the deck: their signals edit nothing

    Gtk::Entry title_;
    Gtk::ListBox themes_;
    Gtk::Label accentNote_;
    Gtk::FlowBox accents_;
    Gtk::ToggleButton defaultAccent_;
    Gtk::Label accentValue_;  // the accent in words: "Theme default" or its hex
    std::vector<std::pair<std::string, Gtk::ToggleButton*>> accentButtons_;
    std::vector<std::string> accentChoices_;
    std::array<Gtk::MenuButton*, 8> swatches_{};
    Gtk::Entry talk_;
    ProfilesSection* profiles_ = nullptr;
    std::unique_ptr<Gtk::ColorChooserDialog> colourDialog_;

    // What the controls show, to update only what changed.
    std::optional<std::string> shownTitle_;
    Theme shownTheme_ = Theme::clinical;
    std::optional<std::string> shownAccent_;
    DeckPalette shownPalette_;
    std::optional<std::int64_t> shownMinutes_;
    std::vector<std::string> shownAppHexes_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<>::Connection appPaletteConnection_;
};

}  // namespace lectern
