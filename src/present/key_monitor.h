#pragma once

#include <cstdint>

namespace lectern {

// Key values of the keys the deck window's monitor handles (GDK key values,
// kept here so the decision needs no toolkit header).
namespace keys {
constexpr std::uint32_t left = 0xff51;
constexpr std::uint32_t up = 0xff52;
constexpr std::uint32_t right = 0xff53;
constexpr std::uint32_t down = 0xff54;
constexpr std::uint32_t escape = 0xff1b;
}  // namespace keys

struct KeyModifiers {
    bool shift = false;
    bool control = false;  // the primary shortcut modifier
    bool alt = false;
    bool super = false;
};

// What a key press in the deck window does while the stage is shown. Bare
// arrows and Escape navigate only with the editor closed (in the editor they
// move the text cursor); Ctrl+Right and Ctrl+Left move by whole slides
// anywhere. Every other combination passes on to the focused widget.
enum class KeyCommand { passOn, next, previous, toggleOverview, nextSlideDirect, previousSlideDirect };

KeyCommand keyCommand(std::uint32_t key, KeyModifiers modifiers, bool editorOpen);

}  // namespace lectern
