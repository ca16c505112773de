#pragma once

#include <gtkmm.h>

#include <string>

#include "base/signal.h"
#include "editor/deck_editor.h"

namespace lectern {

class PresentingStage;
class InspectorColumn;
class SlideNavigator;

// The editor's columns around the stage: the slide navigator on the left,
// the stage with the presenter notes under it in the middle, the inspector
// on the right. With the editor closed the side columns and the notes go
// and the stage has the window to itself.
class EditorLayout : public Gtk::Box {
public:
    static constexpr int minNotesHeight = 80;
    static constexpr int maxNotesHeight = 300;
    static constexpr int initialNotesHeight = 160;
    static constexpr int transitionMilliseconds = 200;

    EditorLayout(DeckEditor& editor, PresentingStage& stage, SlideNavigator& navigator);
    ~EditorLayout() override;

    // Shows or hides the columns and the notes as the state says.
    void refreshChrome(bool sidebarVisible);
    // The notes of the current slide, unless they are being typed.
    void refreshNotes();

    Gtk::TextView& notes() { return *notes_; }
    InspectorColumn& inspector() { return *inspector_; }
    int notesHeight() const { return notesHeight_; }
    void setNotesHeight(int height);

private:
    void notesTyped();

    DeckEditor& editor_;
    PresentationState& state_;
    Gtk::Revealer* navigatorColumn_ = nullptr;
    Gtk::Revealer* inspectorColumn_ = nullptr;
    InspectorColumn* inspector_ = nullptr;
    Gtk::Revealer* notesRevealer_ = nullptr;
    Gtk::Box* notesPane_ = nullptr;
    Gtk::TextView* notes_ = nullptr;
    int notesHeight_ = initialNotesHeight;
    int dragStartHeight_ = initialNotesHeight;
    bool syncing_ = false;  // the buffer is being set from the deck
    Signal<>::Connection deckHeaderConnection_;
};

}  // namespace lectern
