#pragma once

#include <gtkmm.h>

#include <functional>
#include <optional>

#include "model/color.h"

namespace lectern {

// A round swatch of `size` pixels in the colour `colour()` gives when it is
// drawn; with no colour it is an empty, dashed ring. The colour pickers of
// the format bar and of both inspectors draw their swatches with it.
Gtk::DrawingArea* makeColourSwatch(std::function<std::optional<Color>()> colour, int size);
Gtk::DrawingArea* makeColourSwatch(const Color& colour, int size);

}  // namespace lectern
