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
// The talk's other keys (see PresenterKeys).
constexpr std::uint32_t home = 0xff50;
constexpr std::uint32_t end = 0xff57;
constexpr std::uint32_t pageUp = 0xff55;
constexpr std::uint32_t pageDown = 0xff56;
constexpr std::uint32_t space = 0x20;
constexpr std::uint32_t returnKey = 0xff0d;
constexpr std::uint32_t keypadEnter = 0xff8d;
constexpr std::uint32_t backSpace = 0xff08;
constexpr std::uint32_t f5 = 0xffc2;
constexpr std::uint32_t keypad0 = 0xffb0;  // through keypad9 = 0xffb9
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
