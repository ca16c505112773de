#pragma once

#include <gtkmm.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "editor/navigator_rules.h"
#include "slides/slide_painter.h"

namespace lectern {

class NavigatorRow;
class NewSlidePicker;

// The editor's left column: the deck's title with the "New slide" button,
// and the list of slides. The list's selection is the window's current
// slide, both ways. Rows are dragged to reorder or group slides, renamed in
// place (double click, F2, "Rename"), and carry a context menu of the
// window's slide commands (`win.*` actions). Every change goes through the
// DeckEditor; the list follows the deck row by row, so a large deck stays
// smooth.
class SlideNavigator : public Gtk::Box {
public:
    SlideNavigator(DeckEditor& editor, std::function<SlidePaintOptions()> paintOptions);
    ~SlideNavigator() override;
    SlideNavigator(const SlideNavigator&) = delete;
    SlideNavigator& operator=(const SlideNavigator&) = delete;

    // Makes the slide current and puts a field for its title in its row.
    void startRenaming(const Uuid& slide);
    // Opens the layout picker of the "New slide" button.
    void showNewSlidePicker();
    Gtk::ListView& list() { return list_; }

    // The keyboard to the current slide's row.
    void focusCurrentRow();
    // The deck's title at the top was clicked.
    Signal<>& deckHeaderClicked() { return deckHeaderClicked_; }

private:
    // The deck and the current slide.
    void deckChanged(const DeckChange& change);
    void stateChanged(PresentationField field);
    bool rowsMatchDeck() const;
    void refreshHeader();
    void refreshRows();
    void syncSelection();
    void selectionChanged();
    void revealCurrent();
    NavigatorRow* boundRow(const Uuid& slide) const;

    // Rows, recycled by the list.
    void setupRow(const Glib::RefPtr<Gtk::ListItem>& item);
    void bindRow(const Glib::RefPtr<Gtk::ListItem>& item);
    void unbindRow(const Glib::RefPtr<Gtk::ListItem>& item);
    void rowTapped(NavigatorRow& row);

    // Renaming, keys, the context menu.
    void beginRenameSoon();
    void commitRename(const Uuid& slide, const std::string& title);
    void cancelRename();
    void endRenaming();
    void focusRowIfUnfocused(const Uuid& slide);
    bool keyPressed(guint keyval, Gdk::ModifierType modifiers);
    void showContextMenu(NavigatorRow& row, double x, double y);
    void addSlide(SlideLayout layout);

    // Dragging rows (slide_navigator_drag.cpp).
    void setupDrag(NavigatorRow& row);
    void setupDrop();
    Gdk::DragAction dragMoved(double x, double y);
    bool dropped(const Glib::ValueBase& value, double x, double y);
    void refreshFrames();
    void showDropTarget(const NavigatorDropTarget& target);
    void clearDropTarget();
    bool autoscroll();

    DeckEditor& editor_;
    std::function<SlidePaintOptions()> paintOptions_;
    SlidePaintOptions options_;
    std::vector<Uuid> ids_;                        // the list's rows, as slide ids
    std::unordered_map<Uuid, std::size_t> index_;  // slide id -> index in the deck
    std::set<NavigatorRow*> bound_;
    std::int64_t shownCurrent_ = -1;
    bool syncing_ = false;  // the list's selection is being set to the state's
    bool alive_ = true;     // false while the widgets go: their last signals are ignored
    sigc::connection revealIdle_;
    sigc::connection renameIdle_;

    RenameTaps taps_;
    std::optional<Uuid> renaming_;

    std::optional<Uuid> dragging_;
    std::vector<NavigatorRowFrame> frames_;
    std::optional<Uuid> groupTarget_;
    std::pair<double, double> dropPoint_;  // the pointer during a drag, in the list's coordinates
    double scrollSpeed_ = 0;
    sigc::connection scrollTimer_;

    Gtk::Label title_;
    Gtk::MenuButton addButton_;
    NewSlidePicker* picker_ = nullptr;
    Glib::RefPtr<Gtk::StringList> rows_;
    Glib::RefPtr<Gtk::SingleSelection> selection_;
    Gtk::ListView list_;
    Gtk::ScrolledWindow scroller_;
    Gtk::Overlay overlay_;
    Gtk::Box dropLine_;
    Gdk::Rectangle dropLineFrame_;
    Gtk::PopoverMenu contextMenu_;

    Signal<> deckHeaderClicked_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
