#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/platform/gobject_ref.h"
#include "present/platform/trust_review.h"
#include "model/deck.h"
#include "model/preferences_store.h"
#include "present/action_trust.h"
#include "present/presentation_state.h"
#include "present/presenter_hud.h"
#include "base/scheduler.h"
#include "slides/slide_painter.h"

namespace lectern {

class HudBar;
class OverviewGrid;
class PresenterPanel;
class StageView;
class WebCard;
class WebCheckSheet;
class BrowserProfilesWindow;

// The window of one open deck, with its own presentation state. In the
// editor it shows a header bar, the stage and the presenter notes; while the
// editor is closed, the stage alone (full screen while presenting). It
// hosts the overview grid, the presenter HUD, the presenter panel and the
// consent sheet for actions made elsewhere. Closing it ends its timer, its
// panel and its automatic runs.
class DeckWindow : public Gtk::ApplicationWindow, public PresentationWindow {
public:
    DeckWindow(Scheduler& scheduler, PreferencesStore& preferences, Deck deck,
               std::optional<std::filesystem::path> package);
    ~DeckWindow() override;

    PresentationState& state() { return *state_; }
    const Deck& deck() const { return deck_; }
    const std::optional<std::filesystem::path>& package() const { return package_; }
    // The deck after an edit: actions the presenter made are trusted at once,
    // the current slide stays in range, and automatic runs follow.
    void setDeck(Deck deck);
    // A change the presenter made: the deck as setDeck() makes it, saved to
    // its package a moment later (changes made together save once).
    void editDeck(Deck deck);
    // Writes a change not yet saved now; false (with a message in the
    // window) when that failed and the change is still only here.
    bool saveNow();

    // The deck's browser profiles window ("Browser Profiles…") while shown.
    BrowserProfilesWindow* browserProfiles() { return profilesWindow_.get(); }

    // The window's key monitor; true when the key was used.
    bool handleKey(guint keyval, Gdk::ModifierType modifiers);
    // A short message over the window's content.
    void showToast(const std::string& message);

    // The deck's theme, accent and title, as every slide picture needs them.
    SlidePaintOptions paintOptions() const;

    StageView& stage() { return *stage_; }
    // The live page of the current web slide.
    WebCard& webCard() { return *webCard_; }
    // Names this window to the web prefetcher and the profiles register.
    const Uuid& windowId() const { return windowId_; }
    OverviewGrid& overview() { return *overview_; }
    HudBar& hud() { return *hud_; }
    PresenterPanel* presenterPanel() { return panel_.get(); }
    // The web slide check while it is shown.
    WebCheckSheet* webCheck() { return webCheck_.get(); }
    // The consent sheet while it is shown.
    AdwMessageDialog* trustReview() const { return trustReview_.dialog(); }
    PresenterHud& hudController() { return hudController_; }

    void toggleFullScreen() override;

private:
    void buildContent();
    GtkWidget* buildHeaderBar();
    void buildActions();
    // Enables each command that can act now; the others are greyed out.
    void updateActions();
    void stateChanged(PresentationField field);
    void showCurrentSlide();
    // The prefetcher's wish list of this window, then the live page.
    void refreshWebPages();
    void placeWebCard(Gdk::Rectangle& allocation);
    void setCurrentWebZoom(double zoom);
    std::string windowTitle() const;
    void sizeToScreen();
    void refreshChrome();
    void refreshNotes();
    void refreshCounter();
    void refreshPresenterPanel();
    void refreshTrustReview();
    void refreshWebCheck();
    Status writePackage();
    bool on_close_request() override;
    void showBrowserProfiles();
    void refreshBrowserProfiles();

    Uuid windowId_ = Uuid::random();
    Scheduler& scheduler_;
    PreferencesStore& preferences_;
    Deck deck_;
    std::optional<std::filesystem::path> package_;
    MadeElsewhereTracker madeElsewhere_;
    std::unique_ptr<PresentationState> state_;
    PresenterHud hudController_;

    // Widgets, owned by the window's widget tree.
    GObjectRef<GtkWidget> header_;
    GObjectRef<AdwToastOverlay> toasts_;
    GObjectRef<AdwWindowTitle> title_;
    Gtk::Stack* pages_ = nullptr;
    StageView* stage_ = nullptr;
    WebCard* webCard_ = nullptr;
    Glib::RefPtr<Gtk::CssProvider> webCardStyle_;
    double webCardRadius_ = -1;
    HudBar* hud_ = nullptr;
    OverviewGrid* overview_ = nullptr;
    Gtk::Revealer* notesRevealer_ = nullptr;
    Gtk::Label* notesText_ = nullptr;
    Gtk::Label* counter_ = nullptr;
    Gtk::ToggleButton* notesToggle_ = nullptr;
    Gtk::ToggleButton* overviewToggle_ = nullptr;
    Gtk::ToggleButton* panelToggle_ = nullptr;

    std::map<std::string, Glib::RefPtr<Gio::SimpleAction>> actions_;
    std::unique_ptr<PresenterPanel> panel_;
    std::unique_ptr<WebCheckSheet> webCheck_;
    std::unique_ptr<BrowserProfilesWindow> profilesWindow_;
    Signal<const std::optional<Uuid>&>::Connection clearedConnection_;
    Scheduler::TimerId saveTimer_ = 0;
    bool unsaved_ = false;               // an edit the package does not have yet
    bool warnedOfFailedSave_ = false;    // closing again discards it
    TrustReview trustReview_;
    bool wasFullScreen_ = false;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<bool>::Connection hudHoverConnection_;
    Signal<const std::string&>::Connection cardConnection_;
    Signal<std::int64_t>::Connection tileConnection_;
    Signal<double>::Connection webZoomConnection_;
};

}  // namespace lectern
