#pragma once

#include <gtkmm.h>

#include <functional>
#include <optional>
#include <vector>

#include "editor/slide_inspector_model.h"
#include "slides/slide_painter.h"

namespace lectern {

// The layout picker of the slide inspector: a row per layout with a small
// picture of it, its name and what it is for; the web and image rows carry
// a chevron that opens their five positions below them, each a picture of
// that arrangement. Choosing a row hands its change on; the picker itself
// changes nothing.
class LayoutPicker : public Gtk::Box {
public:
    explicit LayoutPicker(std::function<void(const LayoutChange&)> chosen);

    // Shows the slide's rows in the deck's look; rebuilt only when the rows
    // or the look differ from those shown.
    void show(const Slide& slide, const SlidePaintOptions& look);

private:
    void rebuild(const SlidePaintOptions& look);
    Gtk::Widget* layoutRow(const LayoutPickerRow& row, const SlidePaintOptions& look);
    Gtk::Widget* positionRow(const std::vector<LayoutPickerRow>& options, const SlidePaintOptions& look);

    std::function<void(const LayoutChange&)> chosen_;
    LayoutPickerState state_;
    std::optional<Slide> slide_;
    std::vector<LayoutPickerRow> rows_;
    std::optional<SlidePaintOptions> look_;
};

}  // namespace lectern
