#pragma once

#include <gtkmm.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "slides/slide_painter.h"

namespace lectern {

class StageView;

// The decision cards of the slide on the editor's stage, edited where they
// are drawn: a field over each card's label (and subtitle, when the slide
// shows them) that looks like the painted text while it has the focus and
// is invisible otherwise; the selected card's remove button and route menu;
// a mark on cards that lead nowhere; "Add option"; and dragging a card onto
// another to reorder them. Every change goes through the DeckEditor.
class CardEditors {
public:
    // Adds its widgets as overlay children of `overlay`, whose main child
    // is `stage`, and places them itself.
    CardEditors(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage,
                std::function<SlidePaintOptions()> paintOptions);
    ~CardEditors();
    CardEditors(const CardEditors&) = delete;
    CardEditors& operator=(const CardEditors&) = delete;

    // After every change of the slide, the deck, the stage's size or editing
    // on/off (false: everything of ours hidden).
    void update(bool editing);

    // The card whose texts a field is editing: the painter leaves them out.
    std::optional<Uuid> editingCard() const;
    // While a card is dragged: its id, how far it moved (design points), and
    // the card under the pointer (from the frames captured at the start).
    struct Drag {
        Uuid id;
        double dx = 0, dy = 0;
        std::optional<Uuid> target;
    };
    const std::optional<Drag>& drag() const { return drag_; }
    // The editing card or the drag changed: the stage draws again.
    Signal<>& looksChanged() { return looksChanged_; }

private:
    struct Field;
    struct Card;

    const Slide* decisionsSlide() const;
    Card& cardFor(const Uuid& id);
    std::unique_ptr<Field> makeField(const Uuid& id, bool subtitle);
    void syncField(Field& field, const std::string& text, const std::optional<TextBox>& box);
    void styleField(Field& field);
    void fieldFocused(Field& field, bool focused);
    void fieldChanged(Field& field);
    void updateControls();
    void buildRouteMenu();
    void route(const std::string& targetId);
    void addOption();
    void removeSelected();
    void select(const std::optional<Uuid>& id);
    void hideAll();

    bool place(Gtk::Widget* child, Gdk::Rectangle& allocation);
    Rect toView(const Rect& design) const;

    void dragBegin(double x, double y);
    void dragUpdate(double dx, double dy);
    void dragEnd();
    void setDrag(std::optional<Drag> drag);

    DeckEditor& editor_;
    Gtk::Overlay& overlay_;
    StageView& stage_;
    std::function<SlidePaintOptions()> paintOptions_;

    bool editing_ = false;
    bool closing_ = false;      // in the destructor: no more signals
    bool widgetsGone_ = false;  // the overlay was destroyed before us
    SlideGeometry geometry_;  // of the slide on the stage, in design points
    std::vector<std::unique_ptr<Card>> cards_;
    Field* focused_ = nullptr;

    Gtk::Button* addButton_ = nullptr;
    Gtk::Box* controls_ = nullptr;
    Gtk::MenuButton* routeButton_ = nullptr;
    Gtk::Button* removeButton_ = nullptr;
    Glib::RefPtr<Gio::Menu> routeMenu_;
    std::optional<Uuid> controlsCard_;  // the card the controls act on

    // The drag as pressed: the card, the point, the frames of all cards.
    struct Press {
        Uuid id;
        double x = 0, y = 0;
        std::vector<std::pair<Uuid, Rect>> frames;
    };
    std::optional<Press> press_;
    std::optional<Drag> drag_;
    Glib::RefPtr<Gtk::GestureDrag> dragGesture_;

    sigc::connection placeConnection_;
    Signal<std::size_t>::Connection chosenConnection_;
    Signal<> looksChanged_;
};

}  // namespace lectern
