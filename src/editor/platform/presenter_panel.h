#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "slides/platform/slide_thumbnail.h"
#include "present/platform/timer_readout.h"
#include "present/presenter_display_settings.h"
#include "model/deck.h"
#include "present/presentation_state.h"

namespace lectern {

class DeckWindow;
class PresenterSlides;

// The presenter's own window, 340 × 480 at first, then as large as it was
// last left (remembered app-wide): previous, next and overview buttons, the
// timer, a row with the elapsed time, the time left of a deck with a talk
// length and the wall clock; the current and the next slide, growing with
// the window; a note when the page on stage shows a sign-in form, the
// notes in a size the presenter sets (Ctrl+plus, Ctrl+minus, Ctrl+0), and
// the current slide's actions with their run buttons and outcomes, each
// expanding to the whole result (status, duration, time, excerpt). It is a
// window of its own, so that sharing the deck window leaves it out.
class PresenterPanel : public Gtk::Window {
public:
    static constexpr int width = 340;
    static constexpr int height = 480;

    explicit PresenterPanel(DeckWindow& deckWindow);
    ~PresenterPanel() override;

    // Re-reads the slides, the notes and the actions.
    void refresh();

    // The slide that advancing past the current one leads to: the slide a
    // "Next" route names, else the next one not skipped while presenting.
    static std::optional<std::int64_t> upcomingSlide(const std::vector<Slide>& slides, std::int64_t current,
                                                     bool editorOpen);

    const Gtk::Label& notes() const { return notes_; }
    // The notes' text size in points.
    int notesPoints() const { return notesPoints_; }
    const Gtk::Label& elapsed() const { return elapsed_; }
    // Shown only for a deck with a talk length.
    const Gtk::Label& remaining() const { return remaining_; }
    const Gtk::Label& clock() const { return clock_; }
    const PresenterSlides& slides() const { return *slides_; }
    const Gtk::Label& nextCaption() const { return nextCaption_; }
    const Gtk::Label& offlineCopy() const { return offlineCopy_; }
    Gtk::ListBox& actions() { return actions_; }
    // The full result of the action in row `index`: its expander (collapsed
    // at first) and the selectable details within.
    Gtk::Expander* actionExpander(std::size_t index) { return index < rows_.size() ? rows_[index].expander : nullptr; }
    const Gtk::Label* actionDetails(std::size_t index) const {
        return index < rows_.size() ? rows_[index].details : nullptr;
    }
    // "Slide 4’s page shows a sign-in form", shown while it does.
    const Gtk::Label& signInNote() const { return signInNote_; }

private:
    // The current and next slide, with their captions.
    void refreshSlides();
    void refreshRunStates();
    void refreshTimes();
    void applyNotesPoints(int points);
    // Ctrl+plus, Ctrl+minus and Ctrl+0: the notes' size; whether it was one.
    bool handleNotesKey(guint keyval, Gdk::ModifierType modifiers);
    void refreshSignInNote();
    Gtk::ListBoxRow* actionRow(const Slide& slide, const SlideAction& action);
    // Says so when the stage shows an offline copy of the current page.
    void refreshOfflineCopy();

    DeckWindow& deckWindow_;
    PresentationState& state_;
    TimerReadout timer_;
    PresenterDisplaySettings settings_;
    Gtk::Label counter_;
    Gtk::Label elapsed_;
    Gtk::Label remaining_;
    Gtk::Label clock_;
    SlideThumbnail current_{152};
    SlideThumbnail next_{152};
    PresenterSlides* slides_ = nullptr;
    int notesPoints_ = PresenterDisplaySettings::defaultNotesPoints;
    Gtk::Label currentCaption_;
    Gtk::Label nextCaption_;
    Gtk::Label notes_;
    Gtk::Label signInNote_;
    Gtk::Box actionsSection_{Gtk::Orientation::VERTICAL, 6};
    Gtk::ListBox actions_;
    // Per row of actions_: the action's id, its outcome line, spinner and
    // the expander with the whole result.
    struct ActionRow {
        Uuid id;
        Gtk::Label* outcome = nullptr;
        Gtk::Spinner* spinner = nullptr;
        Gtk::Expander* expander = nullptr;
        Gtk::Label* details = nullptr;
    };
    std::vector<ActionRow> rows_;
    Gtk::Label offlineCopy_;
    Signal<>::Connection copyConnection_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<>::Connection runnerConnection_;
    Signal<>::Connection signInConnection_;
    Signal<const Uuid&>::Connection picturesConnection_;
    Signal<PresentationField>::Connection timesConnection_;
    sigc::connection clockTimer_;
};

}  // namespace lectern
