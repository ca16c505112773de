#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "slides/platform/slide_thumbnail.h"
#include "present/platform/timer_readout.h"
#include "model/deck.h"
#include "present/presentation_state.h"

namespace lectern {

class DeckWindow;

// The presenter's own window, 340 × 480: previous, next and overview
// buttons, the timer, the current and the next slide, the notes, and the
// current slide's actions with their run buttons and outcomes. It is a
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
    const Gtk::Label& nextCaption() const { return nextCaption_; }
    Gtk::ListBox& actions() { return actions_; }

private:
    void refreshRunStates();

    DeckWindow& deckWindow_;
    PresentationState& state_;
    TimerReadout timer_;
    Gtk::Label counter_;
    SlideThumbnail current_{152};
    SlideThumbnail next_{152};
    Gtk::Label currentCaption_;
    Gtk::Label nextCaption_;
    Gtk::Label notes_;
    Gtk::Box actionsSection_{Gtk::Orientation::VERTICAL, 6};
    Gtk::ListBox actions_;
    // Per row of actions_: the action's id and its outcome label and spinner.
    struct ActionRow {
        Uuid id;
        Gtk::Label* outcome = nullptr;
        Gtk::Spinner* spinner = nullptr;
    };
    std::vector<ActionRow> rows_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<>::Connection runnerConnection_;
};

}  // namespace lectern
