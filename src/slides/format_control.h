#pragma once

#include <span>
#include <string_view>

#include "slides/body_formatting.h"

namespace lectern {

enum class FormatControlId {
    bold,
    italic,
    underline,
    strikethrough,
    textColor,
    alignLeft,
    alignCenter,
    alignRight,
    bulletList,
    numberedList,
    indent,
    outdent,
    commandBlock,
    more,
};

// Groups of the bar, in order; separators go between them. The compact bar
// keeps the character styles (colour included) and "More formatting", whose
// menu holds the other groups.
enum class FormatControlGroup { characterStyle, alignment, list, block, overflow };

// One control of the format bar as the widget shows it.
struct FormatControl {
    FormatControlId id;
    FormatControlGroup group;
    std::string_view label;        // tooltip and accessible name, exactly as shown
    std::string_view iconName;     // symbolic icon of the Adwaita theme
    std::string_view accelerator;  // GTK accelerator, empty when there is none
};

// Every control in the order of the full bar ("More formatting" last, shown
// only when compact).
std::span<const FormatControl> formatControls();

bool showsInCompactBar(const FormatControl& control);

// The body after pressing the control. Text colour needs a colour (see
// setTextColor) and "More formatting" only opens its menu: both leave the
// body as it is.
[[nodiscard]] EditableSlideBody applyFormatControl(EditableSlideBody body, FormatControlId id);

}  // namespace lectern
