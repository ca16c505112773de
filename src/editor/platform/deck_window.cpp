#include "editor/platform/deck_window.h"

#include <glib.h>
#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "base/translation.h"
#include "editor/platform/body_editor.h"
#include "editor/platform/body_field.h"
#include "editor/platform/deck_drop_target.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/heading_fields.h"
#include "editor/platform/presenter_panel.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/slide_navigator.h"
#include "editor/platform/stage_editing.h"
#include "editor/platform/stage_field.h"
#include "editor/recovery_store.h"
#include "model/deck_package.h"
#include "present/presenter_keys.h"
#include "present/platform/hud_bar.h"
#include "present/platform/shortcuts_window.h"
#include "present/platform/soup_http_transport.h"
#include "slides/deck_previews.h"
#include "slides/platform/overview_grid.h"
#include "slides/platform/stage_view.h"
#include "web/platform/web_address_field.h"
#include "web/platform/web_card.h"
#include "web/platform/web_check_sheet.h"
#include "web/platform/web_downloads.h"
#include "web/platform/web_services.h"
#include "web/profiles_in_use.h"

namespace lectern {

namespace {

// Demo requests that send a profile's cookies read them from the same
// stores the live pages use; the stores live for the process.
std::shared_ptr<CookieSource> profileCookies() {
    return std::shared_ptr<CookieSource>(&WebServices::shared().sessions(), [](CookieSource*) {});
}

Status writeWithPreviews(const Deck& deck, const std::filesystem::path& package) {
    return DeckPackage::write(deck, package, package, makeDeckPreviews);
}

double monotonicSeconds() { return static_cast<double>(g_get_monotonic_time()) / 1e6; }

}  // namespace

DeckWindow::DeckWindow(Scheduler& scheduler, PreferencesStore& preferences, std::shared_ptr<RecoveryStore> recovery,
                       Deck deck, std::optional<std::filesystem::path> package, bool recovered,
                       std::shared_ptr<DeckPlaces> places)
    : scheduler_(scheduler),
      preferences_(preferences),
      document_(std::make_unique<DeckDocument>(std::move(deck), std::move(package), monotonicSeconds)),
      state_(std::make_unique<PresentationState>(scheduler, preferences, makeActionRunner(profileCookies()))),
      hudController_(scheduler, [this](bool visible) { state_->setHudVisible(visible); }),
      places_(std::move(places)) {
    if (recovered) {
        // What the package holds, if it can still be read: the window opens
        // with the recovered changes unsaved.
        std::optional<Deck> saved;
        if (document_->package()) {
            if (auto onDisk = DeckPackage::read(*document_->package())) saved = std::move(onDisk).value();
        }
        document_->setSavedDeck(std::move(saved));
    }
    auto& web = WebServices::shared();
    editor_ = std::make_unique<DeckEditor>(*document_, *state_, preferences_, &ProfilesInUse::shared(),
                                           &web.prefetcher());
    autosaver_ = std::make_unique<Autosaver>(*document_, scheduler_, worker_, writeWithPreviews, std::move(recovery));
    saveFailedConnection_ = autosaver_->failed().connect([this](const Error& error) {
        // The old package stays whole when a save fails; the change stays
        // here and in the recovery copy, and the next save tries again.
        showToast(formatText(_("Couldn’t save the deck: %s"), error.message.c_str()));
    });
    state_->setWindow(this);
    set_title(windowTitle());
    sizeToScreen();
    restorePlace();
    add_css_class("deck-window");

    buildActions();
    buildScreenActions();
    buildContent();
    // "Keyboard Shortcuts": the window brings its own action for it.
    set_help_overlay(*makeShortcutsWindow());

    // The key monitor sees every key of the window before its widgets do.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType modifiers) { return handleKey(keyval, modifiers); }, false);
    add_controller(keys);

    // A deck folder dragged onto the window opens in a window of its own.
    add_controller(makeDeckDropTarget(decksDropped_.make_slot()));
    // Where the deck was left is written at close even when the close is
    // then held up by a question: the place is the same either way.
    signal_close_request().connect(
        [this] {
            rememberPlace();
            return false;
        },
        false);

    // Back from a sheet or dialog, the keys go to the stage unless a widget
    // that is still on screen has the focus: a hidden one (the notes, when
    // they are off) would take every key and do nothing with it.
    property_is_active().signal_changed().connect([this] {
        if (!is_active()) return;
        Gtk::Widget* focus = get_focus();
        if (!focus || !focus->is_drawable()) stage().grab_focus();
    });

    // Leaving full screen some other way (the window manager) ends the
    // presentation, so that state and window agree.
    property_fullscreened().signal_changed().connect([this] {
        bool fullScreen = is_fullscreen();
        if (wasFullScreen_ && !fullScreen && state_->presenting()) {
            // Right after monitors changed it is the window manager moving
            // the stage: it stays full screen and the talk goes on.
            if (settleTimer_) Glib::signal_idle().connect_once(sigc::track_obj([this] {
                if (state_->presenting()) applyScreenPlan(screenPlan_);
            }, *this));
            else state_->togglePresenting();
        }
        wasFullScreen_ = fullScreen;
    });

    // While a text field has the keyboard, the window's keys that also move
    // through text (Ctrl+Left/Right) or leave it (Escape) are the field's.
    property_focus_widget().signal_changed().connect([this] {
        auto* focus = get_focus();
        bool typing = focus && (GTK_IS_TEXT(focus->gobj()) || GTK_IS_TEXT_VIEW(focus->gobj()));
        if (typing == typing_) return;
        typing_ = typing;
        updateActions();
    });

    deckConnection_ = editor_->deckChanged().connect([this](const DeckChange& change) { deckChanged(change); });
    stateConnection_ = state_->changed().connect([this](PresentationField field) { stateChanged(field); });
    keysConnection_ = stage_->keys().changed().connect([this] { updateActions(); });
    stage_->showCurrentSlide();
    refreshTitle();
    refreshChrome();
    refreshCounter();
    refreshUndoLabels();
    updateActions();
    stage().grab_focus();
}

DeckWindow::~DeckWindow() {
    // Take the widgets down while the state they observe is still here. A
    // window taken down without closing still writes what is waiting, with
    // nowhere left to say if that fails.
    WebDownloads::shared().stopListening(downloadListener_);
    if (!closing_) (void)autosaver_->flush();
    cancelExport();
    rememberPlace();
    monitorsConnection_.disconnect();
    screensIdle_.disconnect();
    if (settleTimer_) scheduler_.cancel(settleTimer_);
    stage_->webCard().clear();
    trustReview_.close();
    webCheck_.reset();
    panel_.reset();
    deckConnection_.disconnect();
    stateConnection_.disconnect();
    keysConnection_.disconnect();
    if (gobj()) unset_child();  // a closed window has lost its widgets already
    autosaver_.reset();
    editor_.reset();
    state_->setWindow(nullptr);
}

StageView& DeckWindow::stage() { return stage_->stage(); }
WebCard& DeckWindow::webCard() { return stage_->webCard(); }
OverviewGrid& DeckWindow::overview() { return stage_->overview(); }
HudBar& DeckWindow::hud() { return stage_->hud(); }
SlidePaintOptions DeckWindow::paintOptions() const { return stage_->paintOptions(); }

void DeckWindow::sizeToScreen() {
    // 1440 × 900, or nine tenths of a smaller screen.
    int width = 1440, height = 900;
    auto monitors = get_display()->get_monitors();
    if (monitors && monitors->get_n_items() > 0) {
        if (auto monitor = std::dynamic_pointer_cast<Gdk::Monitor>(monitors->get_object(0))) {
            Gdk::Rectangle screen;
            monitor->get_geometry(screen);
            width = std::min(width, screen.get_width() * 9 / 10);
            height = std::min(height, screen.get_height() * 9 / 10);
        }
    }
    set_default_size(width, height);
}

std::string DeckWindow::windowTitle() const {
    if (deck().title && !deck().title->empty()) return *deck().title;
    if (package()) return package()->stem().string();
    return _("Untitled Deck");
}

void DeckWindow::refreshTitle() {
    std::string title = windowTitle();
    set_title(title);
    // The subtitle names the package; a draft says so.
    std::string subtitle = package() ? package()->filename().string() : _("Draft");
    adw_window_title_set_title(title_.get(), title.c_str());
    adw_window_title_set_subtitle(title_.get(), subtitle.c_str());
}

void DeckWindow::buildContent() {
    // The header bar lives in the content, so that it can go away with the
    // editor; the window's own title bar stays empty and hidden.
    auto* hiddenTitlebar = Gtk::make_managed<Gtk::Box>();
    hiddenTitlebar->set_visible(false);
    set_titlebar(*hiddenTitlebar);

    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    header_ = GObjectRef<GtkWidget>::retain(buildHeaderBar());
    gtk_box_append(content->gobj(), header_.get());

    stage_ = Gtk::make_managed<PresentingStage>(*editor_, scheduler_, worker_, hudController_);
    navigator_ = Gtk::make_managed<SlideNavigator>(*editor_, [this] { return paintOptions(); });
    layout_ = Gtk::make_managed<EditorLayout>(*editor_, *stage_, *navigator_);

    toasts_ = GObjectRef<AdwToastOverlay>::take(ADW_TOAST_OVERLAY(adw_toast_overlay_new()));
    gtk_widget_set_vexpand(GTK_WIDGET(toasts_.get()), true);
    adw_toast_overlay_set_child(toasts_.get(), GTK_WIDGET(layout_->gobj()));
    gtk_box_append(content->gobj(), GTK_WIDGET(toasts_.get()));
    set_child(*content);
    downloadListener_ = WebDownloads::shared().listen([this](const DownloadReport& report) {
        if (report.window == GTK_ROOT(gobj())) downloadEnded(report);
    });
}

void DeckWindow::focusNextPane() {
    const Gtk::Widget* focus = get_focus();
    const bool inList = focus && isWithin(focus, *navigator_);
    const bool inStage = focus && isWithin(focus, *stage_);
    auto focusStage = [this] {
        if (!state_->editorOpen()) return false;
        auto& editing = stage_->editing();
        Gtk::Text& title = editing.headings().field(HeadingFields::Part::title);
        if (title.get_visible()) return title.grab_focus();
        if (editing.body().editor().get_visible()) {
            editing.body().focus();
            return true;
        }
        Gtk::Entry& address = webCard().addressField().entry();
        if (address.is_drawable()) return address.grab_focus();
        return stage().grab_focus();
    };
    auto focusNotes = [this] {
        Gtk::TextView& notes = layout_->notes();
        return notes.is_drawable() && notes.grab_focus();
    };
    auto focusList = [this] {
        if (!sidebarVisible_ || !state_->editorOpen()) return false;
        navigator_->focusCurrentRow();
        return true;
    };
    if (inList) {
        focusStage() || focusNotes() || focusList();
    } else if (inStage) {
        focusNotes() || focusList() || focusStage();
    } else {
        focusList() || focusStage() || focusNotes();
    }
}

bool DeckWindow::handleKey(guint keyval, Gdk::ModifierType modifiers) {
    auto held = [&](Gdk::ModifierType mask) { return (modifiers & mask) == mask; };
    KeyModifiers keyModifiers;
    keyModifiers.shift = held(Gdk::ModifierType::SHIFT_MASK);
    keyModifiers.control = held(Gdk::ModifierType::CONTROL_MASK);
    keyModifiers.alt = held(Gdk::ModifierType::ALT_MASK);
    keyModifiers.super = held(Gdk::ModifierType::SUPER_MASK) || held(Gdk::ModifierType::META_MASK) ||
                         held(Gdk::ModifierType::HYPER_MASK);
    // A live page keeps the keys it types and scrolls with; a text field
    // keeps the keys that move through text and leave it.
    Gtk::Widget* focus = get_focus();
    bool inLivePage = focus && (focus == &webCard() || focus->is_ancestor(webCard()));
    KeyFocus where = typing_ ? KeyFocus::text : inLivePage ? KeyFocus::livePage : KeyFocus::stage;
    return stage_->keys().press(keyval, keyModifiers, where, deck().slides);
}

void DeckWindow::showToast(const std::string& message) {
    // The toast's title is markup.
    char* escaped = g_markup_escape_text(message.c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

void DeckWindow::deckChanged(const DeckChange& change) {
    refreshTitle();
    if (change.kind == DeckChange::Kind::saved) {
        // A draft's first save or Save As: the deck is now known by its new package.
        if (package() != placedPackage_) rememberPlace();
        return;
    }
    if (webCheck_) webCheck_->setDeck(deck());
    stage_->deckChanged();
    stage_->showCurrentSlide();
    layout_->refreshNotes();
    refreshCounter();
    refreshUndoLabels();
    hud().refresh();
    if (panel_) panel_->refresh();
    refreshDeleteConfirmation();
    updateActions();
}

void DeckWindow::stateChanged(PresentationField field) {
    switch (field) {
    case PresentationField::current:
        placeChangedSoon();
        stage_->showCurrentSlide();
        layout_->refreshNotes();
        refreshCounter();
        stage_->refreshOverview();
        if (state_->overview()) overview().focusCurrent();
        if (panel_) panel_->refresh();
        updateActions();
        break;
    case PresentationField::revealIndex: stage_->showCurrentSlide(); break;
    case PresentationField::editorOpen:
        refreshChrome();
        updateActions();
        if (panel_) panel_->refresh();
        break;
    case PresentationField::presenting: refreshChrome(); updateActions(); break;
    case PresentationField::overview:
        stage_->refreshOverview();
        if (state_->overview()) overview().focusCurrent(); else stage().grab_focus();
        updateActions();
        break;
    case PresentationField::notesHidden: refreshChrome(); updateActions(); break;
    case PresentationField::presenterPanelVisible: refreshPresenterPanel(); updateActions(); break;
    case PresentationField::history: updateActions(); break;
    case PresentationField::actionsAwaitingTrust: refreshTrustReview(); break;
    case PresentationField::isWebCheckPresented: refreshWebCheck(); break;
    case PresentationField::pendingSlideDeletion: refreshDeleteConfirmation(); break;
    default: break;
    }
}

void DeckWindow::refreshChrome() {
    bool editor = state_->editorOpen();
    gtk_widget_set_visible(header_.get(), editor);
    layout_->refreshChrome(sidebarVisible_);
    stage_->refreshChrome();
    notesToggle_->set_tooltip_text(state_->notesHidden() ? _("Show Presenter Notes (Alt+Ctrl+I)")
                                                         : _("Hide Presenter Notes (Alt+Ctrl+I)"));
    // "Show sidebar" while the navigator is hidden.
    const char* sidebar = sidebarVisible_ ? _("Hide sidebar") : _("Show sidebar");
    sidebarToggle_->set_tooltip_text(sidebarVisible_ ? _("Hide sidebar (F9)") : _("Show sidebar (F9)"));
    setAccessibleLabel(*sidebarToggle_, sidebar);
    if (editor) remove_css_class("stage-only"); else add_css_class("stage-only");
}

void DeckWindow::refreshCounter() {
    auto count = static_cast<std::int64_t>(deck().slides.size());
    // TRANSLATORS: the current slide's number, then how many there are.
    counter_->set_text(count == 0 ? std::string(_("No slides"))
                                  : formatText(_("%lld / %lld"), static_cast<long long>(state_->current() + 1),
                                               static_cast<long long>(count)));
}

void DeckWindow::refreshPresenterPanel() {
    bool visible = state_->presenterPanelVisible();
    if (visible) {
        if (!panel_) panel_ = std::make_unique<PresenterPanel>(*this);
        panel_->refresh();
        panel_->present();
        // No button of the panel starts out focused: keys go to the talk.
        panel_->unset_focus();
    } else if (panel_) {
        panel_->set_visible(false);
    }
}

void DeckWindow::refreshTrustReview() {
    const auto& requests = state_->actionsAwaitingTrust();
    if (requests.empty()) {
        trustReview_.close();
        return;
    }
    // The audience never sees the question: in the editor it is asked over
    // the window, before presenting starts; with the stage on screen (a run
    // from the presenter panel) over the presenter panel, opened for it.
    Gtk::Window* parent = this;
    if (!state_->editorOpen()) {
        if (!state_->presenterPanelVisible()) state_->togglePresenterPanel();
        if (panel_) parent = panel_.get();
    }
    // The answer is acted on once the sheet has gone, so that the stage
    // that may follow (full screen) never has it on top.
    auto later = [this](void (*answer)(DeckWindow&)) {
        return [this, answer] {
            Glib::signal_idle().connect_once(sigc::track_obj([this, answer] { answer(*this); }, *this));
        };
    };
    trustReview_.show(
        *parent, requests, later([](DeckWindow& w) { w.state_->allowAwaitingActions(w.deck()); }),
        later([](DeckWindow& w) { w.state_->declineAwaitingActions(); }));
}

void DeckWindow::refreshWebCheck() {
    if (!state_->isWebCheckPresented()) {
        webCheck_.reset();
        return;
    }
    if (webCheck_) return;
    auto& web = WebServices::shared();
    webCheck_ = std::make_unique<WebCheckSheet>(
        *this, web.pages(), scheduler_, deck(),
        [this](std::size_t index) { state_->goTo(static_cast<std::int64_t>(index), true); },
        [this] { state_->setWebCheckPresented(false); }, &web.pictures());
    webCheck_->present();
}

void DeckWindow::toggleFullScreen() {
    placeStage(state_->presenting());
}

}  // namespace lectern
