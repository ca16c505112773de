#include "editor/platform/deck_window.h"

#include <glib.h>

#include "web/platform/browser_profiles_window.h"
#include "present/platform/deck_commands.h"
#include "present/platform/hud_bar.h"
#include "slides/platform/overview_grid.h"
#include "editor/platform/presenter_panel.h"
#include "present/platform/shortcuts_window.h"
#include "slides/platform/stage_view.h"
#include "web/platform/web_check_sheet.h"
#include "present/key_monitor.h"
#include "present/platform/soup_http_transport.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"
#include "web/profiles_in_use.h"
#include "web/web_prefetcher.h"

namespace lectern {

namespace {

constexpr int notesHeight = 160;

// "~/Talks" for a package in /home/me/Talks: where the deck lives, as GNOME
// applications show it under the title.
// Demo requests that send a profile's cookies read them from the same
// stores the live pages use; the stores live for the process.
std::shared_ptr<CookieSource> profileCookies() {
    return std::shared_ptr<CookieSource>(&WebServices::shared().sessions(), [](CookieSource*) {});
}

std::string folderSubtitle(const std::optional<std::filesystem::path>& package) {
    if (!package) return {};
    std::string folder = package->parent_path().string();
    std::string home = g_get_home_dir();
    if (!home.empty() && folder.rfind(home, 0) == 0 && (folder.size() == home.size() || folder[home.size()] == '/')) {
        std::string shortened("~");  // built in place: g++ 12 warns falsely on "~" + string
        shortened += folder.substr(home.size());
        folder = shortened;
    }
    return folder;
}

}  // namespace

DeckWindow::DeckWindow(Scheduler& scheduler, PreferencesStore& preferences, Deck deck,
                       std::optional<std::filesystem::path> package)
    : scheduler_(scheduler),
      preferences_(preferences),
      deck_(std::move(deck)),
      package_(std::move(package)),
      madeElsewhere_(deck_),
      state_(std::make_unique<PresentationState>(scheduler, preferences, makeActionRunner(profileCookies()))),
      hudController_(scheduler, [this](bool visible) { state_->setHudVisible(visible); }) {
    state_->setWindow(this);
    set_title(windowTitle());
    sizeToScreen();
    add_css_class("deck-window");

    buildActions();
    buildContent();
    // "Keyboard Shortcuts": the window brings its own action for it.
    set_help_overlay(*makeShortcutsWindow());

    // The key monitor sees every key of the window before its widgets do.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType modifiers) { return handleKey(keyval, modifiers); }, false);
    add_controller(keys);

    // Back from a sheet or dialog, the keys go to the stage unless a widget
    // that is still on screen has the focus: a hidden one (the notes, when
    // they are off) would take every key and do nothing with it.
    property_is_active().signal_changed().connect([this] {
        if (!is_active()) return;
        Gtk::Widget* focus = get_focus();
        if (!focus || !focus->is_drawable()) stage_->grab_focus();
    });

    // Leaving full screen some other way (the window manager) ends the
    // presentation, so that state and window agree.
    property_fullscreened().signal_changed().connect([this] {
        bool fullScreen = is_fullscreen();
        if (wasFullScreen_ && !fullScreen && state_->presenting()) state_->togglePresenting();
        wasFullScreen_ = fullScreen;
    });

    stateConnection_ = state_->changed().connect([this](PresentationField field) { stateChanged(field); });
    showCurrentSlide();
    refreshChrome();
    refreshNotes();
    refreshCounter();
    updateActions();
    state_->syncAutoRun(deck_);
    // Other windows must not erase the browser profiles this deck uses.
    ProfilesInUse::shared().publish(windowId_, deck_);
    stage_->grab_focus();
}

DeckWindow::~DeckWindow() {
    // Take the widgets down while the state they observe is still here. The
    // live page goes first, and this window wants no page kept any more.
    WebServices::shared().prefetcher().setWanted(windowId_, {});
    ProfilesInUse::shared().remove(windowId_);
    if (webCard_) webCard_->clear();
    // Closing saved already; a window taken down otherwise still writes
    // what is waiting, with nowhere left to say if that fails.
    if (saveTimer_) scheduler_.cancel(saveTimer_);
    if (unsaved_) (void)writePackage();
    trustReview_.close();
    webCheck_.reset();
    clearedConnection_.disconnect();
    profilesWindow_.reset();
    panel_.reset();
    stateConnection_.disconnect();
    if (gobj()) unset_child();  // a closed window has lost its widgets already
    state_->setWindow(nullptr);
}

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
    if (deck_.title && !deck_.title->empty()) return *deck_.title;
    if (package_) return package_->stem().string();
    return "Untitled Deck";
}

SlidePaintOptions DeckWindow::paintOptions() const {
    SlidePaintOptions options;
    options.theme = deck_.theme;
    options.deckAccentHex = deck_.accentHex;
    options.deckTitle = deck_.title.value_or("");
    return options;
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

    stage_ = Gtk::make_managed<StageView>();
    cardConnection_ = stage_->cardClicked().connect([this](const std::string& target) {
        state_->route(target, deck_.slides);
    });
    hud_ = Gtk::make_managed<HudBar>(*state_, [this]() -> const Deck& { return deck_; });
    hud_->set_margin_bottom(24);
    hudHoverConnection_ = hud_->hovering().connect([this](bool hovering) { hudController_.setHovering(hovering); });

    auto& web = WebServices::shared();
    webCard_ = Gtk::make_managed<WebCard>(web.pages(), scheduler_, &web.prefetcher(), windowId_, state_->liveWebViews());
    webZoomConnection_ = webCard_->zoomRequested().connect([this](double zoom) { setCurrentWebZoom(zoom); });
    webCardStyle_ = Gtk::CssProvider::create();
    webCard_->get_style_context()->add_provider(webCardStyle_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

    auto* stageOverlay = Gtk::make_managed<Gtk::Overlay>();
    stageOverlay->set_vexpand(true);
    stageOverlay->set_child(*stage_);
    // The live page lies over the slide's web area, under the HUD.
    stageOverlay->add_overlay(*webCard_);
    stageOverlay->add_overlay(*hud_);
    stageOverlay->signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& allocation) {
            if (child != webCard_) return false;
            placeWebCard(allocation);
            return true;
        },
        false);
    // The HUD comes up when the pointer nears the bottom edge of the stage
    // alone, and goes two seconds after it leaves.
    auto motion = Gtk::EventControllerMotion::create();
    auto moved = [this, stageOverlay](double, double y) {
        if (!state_->editorOpen()) hudController_.pointerMoved(stageOverlay->get_height() - y);
    };
    motion->signal_enter().connect(moved);
    motion->signal_motion().connect(moved);
    motion->signal_leave().connect([this] {
        if (!state_->editorOpen()) hudController_.pointerMoved(-1);
    });
    stageOverlay->add_controller(motion);

    auto* notesTitle = Gtk::make_managed<Gtk::Label>("Presenter Notes");
    notesTitle->add_css_class("heading");
    notesTitle->set_xalign(0);
    notesText_ = Gtk::make_managed<Gtk::Label>();
    notesText_->set_wrap(true);
    notesText_->set_xalign(0);
    notesText_->set_yalign(0);
    notesText_->set_selectable(true);
    notesText_->add_css_class("notes-text");
    auto* notesScroller = Gtk::make_managed<Gtk::ScrolledWindow>();
    notesScroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    notesScroller->set_vexpand(true);
    notesScroller->set_child(*notesText_);
    auto* notesPane = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 8);
    notesPane->add_css_class("notes-pane");
    notesPane->set_size_request(-1, notesHeight);
    notesPane->append(*notesTitle);
    notesPane->append(*notesScroller);
    notesRevealer_ = Gtk::make_managed<Gtk::Revealer>();
    notesRevealer_->set_transition_type(Gtk::RevealerTransitionType::SLIDE_UP);
    notesRevealer_->set_transition_duration(200);
    notesRevealer_->set_child(*notesPane);
    // The stage takes the height the notes leave; the notes never grow.
    notesRevealer_->set_vexpand(false);

    auto* stagePage = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    stagePage->append(*stageOverlay);
    stagePage->append(*notesRevealer_);

    overview_ = Gtk::make_managed<OverviewGrid>();
    overview_->setDeck(deck_, paintOptions());
    overview_->setCurrent(state_->current());
    tileConnection_ = overview_->tileChosen().connect([this](std::int64_t index) {
        state_->select(index, static_cast<std::int64_t>(deck_.slides.size()));
    });

    pages_ = Gtk::make_managed<Gtk::Stack>();
    pages_->set_transition_type(Gtk::StackTransitionType::CROSSFADE);
    pages_->set_transition_duration(200);
    pages_->add(*stagePage, "stage");
    pages_->add(*overview_, "overview");
    pages_->set_visible_child("stage");

    toasts_ = GObjectRef<AdwToastOverlay>::take(ADW_TOAST_OVERLAY(adw_toast_overlay_new()));
    gtk_widget_set_vexpand(GTK_WIDGET(toasts_.get()), true);
    adw_toast_overlay_set_child(toasts_.get(), GTK_WIDGET(pages_->gobj()));
    gtk_box_append(content->gobj(), GTK_WIDGET(toasts_.get()));
    set_child(*content);
}

GtkWidget* DeckWindow::buildHeaderBar() {
    GtkWidget* header = adw_header_bar_new();

    title_ = GObjectRef<AdwWindowTitle>::take(
        ADW_WINDOW_TITLE(adw_window_title_new(windowTitle().c_str(), folderSubtitle(package_).c_str())));
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), GTK_WIDGET(title_.get()));

    // Start: whole slides back and forth, and where we are.
    auto* previous = Gtk::make_managed<Gtk::Button>();
    previous->set_icon_name("go-previous-symbolic");
    previous->set_action_name("win.previous-slide");
    previous->set_tooltip_text("Previous Slide (Ctrl+Left)");
    auto* next = Gtk::make_managed<Gtk::Button>();
    next->set_icon_name("go-next-symbolic");
    next->set_action_name("win.next-slide");
    next->set_tooltip_text("Next Slide (Ctrl+Right)");
    auto* navigation = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    navigation->add_css_class("linked");
    navigation->append(*previous);
    navigation->append(*next);
    adw_header_bar_pack_start(ADW_HEADER_BAR(header), GTK_WIDGET(navigation->gobj()));
    counter_ = Gtk::make_managed<Gtk::Label>();
    counter_->add_css_class("numeric");
    counter_->add_css_class("slide-counter");
    adw_header_bar_pack_start(ADW_HEADER_BAR(header), GTK_WIDGET(counter_->gobj()));

    // End, from the right: the primary menu, Present, then the views.
    auto menu = Gio::Menu::create();
    auto openSection = Gio::Menu::create();
    openSection->append("Open…", "app.open");
    menu->append_section(openSection);
    auto slideMenu = Gio::Menu::create();
    for (const auto& command : slideCommands()) slideMenu->append(command.title, command.action);
    auto presentationMenu = Gio::Menu::create();
    for (const auto& command : presentationCommands()) presentationMenu->append(command.title, command.action);
    auto menusSection = Gio::Menu::create();
    menusSection->append_submenu("Slide", slideMenu);
    menusSection->append_submenu("Presentation", presentationMenu);
    menu->append_section(menusSection);
    auto appSection = Gio::Menu::create();
    appSection->append("Keyboard Shortcuts", "win.show-help-overlay");
    appSection->append("Check for Updates…", "app.check-for-updates");
    appSection->append("About Lectern", "app.about");
    menu->append_section(appSection);
    auto* menuButton = Gtk::make_managed<Gtk::MenuButton>();
    menuButton->set_icon_name("open-menu-symbolic");
    menuButton->set_menu_model(menu);
    menuButton->set_primary(true);
    menuButton->set_tooltip_text("Main Menu");
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(menuButton->gobj()));

    auto* present = Gtk::make_managed<Gtk::Button>();
    GtkWidget* presentContent = adw_button_content_new();
    adw_button_content_set_icon_name(ADW_BUTTON_CONTENT(presentContent), "media-playback-start-symbolic");
    adw_button_content_set_label(ADW_BUTTON_CONTENT(presentContent), "Present");
    gtk_button_set_child(present->gobj(), presentContent);
    present->set_action_name("win.present");
    present->set_tooltip_text("Present (Ctrl+Shift+P)");
    present->add_css_class("suggested-action");
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(present->gobj()));

    auto toggle = [&](Gtk::ToggleButton*& button, const char* icon, const char* tooltip, std::function<bool()> value,
                      std::function<void()> flip) {
        button = Gtk::make_managed<Gtk::ToggleButton>();
        button->set_icon_name(icon);
        button->set_tooltip_text(tooltip);
        button->signal_toggled().connect([button, value, flip] {
            if (button->get_active() != value()) flip();
        });
        adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(button->gobj()));
    };
    toggle(panelToggle_, "video-display-symbolic", "Toggle Presenter Display (Alt+Ctrl+P)",
           [this] { return state_->presenterPanelVisible(); }, [this] { state_->togglePresenterPanel(); });
    toggle(notesToggle_, "format-justify-left-symbolic", "Show Presenter Notes (Alt+Ctrl+I)",
           [this] { return !state_->notesHidden(); }, [this] { state_->toggleNotes(); });
    toggle(overviewToggle_, "view-grid-symbolic", "Overview (Escape)", [this] { return state_->overview(); },
           [this] { state_->toggleOverview(); });
    return header;
}

bool DeckWindow::handleKey(guint keyval, Gdk::ModifierType modifiers) {
    auto held = [&](Gdk::ModifierType mask) { return (modifiers & mask) == mask; };
    KeyModifiers keyModifiers;
    keyModifiers.shift = held(Gdk::ModifierType::SHIFT_MASK);
    keyModifiers.control = held(Gdk::ModifierType::CONTROL_MASK);
    keyModifiers.alt = held(Gdk::ModifierType::ALT_MASK);
    keyModifiers.super = held(Gdk::ModifierType::SUPER_MASK) || held(Gdk::ModifierType::META_MASK) ||
                         held(Gdk::ModifierType::HYPER_MASK);
    bool bare = !keyModifiers.shift && !keyModifiers.control && !keyModifiers.alt && !keyModifiers.super;
    // Presenter remotes send Page Down and Page Up (some send Space): they
    // step like the right and left arrows, unless the presenter is working
    // in the live page (typing a space, scrolling it).
    Gtk::Widget* focus = get_focus();
    bool inLivePage = focus && webCard_ && (focus == webCard_ || focus->is_ancestor(*webCard_));
    if (bare && !inLivePage && (keyval == GDK_KEY_Page_Down || keyval == GDK_KEY_space)) keyval = keys::right;
    if (bare && !inLivePage && keyval == GDK_KEY_Page_Up) keyval = keys::left;

    switch (keyCommand(keyval, keyModifiers, state_->editorOpen())) {
    case KeyCommand::passOn: return false;
    case KeyCommand::next: state_->next(deck_.slides); return true;
    case KeyCommand::previous: state_->previous(deck_.slides); return true;
    case KeyCommand::toggleOverview: state_->toggleOverview(); return true;
    case KeyCommand::nextSlideDirect: state_->nextSlideDirect(deck_.slides); return true;
    case KeyCommand::previousSlideDirect: state_->previousSlideDirect(deck_.slides); return true;
    }
    return false;
}

void DeckWindow::showToast(const std::string& message) {
    // The toast's title is markup.
    char* escaped = g_markup_escape_text(message.c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

void DeckWindow::setDeck(Deck deck) {
    std::size_t previousCount = deck_.slides.size();
    deck_ = std::move(deck);
    madeElsewhere_.deckChanged(deck_, preferences_);
    ProfilesInUse::shared().publish(windowId_, deck_);
    if (webCheck_) webCheck_->setDeck(deck_);
    refreshBrowserProfiles();
    set_title(windowTitle());
    adw_window_title_set_title(title_.get(), windowTitle().c_str());
    if (deck_.slides.size() < previousCount) state_->clampCurrent(static_cast<std::int64_t>(deck_.slides.size()));
    overview_->setDeck(deck_, paintOptions());
    overview_->setCurrent(state_->current());
    showCurrentSlide();
    refreshNotes();
    refreshCounter();
    hud_->refresh();
    if (panel_) panel_->refresh();
    updateActions();
    state_->syncAutoRun(deck_);
}

void DeckWindow::stateChanged(PresentationField field) {
    switch (field) {
    case PresentationField::current:
        showCurrentSlide();
        refreshNotes();
        refreshCounter();
        overview_->setCurrent(state_->current());
        if (state_->overview()) overview_->focusCurrent();
        if (panel_) panel_->refresh();
        updateActions();
        state_->syncAutoRun(deck_);
        break;
    case PresentationField::revealIndex: showCurrentSlide(); break;
    case PresentationField::editorOpen:
        refreshChrome();
        refreshWebPages();
        updateActions();
        if (panel_) panel_->refresh();
        // Leaving the editor asks about actions made elsewhere first; both
        // ways, automatic runs follow what is now on screen.
        if (state_->editorOpen()) state_->syncAutoRun(deck_); else state_->leftEditor(deck_);
        break;
    case PresentationField::presenting: refreshChrome(); break;
    case PresentationField::overview:
        pages_->set_visible_child(state_->overview() ? "overview" : "stage");
        overviewToggle_->set_active(state_->overview());
        if (state_->overview()) overview_->focusCurrent(); else stage_->grab_focus();
        break;
    case PresentationField::notesHidden: refreshChrome(); break;
    case PresentationField::presenterPanelVisible: refreshPresenterPanel(); break;
    case PresentationField::history: updateActions(); break;
    case PresentationField::actionsAwaitingTrust: refreshTrustReview(); break;
    case PresentationField::isWebCheckPresented: refreshWebCheck(); break;
    default: break;
    }
}

void DeckWindow::showCurrentSlide() {
    const Slide* slide = state_->currentSlide(deck_.slides);
    SlidePaintOptions options = paintOptions();
    // The live page covers the web area: the painter leaves it empty.
    options.drawWebPlaceholder = !(slide && slide->layout == SlideLayout::web);
    stage_->show(slide, state_->revealIndex(), options);
    refreshWebPages();
}

void DeckWindow::refreshWebPages() {
    // The new wish list goes first, so that the page leaving the stage is
    // kept hidden when it is still wanted (going back shows it at once).
    WebServices::shared().prefetcher().setWanted(
        windowId_, WebPrefetcher::wantedKeys(deck_.slides, state_->current(), state_->editorOpen()));
    webCard_->setTheme(deck_.theme);
    webCard_->show(state_->currentSlide(deck_.slides), state_->editorOpen());
    webCard_->queue_resize();
}

void DeckWindow::placeWebCard(Gdk::Rectangle& allocation) {
    auto area = stage_->webArea();
    if (!area) {
        allocation = Gdk::Rectangle(0, 0, 1, 1);
        return;
    }
    WebServices::shared().pages().setHiddenSize(static_cast<int>(area->rect.width), static_cast<int>(area->rect.height));
    allocation = Gdk::Rectangle(static_cast<int>(area->rect.x), static_cast<int>(area->rect.y),
                                std::max(1, static_cast<int>(area->rect.width)),
                                std::max(1, static_cast<int>(area->rect.height)));
    // The page's corners follow the slide's rounded media frame at any size.
    double radius = std::round(area->radius);
    if (radius != webCardRadius_) {
        webCardRadius_ = radius;
        webCardStyle_->load_from_data(".web-card { border-radius: " + std::to_string(static_cast<int>(radius)) + "px; }");
    }
}

void DeckWindow::setCurrentWebZoom(double zoom) {
    const Slide* slide = state_->currentSlide(deck_.slides);
    if (!slide || slide->layout != SlideLayout::web || slide->webZoom == zoom) return;
    Deck changed = deck_;
    changed.slides[static_cast<std::size_t>(state_->current())].webZoom = zoom;
    editDeck(std::move(changed));
}

void DeckWindow::refreshChrome() {
    bool editor = state_->editorOpen();
    gtk_widget_set_visible(header_.get(), editor);
    stage_->setFramed(editor);
    notesRevealer_->set_reveal_child(editor && !state_->notesHidden());
    notesToggle_->set_active(!state_->notesHidden());
    notesToggle_->set_tooltip_text(state_->notesHidden() ? "Show Presenter Notes (Alt+Ctrl+I)"
                                                         : "Hide Presenter Notes (Alt+Ctrl+I)");
    if (editor) remove_css_class("stage-only"); else add_css_class("stage-only");
}

void DeckWindow::refreshNotes() {
    const Slide* slide = state_->currentSlide(deck_.slides);
    bool empty = !slide || slide->notes.empty();
    notesText_->set_text(empty ? "No presenter notes for this slide." : slide->notes);
    if (empty) notesText_->add_css_class("dim-label"); else notesText_->remove_css_class("dim-label");
}

void DeckWindow::refreshCounter() {
    auto count = static_cast<std::int64_t>(deck_.slides.size());
    counter_->set_text(count == 0 ? "No slides" : std::to_string(state_->current() + 1) + " / " + std::to_string(count));
}

void DeckWindow::refreshPresenterPanel() {
    bool visible = state_->presenterPanelVisible();
    panelToggle_->set_active(visible);
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
    trustReview_.show(
        *this, requests, [this] { state_->allowAwaitingActions(deck_); }, [this] { state_->declineAwaitingActions(); });
}

void DeckWindow::refreshWebCheck() {
    if (!state_->isWebCheckPresented()) {
        webCheck_.reset();
        return;
    }
    if (webCheck_) return;
    auto& web = WebServices::shared();
    webCheck_ = std::make_unique<WebCheckSheet>(
        *this, web.pages(), scheduler_, deck_,
        [this](std::size_t index) { state_->goTo(static_cast<std::int64_t>(index), true); },
        [this] { state_->setWebCheckPresented(false); });
    webCheck_->present();
}

void DeckWindow::toggleFullScreen() {
    if (state_->presenting()) fullscreen(); else unfullscreen();
}

}  // namespace lectern
