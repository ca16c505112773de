#pragma once

#include <gtkmm.h>

#include <functional>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "slides/reveal_plan.h"

namespace lectern {

// Pieces both reveal-order lists of the slide inspector share.
namespace reveal_order {

// The section's look: steps, rows, gaps and their drop highlights.
void installStyle();
// Makes `row` draggable within its list: `started` when a drag begins (the
// row's picture follows the pointer), `ended` when it is over either way.
Glib::RefPtr<Gtk::DragSource> rowDragSource(Gtk::Widget& row, const char* content, std::function<void()> started,
                                            std::function<void()> ended);
// "1 step", "3 steps": `one` for a count of one, `many` otherwise.
std::string countText(std::size_t count, const std::string& one, const std::string& many);
// The bounds of `widget` in `parent`'s coordinates (empty when unmapped).
std::optional<graphene_rect_t> boundsIn(Gtk::Widget& widget, Gtk::Widget& parent);
// Fills a reveal-order section: the help and empty texts over `list`, in
// the expander, which goes into `section`.
void assemble(Gtk::Box& section, Gtk::Expander& expander, Gtk::Label& help, const char* helpText, Gtk::Label& empty,
              const char* emptyText, Gtk::Widget& list);
// One drop target for the whole list: where a row would land is worked out
// from the frames on screen as the pointer moves.
void acceptRows(Gtk::Widget& list, std::function<Gdk::DragAction(double, double)> moved, std::function<void()> left,
                std::function<bool(double, double)> dropped);

}  // namespace reveal_order

// The build order of the current slide, shown under the reveal mode rows of
// the slide inspector while the slide reveals step by step (not on decisions
// slides: their cards have CardOrderEditor). Each step lists its rows, the
// body's non-blank lines; "Merge with step above" and "Break into its own
// step" regroup them, and a row dragged onto a step joins it, dragged into a
// gap between steps becomes a step of its own. Every change goes through
// editor.editCurrentSlide("Change Build Order", ...).
//
// While the body is typed on the stage the list follows a moment later (on
// idle, once per burst of changes) and only where it differs: a changed line
// relabels its row, a new line adds one; nothing is built again.
class BuildOrderEditor : public Gtk::Box {
public:
    explicit BuildOrderEditor(DeckEditor& editor);
    ~BuildOrderEditor() override;
    BuildOrderEditor(const BuildOrderEditor&) = delete;
    BuildOrderEditor& operator=(const BuildOrderEditor&) = delete;

private:
    struct Row;
    struct Step;
    // Where a dragged row would land: on a step or in a gap.
    struct DropSpot {
        enum class Kind { step, gap };
        Kind kind = Kind::step;
        std::size_t index = 0;
        friend bool operator==(const DropSpot&, const DropSpot&) = default;
    };

    void scheduleRefresh();
    void refresh();
    void showSteps(const std::vector<std::vector<std::string>>& texts);
    std::unique_ptr<Step> makeStep(std::size_t index);
    std::unique_ptr<Row> makeRow(Step& step, std::size_t pos);
    Gtk::Box* makeGap();
    void setRowText(Row& row, const std::string& text);

    void change(const std::function<RevealSteps(const Slide&)>& plan);
    std::optional<DropSpot> spotAt(double x, double y);
    void showDropSpot(const std::optional<DropSpot>& spot);
    Gdk::DragAction dragMoved(double x, double y);
    bool dropped(double x, double y);

    DeckEditor& editor_;
    Gtk::Expander expander_;
    Gtk::Label count_;
    Gtk::Label help_;
    Gtk::Label empty_;
    Gtk::Box stepsBox_{Gtk::Orientation::VERTICAL, 0};

    std::vector<std::unique_ptr<Step>> steps_;
    std::vector<Gtk::Box*> gaps_;  // one more than steps_: before, between, after
    std::vector<std::vector<std::string>> shown_;  // the rows' texts, by step
    bool shownApplies_ = false;

    std::optional<BuildRowKey> dragging_;
    std::optional<DropSpot> dropSpot_;

    sigc::connection refreshIdle_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
