#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "model/deck.h"
#include "base/signal.h"
#include "slides/slide_painter.h"

namespace lectern {

// The overview: one tile per slide, numbered "01", "02", ..., with a "LIVE"
// badge on web slides and a mark on slides skipped in presentation. A single
// click on a tile chooses it.
class OverviewGrid : public Gtk::ScrolledWindow {
public:
    OverviewGrid();

    // A picture of a web slide's page, to show instead of its placeholder.
    using PageOf = std::function<std::optional<SharedBytes>(const Slide&)>;
    void setDeck(const Deck& deck, const SlidePaintOptions& options, const PageOf& pageOf = {});
    // Marks the current slide's tile and scrolls it into view.
    void setCurrent(std::int64_t index);
    // Gives the keyboard focus to the current slide's tile.
    void focusCurrent();

    // A tile was chosen: the slide's index.
    Signal<std::int64_t>& tileChosen() { return tileChosen_; }
    Gtk::FlowBox& tiles() { return flow_; }
    std::size_t tileCount() const { return children_.size(); }

    // The tile's number as shown: "%02d" of index + 1.
    static std::string tileNumber(std::size_t index);

private:
    Gtk::FlowBox flow_;
    std::vector<Gtk::FlowBoxChild*> children_;
    std::int64_t current_ = -1;
    Signal<std::int64_t> tileChosen_;
};

}  // namespace lectern
