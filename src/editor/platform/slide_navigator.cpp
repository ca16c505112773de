#include "editor/platform/slide_navigator.h"

#include <glib/gi18n.h>
#include "base/platform/accessible.h"
#include "base/platform/style.h"

#include "editor/deck_edits.h"
#include "editor/navigator_rows.h"
#include "editor/platform/navigator_row.h"
#include "editor/platform/new_slide_picker.h"
#include "model/enum_names.h"

namespace lectern {

namespace {

const char* const style = R"css(
.slide-navigator .navigator-header { padding: 8px 6px 4px 14px; min-height: 34px; }
.slide-navigator .navigator-header .navigator-deck-title { font-weight: bold; }
.slide-navigator listview.navigation-sidebar { padding-top: 2px; }
.slide-navigator listview.navigation-sidebar > row { padding: 6px 6px 6px 4px; }
.navigator-row .slide-thumbnail { box-shadow: 0 0 0 1px alpha(currentColor, 0.12); border-radius: 6px; }
.navigator-row.skipped .slide-thumbnail { opacity: 0.45; }
.navigator-row .navigator-number { font-size: 0.85em; margin-top: 2px; }
.navigator-row .navigator-section-title { margin: 2px 0 6px 2px; opacity: 0.75; }
.navigator-row .navigator-section-end { margin: 8px 0 0 0; }
.navigator-row .navigator-skipped { opacity: 0.6; }
.navigator-group-target { box-shadow: inset 0 0 0 2px @accent_bg_color; }
.slide-navigator listview:drop(active) { box-shadow: none; }
.navigator-drop-line { background-color: @accent_bg_color; min-height: 2px; border-radius: 1px; }
)css";

// The navigator's look, once per display.
void installStyle() { installStyleOnce(style); }

double monotonicSeconds() { return static_cast<double>(g_get_monotonic_time()) / 1e6; }

}  // namespace

SlideNavigator::SlideNavigator(DeckEditor& editor, std::function<SlidePaintOptions()> paintOptions)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 0), editor_(editor), paintOptions_(std::move(paintOptions)) {
    installStyle();
    add_css_class("slide-navigator");

    // The deck's title and the "New slide" button.
    auto* header = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    header->add_css_class("navigator-header");
    title_.add_css_class("navigator-deck-title");
    title_.set_xalign(0);
    title_.set_hexpand(true);
    title_.set_ellipsize(Pango::EllipsizeMode::END);
    header->append(title_);
    // A click on the deck's title opens the deck's inspector.
    auto headerClick = Gtk::GestureClick::create();
    headerClick->signal_released().connect([this](int, double, double) { deckHeaderClicked_.emit(); });
    title_.add_controller(headerClick);
    title_.set_tooltip_text(_("Deck settings"));
    addButton_.set_icon_name("list-add-symbolic");
    addButton_.set_tooltip_text(_("New slide"));
    addButton_.set_has_frame(false);
    addButton_.set_valign(Gtk::Align::CENTER);
    setAccessibleLabel(addButton_, _("New slide"));
    picker_ = Gtk::make_managed<NewSlidePicker>([this](SlideLayout layout) { addSlide(layout); });
    picker_->signal_show().connect([this] { picker_->setLook(options_); });
    addButton_.set_popover(*picker_);
    header->append(addButton_);
    append(*header);

    // The slides: one string per row, the slide's id; the rows' widgets are
    // made for the rows on screen and recycled as the list scrolls.
    rows_ = Gtk::StringList::create({});
    selection_ = Gtk::SingleSelection::create(rows_);
    selection_->set_autoselect(false);
    selection_->set_can_unselect(false);
    selection_->property_selected().signal_changed().connect([this] { selectionChanged(); });
    auto factory = Gtk::SignalListItemFactory::create();
    factory->signal_setup().connect([this](const Glib::RefPtr<Gtk::ListItem>& item) { setupRow(item); });
    factory->signal_bind().connect([this](const Glib::RefPtr<Gtk::ListItem>& item) { bindRow(item); });
    factory->signal_unbind().connect([this](const Glib::RefPtr<Gtk::ListItem>& item) { unbindRow(item); });
    list_.set_model(selection_);
    list_.set_factory(factory);
    list_.add_css_class("navigation-sidebar");
    setAccessibleLabel(list_, _("Slides"));
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType modifiers) { return keyPressed(keyval, modifiers); }, false);
    list_.add_controller(keys);

    scroller_.set_child(list_);
    scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller_.set_vexpand(true);
    overlay_.set_child(scroller_);
    dropLine_.add_css_class("navigator-drop-line");
    dropLine_.set_can_target(false);
    dropLine_.set_visible(false);
    overlay_.add_overlay(dropLine_);
    overlay_.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& frame) {
            if (child != &dropLine_) return false;
            frame = dropLineFrame_;
            return true;
        },
        false);
    append(overlay_);
    setupDrop();

    contextMenu_.set_parent(*this);
    contextMenu_.set_has_arrow(false);
    contextMenu_.set_position(Gtk::PositionType::BOTTOM);
    contextMenu_.set_halign(Gtk::Align::START);

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange& change) { deckChanged(change); });
    stateConnection_ = editor_.state().changed().connect([this](PresentationField field) { stateChanged(field); });
    deckChanged(DeckChange{});
}

SlideNavigator::~SlideNavigator() {
    alive_ = false;
    scrollTimer_.disconnect();
    revealIdle_.disconnect();
    renameIdle_.disconnect();
    contextMenu_.unparent();
}

// The deck and the current slide ----------------------------------------

void SlideNavigator::deckChanged(const DeckChange& change) {
    if (change.kind == DeckChange::Kind::saved) return;  // the deck is as it was
    const Deck& deck = editor_.deck();
    std::vector<Uuid> ids;
    ids.reserve(deck.slides.size());
    index_.clear();
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        ids.push_back(deck.slides[i].id);
        index_.emplace(deck.slides[i].id, i);
    }
    options_ = paintOptions_ ? paintOptions_() : SlidePaintOptions{};

    // The list changes only where the deck did. Rows bound while it changes
    // already find their slides where they now are.
    auto splices = rowSplices(ids_, ids);
    ids_ = std::move(ids);
    syncing_ = true;
    for (const auto& splice : splices) {
        std::vector<Glib::ustring> added;
        added.reserve(splice.added);
        for (std::size_t i = splice.position; i < splice.position + splice.added; ++i) {
            added.emplace_back(ids_[i].string());
        }
        rows_->splice(static_cast<guint>(splice.position), static_cast<guint>(splice.removed), added);
    }
    syncing_ = false;

    if (renaming_ && !index_.count(*renaming_)) endRenaming();
    refreshHeader();
    refreshRows();
    syncSelection();
    if (!splices.empty() || editor_.state().current() != shownCurrent_) revealCurrent();
}

void SlideNavigator::stateChanged(PresentationField field) {
    if (field != PresentationField::current) return;
    // Within an edit the state moves before the deck's change arrives; the
    // list follows then, with its rows in place.
    if (!rowsMatchDeck()) return;
    syncSelection();
    if (editor_.state().current() != shownCurrent_) revealCurrent();
}

bool SlideNavigator::rowsMatchDeck() const {
    const auto& slides = editor_.deck().slides;
    if (slides.size() != ids_.size()) return false;
    for (std::size_t i = 0; i < slides.size(); ++i) {
        if (slides[i].id != ids_[i]) return false;
    }
    return true;
}

void SlideNavigator::refreshHeader() {
    const auto& title = editor_.deck().title;
    title_.set_text(title && !title->empty() ? *title : _("Untitled Deck"));
}

void SlideNavigator::refreshRows() {
    for (auto* row : bound_) {
        auto found = row->slideId() ? index_.find(*row->slideId()) : index_.end();
        if (found == index_.end()) {
            row->clear();
            continue;
        }
        row->show(editor_.deck(), found->second, options_);
        row->setGroupTarget(groupTarget_ == row->slideId());
    }
}

void SlideNavigator::syncSelection() {
    std::int64_t current = editor_.state().current();
    guint wanted = current >= 0 && current < static_cast<std::int64_t>(ids_.size()) ? static_cast<guint>(current)
                                                                                      : GTK_INVALID_LIST_POSITION;
    if (selection_->get_selected() == wanted) return;
    syncing_ = true;
    selection_->set_selected(wanted);
    syncing_ = false;
}

void SlideNavigator::selectionChanged() {
    if (syncing_) return;
    guint selected = selection_->get_selected();
    if (selected == GTK_INVALID_LIST_POSITION || selected >= ids_.size()) {
        syncSelection();  // a current slide stays selected
        return;
    }
    if (static_cast<std::int64_t>(selected) != editor_.state().current()) {
        editor_.state().goTo(static_cast<std::int64_t>(selected), false);
    }
}

void SlideNavigator::revealCurrent() {
    shownCurrent_ = editor_.state().current();
    revealIdle_.disconnect();
    // After the list has taken in its new rows: scrolling measures them.
    revealIdle_ = Glib::signal_idle().connect([this] {
        std::int64_t current = editor_.state().current();
        if (current < 0 || current >= static_cast<std::int64_t>(ids_.size())) return false;
        list_.activate_action("list.scroll-to-item", Glib::Variant<guint32>::create(static_cast<guint32>(current)));
        // The keyboard follows the current row when it was in the list.
        auto* root = list_.get_root();
        auto* focus = root ? root->get_focus() : nullptr;
        bool inList = focus && (focus == &list_ || focus->is_ancestor(list_));
        if (inList && !renaming_) {
            if (auto* row = boundRow(ids_[static_cast<std::size_t>(current)])) row->cell().grab_focus();
        }
        return false;
    });
}

NavigatorRow* SlideNavigator::boundRow(const Uuid& slide) const {
    for (auto* row : bound_) {
        if (row->slideId() == slide) return row;
    }
    return nullptr;
}

// Rows ---------------------------------------------------------------------

void SlideNavigator::setupRow(const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* row = Gtk::make_managed<NavigatorRow>(
        [this](const Uuid& slide, const std::string& title) { commitRename(slide, title); },
        [this] { cancelRename(); });
    item->set_child(*row);

    auto taps = Gtk::GestureClick::create();
    taps->set_button(GDK_BUTTON_PRIMARY);
    taps->signal_pressed().connect([this, row](int, double, double) { rowTapped(*row); });
    row->add_controller(taps);

    auto menu = Gtk::GestureClick::create();
    menu->set_button(GDK_BUTTON_SECONDARY);
    menu->signal_pressed().connect([this, row, menu](int, double x, double y) {
        menu->set_state(Gtk::EventSequenceState::CLAIMED);
        showContextMenu(*row, x, y);
    });
    row->add_controller(menu);

    setupDrag(*row);
}

void SlideNavigator::bindRow(const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* row = dynamic_cast<NavigatorRow*>(item->get_child());
    if (!row) return;
    bound_.insert(row);
    auto object = std::dynamic_pointer_cast<Gtk::StringObject>(item->get_item());
    auto id = object ? Uuid::parse(object->get_string().raw()) : std::nullopt;
    auto found = id ? index_.find(*id) : index_.end();
    if (found == index_.end()) {
        row->clear();
        return;
    }
    row->show(editor_.deck(), found->second, options_);
    row->setGroupTarget(groupTarget_ == id);
    if (renaming_ == id) beginRenameSoon();
}

void SlideNavigator::unbindRow(const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* row = dynamic_cast<NavigatorRow*>(item->get_child());
    if (!row) return;
    bound_.erase(row);
    row->setGroupTarget(false);
    // A row scrolled away while renaming takes the field up again when it
    // comes back.
    if (row->renaming()) row->endRename();
}

void SlideNavigator::rowTapped(NavigatorRow& row) {
    if (!row.slideId() || row.renaming()) return;
    if (taps_.tap(*row.slideId(), monotonicSeconds())) startRenaming(*row.slideId());
}

// Renaming ------------------------------------------------------------------

void SlideNavigator::startRenaming(const Uuid& slide) {
    auto found = index_.find(slide);
    if (found == index_.end()) return;
    if (editor_.state().current() != static_cast<std::int64_t>(found->second)) {
        editor_.state().goTo(static_cast<std::int64_t>(found->second), false);
    }
    renaming_ = slide;
    revealCurrent();
    beginRenameSoon();
}

void SlideNavigator::beginRenameSoon() {
    // Soon, not now: a menu that asked for it gives the focus back as it
    // closes, and a row being bound is in the middle of the list's layout.
    renameIdle_.disconnect();
    renameIdle_ = Glib::signal_idle().connect([this] {
        if (!renaming_) return false;
        auto found = index_.find(*renaming_);
        auto* row = boundRow(*renaming_);
        if (found == index_.end() || !row || row->renaming()) return false;
        row->beginRename(editor_.deck().slides[found->second].title);
        return false;
    });
}

void SlideNavigator::commitRename(const Uuid& slide, const std::string& title) {
    if (!alive_) return;
    if (renaming_ == slide) renaming_.reset();
    auto found = index_.find(slide);
    if (found != index_.end() && editor_.deck().slides[found->second].title != title) {
        editor_.edit(
            _("Rename Slide"), [&](Deck deck) { return edits::renameSlide(std::move(deck), slide, title); }, {}, slide);
    }
    focusRowIfUnfocused(slide);
}

void SlideNavigator::cancelRename() {
    if (!alive_ || !renaming_) return;
    Uuid slide = *renaming_;
    renaming_.reset();
    focusRowIfUnfocused(slide);
}

void SlideNavigator::endRenaming() {
    if (!renaming_) return;
    if (auto* row = boundRow(*renaming_)) row->endRename();
    renaming_.reset();
}

void SlideNavigator::focusCurrentRow() {
    if (auto current = editor_.currentSlideId()) {
        if (auto* row = boundRow(*current)) row->cell().grab_focus();
    }
}

void SlideNavigator::focusRowIfUnfocused(const Uuid& slide) {
    // Enter and Escape hide the focused field: the keyboard goes back to the
    // row. A field left by a click elsewhere leaves the focus where it went.
    auto* root = list_.get_root();
    if (!root || root->get_focus()) return;
    if (auto* row = boundRow(slide)) row->cell().grab_focus();
}

// Keys and commands ---------------------------------------------------------

bool SlideNavigator::keyPressed(guint keyval, Gdk::ModifierType modifiers) {
    if (renaming_) return false;  // the title field's keys
    const auto relevant = Gdk::ModifierType::SHIFT_MASK | Gdk::ModifierType::CONTROL_MASK |
                          Gdk::ModifierType::ALT_MASK | Gdk::ModifierType::SUPER_MASK;
    const auto held = modifiers & relevant;
    const bool plain = held == Gdk::ModifierType(0);
    const bool alt = held == Gdk::ModifierType::ALT_MASK;
    const std::int64_t count = static_cast<std::int64_t>(ids_.size());
    const std::int64_t current = editor_.state().current();
    // Undo and redo reach the window from the list too: a focused list row
    // keeps Ctrl+Z from the application's shortcuts otherwise.
    if (held == Gdk::ModifierType::CONTROL_MASK && (keyval == GDK_KEY_z || keyval == GDK_KEY_y)) {
        return activate_action(keyval == GDK_KEY_z ? "win.undo" : "win.redo");
    }
    if (held == (Gdk::ModifierType::CONTROL_MASK | Gdk::ModifierType::SHIFT_MASK) &&
        (keyval == GDK_KEY_z || keyval == GDK_KEY_Z)) {
        return activate_action("win.redo");
    }
    switch (keyval) {
    case GDK_KEY_Up:
    case GDK_KEY_KP_Up:
    case GDK_KEY_Down:
    case GDK_KEY_KP_Down: {
        bool up = keyval == GDK_KEY_Up || keyval == GDK_KEY_KP_Up;
        if (alt) return activate_action(up ? "win.move-slide-up" : "win.move-slide-down");
        if (!plain || count == 0) return false;
        std::int64_t target = current < 0 || current >= count ? 0 : current + (up ? -1 : 1);
        target = std::clamp<std::int64_t>(target, 0, count - 1);
        if (target != current) editor_.state().goTo(target, false);
        return true;
    }
    // Home and End: the first and the last slide, as they are in a talk
    // (in the editor, skipped slides count).
    case GDK_KEY_Home:
    case GDK_KEY_KP_Home:
    case GDK_KEY_End:
    case GDK_KEY_KP_End: {
        if (!plain || count == 0) return false;
        bool home = keyval == GDK_KEY_Home || keyval == GDK_KEY_KP_Home;
        std::int64_t target = home ? 0 : count - 1;
        if (target != current) editor_.state().goTo(target, false);
        return true;
    }
    case GDK_KEY_Delete:
    case GDK_KEY_KP_Delete:
        return plain && activate_action("win.delete-slide");
    case GDK_KEY_F2:
        if (!plain) return false;
        if (auto id = editor_.currentSlideId()) startRenaming(*id);
        return true;
    case GDK_KEY_Menu:
    case GDK_KEY_F10:
        if (keyval == GDK_KEY_F10 && held != Gdk::ModifierType::SHIFT_MASK) return false;
        if (auto id = editor_.currentSlideId()) {
            if (auto* row = boundRow(*id)) {
                showContextMenu(*row, row->get_width() / 2.0, row->get_height() / 2.0);
                return true;
            }
        }
        return false;
    default:
        return false;
    }
}

void SlideNavigator::showContextMenu(NavigatorRow& row, double x, double y) {
    if (!row.slideId()) return;
    auto found = index_.find(*row.slideId());
    if (found == index_.end()) return;
    // The commands act on the current slide: the row becomes it first.
    if (editor_.state().current() != static_cast<std::int64_t>(found->second)) {
        editor_.state().goTo(static_cast<std::int64_t>(found->second), false);
    }
    const Slide& slide = editor_.deck().slides[found->second];

    auto commands = Gio::Menu::create();
    commands->append(_("Rename"), "win.rename-slide");
    if (slide.isSection) commands->append(_("Remove section"), "win.remove-section");
    auto layouts = Gio::Menu::create();
    for (const auto& choice : layoutChoices()) {
        layouts->append(choice.name, "win.set-layout::" + std::string(enumName(choice.layout)));
    }
    commands->append_submenu(_("Layout"), layouts);
    commands->append(_("Duplicate"), "win.duplicate-slide");
    commands->append(_("Move Up"), "win.move-slide-up");
    commands->append(_("Move Down"), "win.move-slide-down");
    commands->append(_("Delete"), "win.delete-slide");
    auto presentation = Gio::Menu::create();
    presentation->append(_("Skip in Presentation"), "win.toggle-skip");
    presentation->append(_("Group with Slide Above"), "win.group-with-previous");
    if (!slide.isSection && slide.sectionId) presentation->append(_("Remove from section"), "win.remove-from-section");
    auto menu = Gio::Menu::create();
    menu->append_section(commands);
    menu->append_section(presentation);

    double px = x, py = y;
    row.translate_coordinates(*this, x, y, px, py);
    contextMenu_.set_menu_model(menu);
    contextMenu_.set_pointing_to(Gdk::Rectangle(static_cast<int>(px), static_cast<int>(py), 1, 1));
    contextMenu_.popup();
}

void SlideNavigator::showNewSlidePicker() { addButton_.popup(); }

void SlideNavigator::addSlide(SlideLayout layout) {
    activate_action("win.add-slide", Glib::Variant<Glib::ustring>::create(std::string(enumName(layout))));
}

}  // namespace lectern
