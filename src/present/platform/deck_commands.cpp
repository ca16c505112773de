#include "present/platform/deck_commands.h"

#include <glib/gi18n.h>

namespace lectern {

// Ctrl+Left and Ctrl+Right are also what the window's key monitor does with
// those keys, so either may take them: both move by whole slides.

const std::vector<DeckCommand>& fileCommands() {
    static const std::vector<DeckCommand> commands{
        {"app.new-deck", _("New Deck"), {"<Control>n"}},
        {"app.open", _("Open…"), {"<Control>o"}},
        {"win.save", _("Save"), {"<Control>s"}},
        {"win.save-as", _("Save As…"), {"<Shift><Control>s"}},
        {"win.export-pdf", _("Export as PDF…"), {"<Shift><Control>e"}},
    };
    return commands;
}

const std::vector<DeckCommand>& editCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.undo", _("Undo"), {"<Control>z"}},
        {"win.redo", _("Redo"), {"<Shift><Control>z", "<Control>y"}},
        {"win.toggle-sidebar", _("Toggle Sidebar"), {"F9"}},
        {"win.next-pane", _("Next Pane"), {"F6"}},
    };
    return commands;
}

const std::vector<DeckCommand>& slideCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.new-slide", _("New Slide"), {"<Shift><Control>n"}},
        {"win.duplicate-slide", _("Duplicate"), {"<Control>d"}},
        {"win.rename-slide", _("Rename"), {"F2"}},
        {"win.move-slide-up", _("Move Up"), {}},
        {"win.move-slide-down", _("Move Down"), {}},
        {"win.toggle-skip", _("Skip in Presentation"), {}},
        {"win.group-with-previous", _("Group with Slide Above"), {"<Control>g"}},
        {"win.remove-from-section", _("Remove from Section"), {"<Shift><Control>g"}},
        {"win.delete-slide", _("Delete Slide…"), {"<Shift><Control>Delete"}},
    };
    return commands;
}

const std::vector<DeckCommand>& presentationCommands() {
    static const std::vector<DeckCommand> commands{
        {"win.previous-slide", _("Previous Slide"), {"<Control>Left"}},
        {"win.next-slide", _("Next Slide"), {"<Control>Right"}},
        {"win.advance", _("Advance"), {}},
        {"win.overview", _("Overview"), {"Escape"}},
        {"win.toggle-notes", _("Toggle Notes"), {"<Alt><Control>i"}},
        {"win.toggle-hud", _("Toggle HUD"), {"<Control>j"}},
        {"win.toggle-presenter-display", _("Toggle Presenter Display"), {"<Alt><Control>p"}},
        {"win.toggle-editor", _("Toggle Editor"), {"<Control>e"}},
        {"win.present", _("Present"), {"<Shift><Control>p"}},
        {"win.toggle-timer", _("Start / Stop Timer"), {"<Control>t"}},
        {"win.reset-web-page", _("Reset Web Page"), {"<Control>r"}},
        {"win.zoom-in", _("Zoom In"), {"<Control>equal", "<Control>plus"}},
        {"win.zoom-out", _("Zoom Out"), {"<Control>minus"}},
        {"win.actual-size", _("Actual Size"), {"<Control>0"}},
        {"win.check-web-slides", _("Check Web Slides…"), {}},
        {"win.clear-shared-web-session", _("Clear Shared Web Session"), {"<Control>k"}},
        {"win.browser-profiles", _("Browser Profiles…"), {}},
    };
    return commands;
}

const std::vector<DeckCommand>& applicationCommands() {
    static const std::vector<DeckCommand> commands{
        {"app.preferences", _("Preferences"), {"<Control>comma"}},
        {"app.check-for-updates", _("Check for Updates…"), {}},
        {"app.about", _("About Lectern"), {}},
        {"app.quit", _("Quit"), {"<Control>q"}},
        {"win.close", _("Close Window"), {"<Control>w"}},
        {"win.show-help-overlay", _("Keyboard Shortcuts"), {"<Control>question"}},
    };
    return commands;
}

}  // namespace lectern
