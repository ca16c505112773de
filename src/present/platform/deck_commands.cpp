#include "present/platform/deck_commands.h"

namespace lectern {

// Ctrl+Left and Ctrl+Right are also what the window's key monitor does with
// those keys, so either may take them: both move by whole slides.

const std::vector<DeckCommand>& fileCommands() {
    static const std::vector<DeckCommand> commands{
        {"app.new-deck", "New Deck", {"<Control>n"}},
        {"app.open", "Open…", {"<Control>o"}},
        {"win.save", "Save", {"<Control>s"}},
        {"win.save-as", "Save As…", {"<Shift><Control>s"}},
    };
    return commands;
}

const std::vector<DeckCommand>& editCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.undo", "Undo", {"<Control>z"}},
        {"win.redo", "Redo", {"<Shift><Control>z", "<Control>y"}},
        {"win.toggle-sidebar", "Toggle Sidebar", {"F9"}},
        {"win.next-pane", "Next Pane", {"F6"}},
    };
    return commands;
}

const std::vector<DeckCommand>& slideCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.new-slide", "New Slide", {"<Shift><Control>n"}},
        {"win.duplicate-slide", "Duplicate", {"<Control>d"}},
        {"win.rename-slide", "Rename", {"F2"}},
        {"win.move-slide-up", "Move Up", {}},
        {"win.move-slide-down", "Move Down", {}},
        {"win.toggle-skip", "Skip in Presentation", {}},
        {"win.group-with-previous", "Group with Slide Above", {"<Control>g"}},
        {"win.remove-from-section", "Remove from Section", {"<Shift><Control>g"}},
        {"win.delete-slide", "Delete Slide…", {"<Shift><Control>Delete"}},
    };
    return commands;
}

const std::vector<DeckCommand>& presentationCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.previous-slide", "Previous Slide", {"<Control>Left"}},
        {"win.next-slide", "Next Slide", {"<Control>Right"}},
        {"win.advance", "Advance", {}},
        {"win.overview", "Overview", {"Escape"}},
        {"win.toggle-notes", "Toggle Notes", {"<Alt><Control>i"}},
        {"win.toggle-hud", "Toggle HUD", {"<Control>j"}},
        {"win.toggle-presenter-display", "Toggle Presenter Display", {"<Alt><Control>p"}},
        {"win.toggle-editor", "Toggle Editor", {"<Control>e"}},
        {"win.present", "Present", {"<Shift><Control>p"}},
        {"win.toggle-timer", "Start / Stop Timer", {"<Control>t"}},
        {"win.reset-web-page", "Reset Web Page", {"<Control>r"}},
        {"win.zoom-in", "Zoom In", {"<Control>equal", "<Control>plus"}},
        {"win.zoom-out", "Zoom Out", {"<Control>minus"}},
        {"win.actual-size", "Actual Size", {"<Control>0"}},
        {"win.check-web-slides", "Check Web Slides…", {}},
        {"win.clear-shared-web-session", "Clear Shared Web Session", {"<Control>k"}},
        {"win.browser-profiles", "Browser Profiles…", {}},
    };
    return commands;
}

const std::vector<DeckCommand>& applicationCommands() {
    static const std::vector<DeckCommand> commands{
        {"app.preferences", "Preferences", {"<Control>comma"}},
        {"app.check-for-updates", "Check for Updates…", {}},
        {"app.about", "About Lectern", {}},
        {"app.quit", "Quit", {"<Control>q"}},
        {"win.close", "Close Window", {"<Control>w"}},
        {"win.show-help-overlay", "Keyboard Shortcuts", {"<Control>question"}},
    };
    return commands;
}

}  // namespace lectern
