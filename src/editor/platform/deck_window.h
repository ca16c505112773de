#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "base/scheduler.h"
#include "base/worker.h"
#include "editor/autosaver.h"
#include "editor/deck_document.h"
#include "editor/deck_editor.h"
#include "editor/deck_places.h"
#include "model/deck.h"
#include "model/preferences_store.h"
#include "present/platform/trust_review.h"
#include "present/presentation_state.h"
#include "present/presenter_hud.h"
#include "present/screen_placement.h"
#include "slides/slide_painter.h"

namespace lectern {

class EditorLayout;
class HudBar;
class OverviewGrid;
class PresenterPanel;
class PresentingStage;
class RecoveryStore;
class SlideNavigator;
class StageView;
class WebCard;
class WebCheckSheet;
struct DownloadReport;

// The window of one open deck: its document, its presentation state and
// the editor around the stage. In the editor it shows a header bar, the
// navigator, the stage and the presenter notes; while the editor is closed,
// the stage alone (full screen while presenting). It hosts the overview
// grid, the presenter HUD, the presenter panel, the consent sheet for
// actions made elsewhere and the confirmations of deleting and closing.
// A deck with a package opens again at the slide and in the window size it
// was left at (kept in `places`); deck folders dragged onto the window are
// handed to signal_decks_dropped().
class DeckWindow : public Gtk::ApplicationWindow, public PresentationWindow {
public:
    // A deck read from `package` (none: a draft never saved). `recovered`:
    // the deck comes from a recovery copy and differs from what the package
    // (if any) holds. `places`: where decks were left, the user's own list
    // unless told otherwise.
    DeckWindow(Scheduler& scheduler, PreferencesStore& preferences, std::shared_ptr<RecoveryStore> recovery,
               Deck deck, std::optional<std::filesystem::path> package, bool recovered = false,
               std::shared_ptr<DeckPlaces> places = DeckPlaces::perUser());
    ~DeckWindow() override;

    PresentationState& state() { return *state_; }
    DeckDocument& document() { return *document_; }
    DeckEditor& editor() { return *editor_; }
    const Deck& deck() const { return document_->deck(); }
    const std::optional<std::filesystem::path>& package() const { return document_->package(); }

    // Ctrl+S: writes the deck now; a draft first asks where.
    void save();
    // "Save As…": a new package, which the window follows.
    void saveAs();
    // Waits for a save under way and writes what is left; false (with a
    // message in the window) when the change is still only here.
    bool saveNow();

    // "Export as PDF…": asks for the file and whether to include the
    // presenter notes, then exports off the main thread.
    void exportAsPdf();
    // For tests: the next "Export as PDF…" takes this answer instead of
    // showing the file dialog.
    void answerNextExportForTesting(std::filesystem::path pdf, bool withNotes);
    bool isExporting() const { return pdfExport_ != nullptr; }

    // The window's key monitor; true when the key was used.
    bool handleKey(guint keyval, Gdk::ModifierType modifiers);
    // A short message over the window's content.
    void showToast(const std::string& message);

    // The deck's theme, accent and title, as every slide picture needs them.
    SlidePaintOptions paintOptions() const;

    PresentingStage& presentingStage() { return *stage_; }
    StageView& stage();
    // The live page of the current web slide.
    WebCard& webCard();
    OverviewGrid& overview();
    HudBar& hud();
    SlideNavigator& navigator() { return *navigator_; }
    EditorLayout& layout() { return *layout_; }
    // Names this window to the web prefetcher and the profiles register.
    const Uuid& windowId() const { return state_->windowId(); }
    PresenterPanel* presenterPanel() { return panel_.get(); }
    // The web slide check while it is shown.
    WebCheckSheet* webCheck() { return webCheck_.get(); }
    // The consent sheet while it is shown.
    AdwMessageDialog* trustReview() const { return trustReview_.dialog(); }
    // "Delete this slide?" and "Save changes to …?" while shown.
    AdwMessageDialog* deleteConfirmation() const { return deleteDialog_.get(); }
    AdwMessageDialog* closeConfirmation() const { return closeDialog_.get(); }
    PresenterHud& hudController() { return hudController_; }

    void toggleFullScreen() override;
    // The monitors and where the talk is on them now (empty while not
    // presenting or on a single monitor).
    std::vector<Screen> screens() const;
    const ScreenPlan& screenPlan() const { return screenPlan_; }

    // The decks (package folders) dropped onto the window outside the
    // places that take files of their own (the image of an image slide).
    sigc::signal<void(const std::vector<std::filesystem::path>&)>& signal_decks_dropped() { return decksDropped_; }

private:
    void buildContent();
    GtkWidget* buildHeaderBar();
    void buildActions();
    // Enables each command that can act now and sets the toggles' states.
    void updateActions();
    void deckChanged(const DeckChange& change);
    void stateChanged(PresentationField field);
    std::string windowTitle() const;
    void sizeToScreen();
    void refreshTitle();
    void refreshChrome();
    // F6: the keyboard goes round the slide list, the slide on the stage
    // and the presenter notes.
    void focusNextPane();
    void refreshCounter();
    void refreshUndoLabels();
    void refreshPresenterPanel();
    void refreshTrustReview();
    void refreshWebCheck();
    void refreshDeleteConfirmation();
    void deleteCurrentSlide();
    void askWhereToSave(std::function<void(bool saved)> then);
    void confirmClose();
    bool on_close_request() override;
    void showBrowserProfiles();
    // A download from a page in this window ended: a toast names the file
    // (or says it failed) without taking the keyboard from the stage.
    void downloadEnded(const DownloadReport& report);
    struct PdfExport;
    void startExport(const std::filesystem::path& pdf, bool withNotes);
    void showExportProgress(PdfExport& job);
    void exportFinished(PdfExport& job, const std::filesystem::path& pdf);
    void cancelExport();
    // Coming back: the size before the window is first shown and the slide
    // once the deck is open; written a little after the slide changes, when
    // the deck moves to a new package and when the window closes.
    void restorePlace();
    // Monitors (deck_window_screens.cpp): "Present On" and placing the
    // stage and the presenter display when presenting starts, ends or the
    // monitors change.
    void buildScreenActions();
    void refreshPresentOnMenu();
    void screensChanged();
    void settleScreens();
    void placeStage(bool presenting);
    void applyScreenPlan(const ScreenPlan& plan);
    Glib::RefPtr<Gdk::Monitor> monitorNamed(const std::string& connector) const;
    std::string windowScreen() const;
    void placeChangedSoon();
    void rememberPlace();

    Scheduler& scheduler_;
    PreferencesStore& preferences_;
    std::unique_ptr<DeckDocument> document_;
    std::unique_ptr<PresentationState> state_;
    std::unique_ptr<DeckEditor> editor_;
    ThreadWorker worker_;
    std::unique_ptr<Autosaver> autosaver_;
    PresenterHud hudController_;

    // Widgets, owned by the window's widget tree.
    GObjectRef<GtkWidget> header_;
    GObjectRef<AdwToastOverlay> toasts_;
    GObjectRef<AdwWindowTitle> title_;
    PresentingStage* stage_ = nullptr;
    SlideNavigator* navigator_ = nullptr;
    EditorLayout* layout_ = nullptr;
    Gtk::Label* counter_ = nullptr;
    Gtk::Button* undoButton_ = nullptr;
    Gtk::Button* redoButton_ = nullptr;
    Gtk::ToggleButton* notesToggle_ = nullptr;
    Gtk::ToggleButton* sidebarToggle_ = nullptr;
    Glib::RefPtr<Gio::Menu> editMenu_;

    std::map<std::string, Glib::RefPtr<Gio::SimpleAction>> actions_;
    bool sidebarVisible_ = true;
    bool typing_ = false;  // a text field has the keyboard
    std::unique_ptr<PresenterPanel> panel_;
    std::unique_ptr<WebCheckSheet> webCheck_;
    Glib::RefPtr<Gtk::FileChooserNative> saveDialog_;
    GObjectRef<AdwMessageDialog> deleteDialog_;
    GObjectRef<AdwMessageDialog> closeDialog_;
    bool closing_ = false;            // the close was confirmed or needs no question
    bool warnedOfFailedSave_ = false;  // closing again discards the change
    TrustReview trustReview_;
    bool wasFullScreen_ = false;
    ScreenPlan screenPlan_;
    std::string presentingFrom_;  // the deck window's monitor when presenting started
    bool openedPanelForScreens_ = false;
    Glib::RefPtr<Gio::Menu> presentOnMenu_;
    sigc::connection monitorsConnection_;
    sigc::connection screensIdle_;
    Scheduler::TimerId settleTimer_ = 0;  // monitors changed a moment ago
    int downloadListener_ = 0;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<const Error&>::Connection saveFailedConnection_;
    Signal<>::Connection keysConnection_;
    std::shared_ptr<DeckPlaces> places_;
    DeckPlace place_;  // the last place seen, for writing once the widgets are gone
    Scheduler::TimerId placeTimer_ = 0;
    std::optional<std::filesystem::path> placedPackage_;  // the package place_ was written under
    sigc::signal<void(const std::vector<std::filesystem::path>&)> decksDropped_;
    // Exports have a thread of their own, so a save never waits for one.
    ThreadWorker exportWorker_;
    std::shared_ptr<PdfExport> pdfExport_;
    Glib::RefPtr<Gtk::FileChooserNative> exportDialog_;
    std::optional<std::pair<std::filesystem::path, bool>> exportAnswerForTesting_;
};

}  // namespace lectern
