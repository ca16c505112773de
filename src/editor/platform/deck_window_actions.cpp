// The deck window's commands: every one is an action of the window
// ("win.*"), reachable from the menus, the keys and over D-Bus, with the
// toggles as stateful boolean actions. Which are enabled comes from one
// core function.

#include <algorithm>

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "base/translation.h"
#include "editor/command_states.h"
#include "editor/deck_edits.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/slide_navigator.h"
#include "model/enum_names.h"
#include "present/platform/deck_commands.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"
#include "web/web_zoom.h"

namespace lectern {

namespace {

Gtk::Button* iconButton(const char* icon, const char* name, const char* tooltip, const char* action) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    button->set_tooltip_text(tooltip);
    button->set_action_name(action);
    // A screen reader reads the name, not the icon's file name.
    setAccessibleLabel(*button, name);
    return button;
}

}  // namespace

void DeckWindow::buildActions() {
    auto add = [this](const char* name, std::function<void()> activate) {
        actions_[name] = add_action(name, std::move(activate));
    };
    auto addWithText = [this](const char* name, std::function<void(const std::string&)> activate) {
        actions_[name] = add_action_with_parameter(name, Glib::VARIANT_TYPE_STRING,
                                                   [activate](const Glib::VariantBase& parameter) {
                                                       activate(Glib::VariantBase::cast_dynamic<
                                                                    Glib::Variant<Glib::ustring>>(parameter).get());
                                                   });
    };
    // A toggle: a boolean state that follows the presentation state; both
    // activating it and setting its state (as D-Bus clients do) flip it.
    auto addToggle = [this](const char* name, std::function<bool()> value, std::function<void()> flip) {
        auto action = Gio::SimpleAction::create_bool(name, value());
        action->signal_activate().connect([flip](const Glib::VariantBase&) { flip(); });
        action->signal_change_state().connect([value, flip](const Glib::VariantBase& wanted) {
            bool on = Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(wanted).get();
            if (on != value()) flip();
        });
        add_action(action);
        actions_[name] = action;
    };
    const auto& slides = [this]() -> const std::vector<Slide>& { return deck().slides; };

    // Presenting.
    add("previous-slide", [this, slides] { state_->previousSlideDirect(slides()); });
    add("next-slide", [this, slides] { state_->nextSlideDirect(slides()); });
    add("advance", [this, slides] { state_->next(slides()); });
    actions_["go-to-slide"] = add_action_with_parameter("go-to-slide", Glib::VARIANT_TYPE_INT32,
        [this](const Glib::VariantBase& parameter) {
            int number = Glib::VariantBase::cast_dynamic<Glib::Variant<int>>(parameter).get();
            auto count = static_cast<std::int64_t>(deck().slides.size());
            if (number >= 1 && number <= count) state_->goTo(number - 1, true);
        });
    addToggle("overview", [this] { return state_->overview(); }, [this] { state_->toggleOverview(); });
    // Blacking or whiting out the stage, as B and W do; D-Bus clients set
    // the state.
    auto coverToggle = [this, &addToggle](const char* name, StageCover cover) {
        addToggle(name, [this, cover] { return stage_ && stage_->keys().cover() == cover; }, [this, cover] {
            auto& keys = stage_->keys();
            keys.setCover(keys.cover() == cover ? StageCover::none : cover);
        });
    };
    coverToggle("black-out", StageCover::black);
    coverToggle("white-out", StageCover::white);
    addToggle("toggle-notes", [this] { return !state_->notesHidden(); }, [this] { state_->toggleNotes(); });
    add("toggle-hud", [this] { state_->toggleHud(); });
    addToggle("toggle-presenter-display", [this] { return state_->presenterPanelVisible(); },
              [this] { state_->togglePresenterPanel(); });
    addToggle("toggle-editor", [this] { return state_->editorOpen(); }, [this] { state_->toggleEditorAsking(deck()); });
    addToggle("toggle-sidebar", [this] { return sidebarVisible_; }, [this] {
        sidebarVisible_ = !sidebarVisible_;
        refreshChrome();
        updateActions();
    });
    add("next-pane", [this] { focusNextPane(); });
    add("present", [this] { state_->togglePresentingAsking(deck()); });
    add("toggle-timer", [this] { state_->toggleTimer(); });
    add("reset-web-page", [this] {
        if (const Slide* slide = editor_->currentSlide()) {
            if (auto view = state_->liveWebViews()->lookup(slide->id)) view->reload();
        }
    });
    auto zoomTo = [this](std::function<double(double)> zoom) {
        editor_->editCurrentSlide(_("Change Page Zoom"), [zoom](Slide& slide) {
            if (slide.layout == SlideLayout::web) slide.webZoom = zoom(slide.webZoom);
        });
    };
    add("zoom-in", [zoomTo] { zoomTo([](double zoom) { return WebZoom::zoomIn(zoom); }); });
    add("zoom-out", [zoomTo] { zoomTo([](double zoom) { return WebZoom::zoomOut(zoom); }); });
    add("actual-size", [zoomTo] { zoomTo([](double) { return 1.0; }); });
    add("clear-shared-web-session", [this] {
        WebServices::shared().profileStores(preferences_).clearSharedSession();
        showToast(_("Shared web session cleared"));
        // Pages loaded ahead were discarded: load the wanted ones again.
        stage_->refreshWebPage();
    });
    add("check-web-slides", [this] { state_->setWebCheckPresented(true); });
    add("browser-profiles", [this] { showBrowserProfiles(); });
    add("close", [this] { close(); });

    // Editing.
    add("undo", [this] { editor_->undo(); });
    add("redo", [this] { editor_->redo(); });
    add("save", [this] { save(); });
    add("save-as", [this] { saveAs(); });
    add("export-pdf", [this] { exportAsPdf(); });
    // Save As without the dialog, for scripts: the package's path.
    addWithText("save-to", [this](const std::string& path) {
        std::filesystem::path package = path;
        if (package.empty() || !package.is_absolute()) {
            showToast(_("Save needs the full path of a .lectern folder."));
            return;
        }
        if (package.extension() != ".lectern") package += ".lectern";
        autosaver_->saveAs(package, [](const Status&) {});
    });
    add("new-slide", [this] { navigator_->showNewSlidePicker(); });
    addWithText("add-slide", [this](const std::string& name) {
        auto layout = enumFromName<SlideLayout>(name);
        if (!layout) {
            showToast(formatText(_("There is no slide layout called “%s”."), name.c_str()));
            return;
        }
        Slide slide = Slide::make(*layout);
        Uuid id = slide.id;
        std::size_t index = edits::insertionIndex(deck(), state_->current());
        editor_->edit(_("New Slide"), [&](Deck deck) { return edits::insertSlide(std::move(deck), index, slide); }, {},
                      id);
    });
    auto onCurrent = [this](const char* label, std::function<Deck(Deck, std::size_t)> change,
                            std::function<std::optional<Uuid>(const Deck&, std::size_t)> show = {}) {
        auto index = static_cast<std::size_t>(state_->current());
        if (index >= deck().slides.size()) return;
        std::optional<Uuid> shown;
        Deck changed = change(deck(), index);
        if (show) shown = show(changed, index);
        editor_->edit(label, [&](Deck) { return changed; }, {}, shown);
    };
    add("duplicate-slide", [onCurrent] {
        onCurrent(_("Duplicate Slide"),
                  [](Deck deck, std::size_t i) { return edits::duplicateSlide(std::move(deck), i); },
                  [](const Deck& deck, std::size_t i) { return std::optional(deck.slides[i + 1].id); });
    });
    add("move-slide-up", [onCurrent] {
        onCurrent(_("Move Slide"), [](Deck deck, std::size_t i) {
            return i == 0 ? deck : edits::moveSlide(std::move(deck), i, i - 1);
        });
    });
    add("move-slide-down", [onCurrent] {
        onCurrent(_("Move Slide"),
                  [](Deck deck, std::size_t i) { return edits::moveSlide(std::move(deck), i, i + 1); });
    });
    add("toggle-skip", [onCurrent] {
        onCurrent(_("Skip in Presentation"), [](Deck deck, std::size_t i) {
            Uuid id = deck.slides[i].id;
            return edits::toggleSkip(std::move(deck), id);
        });
    });
    add("remove-section", [onCurrent] {
        onCurrent(_("Remove Section"), [](Deck deck, std::size_t i) {
            Uuid id = deck.slides[i].id;
            return edits::removeSection(std::move(deck), id);
        });
    });
    // The keyboard's way to make a section: the slide joins the one above
    // it, or the two open a new section, as a drop on that row does.
    add("group-with-previous", [onCurrent] {
        onCurrent(_("Group Slides"), [](Deck deck, std::size_t i) {
            if (i == 0) return deck;
            Uuid slide = deck.slides[i].id, above = deck.slides[i - 1].id;
            return edits::groupSlides(std::move(deck), slide, above);
        });
    });
    add("remove-from-section", [onCurrent] {
        onCurrent(_("Remove from Section"), [](Deck deck, std::size_t i) {
            Uuid id = deck.slides[i].id;
            return edits::removeFromSection(std::move(deck), id);
        });
    });
    addWithText("set-layout", [this](const std::string& name) {
        auto layout = enumFromName<SlideLayout>(name);
        auto id = editor_->currentSlideId();
        if (!layout || !id) return;
        editor_->edit(_("Change Layout"), [&](Deck deck) { return edits::setLayout(std::move(deck), *id, *layout); });
    });
    add("rename-slide", [this] {
        if (auto id = editor_->currentSlideId()) {
            if (!sidebarVisible_) activate_action("win.toggle-sidebar");
            navigator_->startRenaming(*id);
        }
    });
    add("delete-slide", [this] {
        if (editor_->currentSlide()) state_->setPendingSlideDeletion(true);
    });
}

void DeckWindow::updateActions() {
    CommandFacts facts;
    const Slide* slide = editor_->currentSlide();
    facts.hasLivePage = slide && slide->layout == SlideLayout::web && state_->liveWebViews()->lookup(slide->id);
    facts.typing = typing_;
    for (const auto& [name, enabled] : enabledCommands(*document_, *state_, facts)) {
        if (auto found = actions_.find(name); found != actions_.end()) found->second->set_enabled(enabled);
    }
    auto setToggle = [this](const char* name, bool on) { actions_[name]->set_state(Glib::Variant<bool>::create(on)); };
    setToggle("overview", state_->overview());
    setToggle("toggle-notes", !state_->notesHidden());
    setToggle("black-out", stage_->keys().cover() == StageCover::black);
    setToggle("white-out", stage_->keys().cover() == StageCover::white);
    setToggle("toggle-presenter-display", state_->presenterPanelVisible());
    setToggle("toggle-editor", state_->editorOpen());
    setToggle("toggle-sidebar", sidebarVisible_);
}

void DeckWindow::refreshUndoLabels() {
    // "Undo Move Slide": the menu says what it takes back.
    // The labels are translated where each edit names itself.
    const bool canUndo = document_->canUndo(), canRedo = document_->canRedo();
    const std::string undoLabel = document_->undoLabel(), redoLabel = document_->redoLabel();
    editMenu_->remove_all();
    editMenu_->append(canUndo ? formatText(_("Undo %s"), undoLabel.c_str()) : _("Undo"), "win.undo");
    editMenu_->append(canRedo ? formatText(_("Redo %s"), redoLabel.c_str()) : _("Redo"), "win.redo");
    undoButton_->set_tooltip_text(canUndo ? formatText(_("Undo %s (Ctrl+Z)"), undoLabel.c_str()) : _("Undo (Ctrl+Z)"));
    redoButton_->set_tooltip_text(canRedo ? formatText(_("Redo %s (Ctrl+Shift+Z)"), redoLabel.c_str())
                                          : _("Redo (Ctrl+Shift+Z)"));
}

GtkWidget* DeckWindow::buildHeaderBar() {
    GtkWidget* header = adw_header_bar_new();
    auto packStart = [header](Gtk::Widget& widget) { adw_header_bar_pack_start(ADW_HEADER_BAR(header), widget.gobj()); };
    auto packEnd = [header](Gtk::Widget& widget) { adw_header_bar_pack_end(ADW_HEADER_BAR(header), widget.gobj()); };

    title_ = GObjectRef<AdwWindowTitle>::take(ADW_WINDOW_TITLE(adw_window_title_new(windowTitle().c_str(), "")));
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), GTK_WIDGET(title_.get()));

    // Start: the sidebar, undo and redo, whole slides back and forth, and
    // where we are.
    sidebarToggle_ = Gtk::make_managed<Gtk::ToggleButton>();
    sidebarToggle_->set_icon_name("sidebar-show-symbolic");
    sidebarToggle_->set_action_name("win.toggle-sidebar");
    packStart(*sidebarToggle_);
    undoButton_ = iconButton("edit-undo-symbolic", _("Undo"), _("Undo (Ctrl+Z)"), "win.undo");
    redoButton_ = iconButton("edit-redo-symbolic", _("Redo"), _("Redo (Ctrl+Shift+Z)"), "win.redo");
    auto* history = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    history->add_css_class("linked");
    history->append(*undoButton_);
    history->append(*redoButton_);
    packStart(*history);
    auto* navigation = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    navigation->add_css_class("linked");
    navigation->append(*iconButton("go-previous-symbolic", _("Previous Slide"), _("Previous Slide (Ctrl+Left)"),
                                   "win.previous-slide"));
    navigation->append(
        *iconButton("go-next-symbolic", _("Next Slide"), _("Next Slide (Ctrl+Right)"), "win.next-slide"));
    packStart(*navigation);
    counter_ = Gtk::make_managed<Gtk::Label>();
    counter_->add_css_class("numeric");
    counter_->add_css_class("slide-counter");
    packStart(*counter_);

    // End, from the right: the primary menu, Present, then the views.
    auto menu = Gio::Menu::create();
    auto fileSection = Gio::Menu::create();
    for (const auto& command : fileCommands()) fileSection->append(command.title, command.action);
    menu->append_section(fileSection);
    editMenu_ = Gio::Menu::create();
    menu->append_section(editMenu_);
    auto slideMenu = Gio::Menu::create();
    for (const auto& command : slideCommands()) slideMenu->append(command.title, command.action);
    auto presentationMenu = Gio::Menu::create();
    // "Present On" follows "Present", which it is the choice of.
    for (const auto& command : presentationCommands()) {
        presentationMenu->append(command.title, command.action);
        if (command.action == "win.present") presentationMenu->append_submenu(_("Present On"), presentOnMenu_);
    }
    auto menusSection = Gio::Menu::create();
    menusSection->append_submenu(_("Slide"), slideMenu);
    menusSection->append_submenu(_("Presentation"), presentationMenu);
    menu->append_section(menusSection);
    auto appSection = Gio::Menu::create();
    appSection->append(_("Preferences"), "app.preferences");
    appSection->append(_("Keyboard Shortcuts"), "win.show-help-overlay");
    appSection->append(_("Check for Updates…"), "app.check-for-updates");
    appSection->append(_("About Lectern"), "app.about");
    menu->append_section(appSection);
    auto* menuButton = Gtk::make_managed<Gtk::MenuButton>();
    menuButton->set_icon_name("open-menu-symbolic");
    menuButton->set_menu_model(menu);
    menuButton->set_primary(true);
    menuButton->set_tooltip_text(_("Main Menu"));
    setAccessibleLabel(*menuButton, _("Main Menu"));
    packEnd(*menuButton);

    auto* present = Gtk::make_managed<Gtk::Button>();
    GtkWidget* presentContent = adw_button_content_new();
    adw_button_content_set_icon_name(ADW_BUTTON_CONTENT(presentContent), "media-playback-start-symbolic");
    adw_button_content_set_label(ADW_BUTTON_CONTENT(presentContent), _("Present"));
    gtk_button_set_child(present->gobj(), presentContent);
    present->set_action_name("win.present");
    present->set_tooltip_text(_("Present (Ctrl+Shift+P)"));
    present->add_css_class("suggested-action");
    packEnd(*present);

    auto toggle = [&](const char* icon, const char* name, const char* tooltip, const char* action) {
        auto* button = Gtk::make_managed<Gtk::ToggleButton>();
        button->set_icon_name(icon);
        button->set_tooltip_text(tooltip);
        button->set_action_name(action);
        setAccessibleLabel(*button, name);
        packEnd(*button);
        return button;
    };
    toggle("video-display-symbolic", _("Presenter Display"), _("Toggle Presenter Display (Alt+Ctrl+P)"),
           "win.toggle-presenter-display");
    notesToggle_ = toggle("format-justify-left-symbolic", _("Presenter Notes"), _("Show Presenter Notes (Alt+Ctrl+I)"),
                          "win.toggle-notes");
    toggle("view-grid-symbolic", _("Overview"), _("Overview (Escape)"), "win.overview");
    return header;
}

}  // namespace lectern
