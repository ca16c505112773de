#pragma once

namespace lectern {

// The application's own style sheet, on top of libadwaita's: the HUD, the
// overview tiles, the timer colours, the presenter panel.
extern const char* const appStyleSheet;

}  // namespace lectern
