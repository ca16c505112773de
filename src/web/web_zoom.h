#pragma once

#include <array>
#include <string>

namespace lectern {

// Page zoom of web slides: a fixed ladder of levels, 1.0 = actual size.
namespace WebZoom {

inline constexpr std::array<double, 8> levels{0.75, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0};

// The next level up from `zoom`, or `zoom` itself at the top.
double zoomIn(double zoom);
// The next level down from `zoom`, or `zoom` itself at the bottom.
double zoomOut(double zoom);
bool isActualSize(double zoom);
// The badge of a zoomed page: "125%".
std::string percentText(double zoom);

}  // namespace WebZoom

}  // namespace lectern
