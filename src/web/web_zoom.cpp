#include "web/web_zoom.h"

#include <cmath>

namespace lectern::WebZoom {

// Levels are compared a thousandth apart, so a zoom stored as 1.0999 still
// counts as 1.1.
constexpr double slack = 0.001;

double zoomIn(double zoom) {
    for (double level : levels) {
        if (level > zoom + slack) return level;
    }
    return zoom;
}

double zoomOut(double zoom) {
    for (auto it = levels.rbegin(); it != levels.rend(); ++it) {
        if (*it < zoom - slack) return *it;
    }
    return zoom;
}

bool isActualSize(double zoom) { return std::abs(zoom - 1.0) < slack; }

std::string percentText(double zoom) { return std::to_string(std::lround(zoom * 100)) + "%"; }

}  // namespace lectern::WebZoom
