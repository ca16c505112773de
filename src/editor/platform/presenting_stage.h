#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <memory>
#include <string>

#include "base/scheduler.h"
#include "base/worker.h"
#include "base/signal.h"
#include "editor/deck_editor.h"
#include "present/presenter_hud.h"
#include "present/presenter_keys.h"
#include "slides/slide_painter.h"

namespace lectern {

class HudBar;
class OverviewGrid;
class StageEditing;
class StageView;
class WebCard;

// The deck window's stage: the current slide, the live page over a web
// slide's media area, the presenter HUD, and the overview grid that takes
// the stage's place. The same widget serves the editor (framed, everything
// revealed, a click on a card selects it) and the talk (filling the window,
// step by step, a click on a card jumps).
class PresentingStage : public Gtk::Stack {
public:
    PresentingStage(DeckEditor& editor, Scheduler& scheduler, Worker& worker, PresenterHud& hudController);
    ~PresentingStage() override;

    // The deck's theme, accent and title, as every slide picture needs them.
    SlidePaintOptions paintOptions() const;

    // Shows the current slide as the state and deck say now.
    void showCurrentSlide();
    // The live page of the current web slide, after the wish list changed.
    void refreshWebPage();
    // Follows the editor opening or closing, and the overview.
    void refreshChrome();
    // The overview follows the state (shown or not, the current tile)...
    void refreshOverview();
    // ...and the deck.
    void deckChanged();

    StageView& stage() { return *stage_; }
    WebCard& webCard() { return *webCard_; }
    OverviewGrid& overview() { return *overview_; }
    StageEditing& editing() { return *editing_; }
    HudBar& hud() { return *hud_; }
    // The talk's keys, the cover over the stage and the typed slide number.
    PresenterKeys& keys() { return keys_; }
    // What covers the stage while it is blacked or whited out.
    Gtk::Widget& cover() { return *cover_; }
    // The box that shows the slide number as it is typed.
    Gtk::Label& numberBox() { return *numberBox_; }

private:
    void placeWebCard(Gdk::Rectangle& allocation);
    void setCurrentWebZoom(double zoom);
    void refreshKeys();

    DeckEditor& editor_;
    PresentationState& state_;
    PresenterHud& hudController_;
    PresenterKeys keys_;
    StageView* stage_ = nullptr;
    Gtk::Box* cover_ = nullptr;
    Gtk::Label* numberBox_ = nullptr;
    WebCard* webCard_ = nullptr;
    HudBar* hud_ = nullptr;
    OverviewGrid* overview_ = nullptr;
    std::unique_ptr<StageEditing> editing_;
    Glib::RefPtr<Gtk::CssProvider> webCardStyle_;
    double webCardRadius_ = -1;
    bool overviewStale_ = true;  // the grid shows an older deck
    Signal<bool>::Connection hudHoverConnection_;
    Signal<const std::string&>::Connection cardConnection_;
    Signal<std::size_t>::Connection cardChosenConnection_;
    Signal<std::int64_t>::Connection tileConnection_;
    Signal<double>::Connection webZoomConnection_;
    Signal<>::Connection editingLooksConnection_;
    Signal<std::optional<std::string>>::Connection webAddressConnection_;
    Signal<>::Connection keysConnection_;
};

}  // namespace lectern
