#include "editor/platform/editor_layout.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "base/platform/accessible.h"
#include "editor/platform/action_list.h"
#include "editor/platform/build_order_editor.h"
#include "editor/platform/card_order_editor.h"
#include "editor/platform/deck_inspector.h"
#include "editor/platform/inspector_column.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/slide_inspector.h"
#include "editor/platform/slide_navigator.h"

namespace lectern {

namespace {

// The side columns: at least 260 and at most 340 points; the navigator
// starts at 280, the inspector at 300.
constexpr int navigatorWidth = 280;
constexpr int inspectorWidth = 300;

Gtk::Revealer* sideColumn(Gtk::Widget& child, int width, Gtk::RevealerTransitionType transition) {
    child.set_size_request(width, -1);
    auto* revealer = Gtk::make_managed<Gtk::Revealer>();
    revealer->set_transition_type(transition);
    revealer->set_transition_duration(EditorLayout::transitionMilliseconds);
    revealer->set_child(child);
    revealer->set_hexpand(false);
    return revealer;
}

}  // namespace

EditorLayout::EditorLayout(DeckEditor& editor, PresentingStage& stage, SlideNavigator& navigator)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL), editor_(editor), state_(editor.state()) {
    add_css_class("editor-layout");
    navigator.add_css_class("navigator-column");
    navigatorColumn_ = sideColumn(navigator, navigatorWidth, Gtk::RevealerTransitionType::SLIDE_RIGHT);
    append(*navigatorColumn_);

    // The notes pane: its top edge is a handle that resizes it.
    auto* handle = Gtk::make_managed<Gtk::Box>();
    handle->add_css_class("notes-handle");
    handle->set_size_request(-1, 8);
    handle->set_cursor(Gdk::Cursor::create("row-resize"));
    auto drag = Gtk::GestureDrag::create();
    drag->signal_drag_begin().connect([this](double, double) { dragStartHeight_ = notesHeight_; });
    drag->signal_drag_update().connect([this](double, double dy) {
        setNotesHeight(dragStartHeight_ - static_cast<int>(dy));
    });
    handle->add_controller(drag);

    auto* notesTitle = Gtk::make_managed<Gtk::Label>(_("Presenter Notes"));
    notesTitle->add_css_class("heading");
    notesTitle->set_xalign(0);
    notes_ = Gtk::make_managed<Gtk::TextView>();
    notes_->set_wrap_mode(Gtk::WrapMode::WORD_CHAR);
    notes_->add_css_class("notes-text");
    notes_->get_buffer()->set_enable_undo(false);  // undone through the document
    setAccessibleLabel(*notes_, _("Presenter Notes"));
    notes_->get_buffer()->signal_changed().connect([this] { notesTyped(); });
    auto* notesScroller = Gtk::make_managed<Gtk::ScrolledWindow>();
    notesScroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    notesScroller->set_vexpand(true);
    notesScroller->set_child(*notes_);
    notesPane_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    notesPane_->add_css_class("notes-pane");
    notesPane_->append(*handle);
    notesPane_->append(*notesTitle);
    notesPane_->append(*notesScroller);
    notesRevealer_ = Gtk::make_managed<Gtk::Revealer>();
    notesRevealer_->set_transition_type(Gtk::RevealerTransitionType::SLIDE_UP);
    notesRevealer_->set_transition_duration(transitionMilliseconds);
    notesRevealer_->set_child(*notesPane_);
    notesRevealer_->set_vexpand(false);  // the stage takes the height the notes leave
    setNotesHeight(initialNotesHeight);

    auto* middle = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    middle->set_hexpand(true);
    middle->append(stage);
    middle->append(*notesRevealer_);
    append(*middle);

    // The inspector of the slide (its settings, its build order, its demo
    // actions) and of the deck.
    inspector_ = Gtk::make_managed<InspectorColumn>();
    inspector_->add_css_class("inspector-column");
    inspector_->slidePage().append(*Gtk::make_managed<SlideInspector>(editor_));
    inspector_->slidePage().append(*Gtk::make_managed<BuildOrderEditor>(editor_));
    inspector_->slidePage().append(*Gtk::make_managed<CardOrderEditor>(editor_));
    inspector_->slidePage().append(*Gtk::make_managed<ActionList>(editor_));
    inspector_->deckPage().append(*Gtk::make_managed<DeckInspector>(editor_));
    inspectorColumn_ = sideColumn(*inspector_, inspectorWidth, Gtk::RevealerTransitionType::SLIDE_LEFT);
    append(*inspectorColumn_);
    deckHeaderConnection_ = navigator.deckHeaderClicked().connect(
        [this] { inspector_->setFocus(InspectorColumn::Focus::deck); });
    refreshNotes();
}

EditorLayout::~EditorLayout() = default;

void EditorLayout::setNotesHeight(int height) {
    notesHeight_ = std::clamp(height, minNotesHeight, maxNotesHeight);
    notesPane_->set_size_request(-1, notesHeight_);
}

void EditorLayout::refreshChrome(bool sidebarVisible) {
    bool editor = state_.editorOpen();
    navigatorColumn_->set_reveal_child(editor && sidebarVisible);
    inspectorColumn_->set_reveal_child(editor);
    notesRevealer_->set_reveal_child(editor && !state_.notesHidden());
}

void EditorLayout::refreshNotes() {
    const Slide* slide = editor_.currentSlide();
    notes_->set_sensitive(slide != nullptr);
    std::string text = slide ? slide->notes : std::string();
    if (std::string(notes_->get_buffer()->get_text()) == text) return;
    syncing_ = true;
    notes_->get_buffer()->set_text(text);
    syncing_ = false;
}

void EditorLayout::notesTyped() {
    if (syncing_) return;
    auto id = editor_.currentSlideId();
    if (!id) return;
    std::string text = notes_->get_buffer()->get_text();
    // A burst of typing in one slide's notes is one undo step.
    editor_.editCurrentSlide(_("Typing"), [text](Slide& slide) { slide.notes = text; }, "notes:" + id->string());
}

}  // namespace lectern
