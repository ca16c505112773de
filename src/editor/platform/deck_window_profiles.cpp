// "Browser Profiles…": the deck's profiles live in the deck inspector, which
// the command shows (opening the editor when only the stage is shown).

#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/inspector_column.h"

namespace lectern {

void DeckWindow::showBrowserProfiles() {
    if (!state_->editorOpen()) state_->toggleEditor();
    layout_->inspector().setFocus(InspectorColumn::Focus::deck);
}

}  // namespace lectern
