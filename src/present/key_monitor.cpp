#include "present/key_monitor.h"

namespace lectern {

KeyCommand keyCommand(std::uint32_t key, KeyModifiers m, bool editorOpen) {
    if (!m.control) {
        if (m.shift || m.alt || m.super) return KeyCommand::passOn;
        if (editorOpen) return KeyCommand::passOn;
        switch (key) {
            case keys::right:
            case keys::down: return KeyCommand::next;
            case keys::left:
            case keys::up: return KeyCommand::previous;
            case keys::escape: return KeyCommand::toggleOverview;
            default: return KeyCommand::passOn;
        }
    }
    if (m.shift || m.alt || m.super) return KeyCommand::passOn;
    if (key == keys::right) return KeyCommand::nextSlideDirect;
    if (key == keys::left) return KeyCommand::previousSlideDirect;
    return KeyCommand::passOn;
}

}  // namespace lectern
