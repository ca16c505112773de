#pragma once

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "slides/decision_cards.h"

namespace lectern {

// The reveal order of a decisions slide's cards, shown in the slide
// inspector while the slide reveals step by step: one row per card in the
// order of the slide's links, which is the order they appear in while
// presenting. A row dragged before or after another moves its card there,
// through editor.editCurrentSlide("Change Build Order", ...). Follows the
// current slide on idle, relabelling rows rather than building them again.
class CardOrderEditor : public Gtk::Box {
public:
    explicit CardOrderEditor(DeckEditor& editor);
    ~CardOrderEditor() override;
    CardOrderEditor(const CardOrderEditor&) = delete;
    CardOrderEditor& operator=(const CardOrderEditor&) = delete;

private:
    struct Row;

    void scheduleRefresh();
    void refresh();
    std::unique_ptr<Row> makeRow(std::size_t index);
    std::optional<LinkRevealDropTarget> targetAt(double x, double y);
    void showTarget(const std::optional<LinkRevealDropTarget>& target);
    Gdk::DragAction dragMoved(double x, double y);
    bool dropped(double x, double y);

    DeckEditor& editor_;
    Gtk::Expander expander_;
    Gtk::Label count_;
    Gtk::Label help_;
    Gtk::Label empty_;
    Gtk::Box rowsBox_{Gtk::Orientation::VERTICAL, 4};

    std::vector<std::unique_ptr<Row>> rows_;
    bool shownApplies_ = false;

    std::optional<Uuid> dragging_;
    std::optional<LinkRevealDropTarget> target_;

    sigc::connection refreshIdle_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
