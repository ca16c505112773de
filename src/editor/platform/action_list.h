#pragma once

#include <gtkmm.h>

#include <memory>
#include <vector>

#include "editor/deck_editor.h"
#include "present/action_runner.h"

namespace lectern {

class ActionEditor;

// The current slide's demo actions in the slide inspector: each with its
// name, kind and whether it runs by itself, a test run with its outcome
// beside it (on a runner of the inspector's own), its editor (double click
// or the edit button), moving and removing. Actions are added as a request
// or a page script, and the editor opens on the new one. Every change is an
// edit of the document.
class ActionList : public Gtk::Box {
public:
    explicit ActionList(DeckEditor& editor);
    ~ActionList() override;

    // Adds an action of that kind to the current slide and opens its editor.
    void addAction(SlideActionKindCase kind);
    // Opens the action editor on an action of the current slide.
    void openEditor(const Uuid& actionId);
    // Test-runs an action of the current slide; an action that came with
    // the deck and was never allowed brings up the consent sheet instead.
    void testRun(const Uuid& actionId);
    void moveAction(const Uuid& actionId, int offset);
    void removeAction(const Uuid& actionId);

    Gtk::ListBox& rows() { return rows_; }
    Gtk::Button& addRequestButton() { return addRequest_; }
    Gtk::Button& addScriptButton() { return addScript_; }
    ActionRunner& runner() { return *runner_; }
    // The action editor while it is shown.
    ActionEditor* actionEditor() { return sheet_.get(); }

private:
    void refresh();
    void refreshRunStates();
    Gtk::ListBoxRow* makeRow(const Slide& slide, const SlideAction& action, std::size_t index);
    const SlideAction* find(const Uuid& actionId) const;

    DeckEditor& editor_;
    std::unique_ptr<ActionRunner> runner_;
    Gtk::Button addRequest_;
    Gtk::Button addScript_;
    Gtk::ListBox rows_;
    Gtk::Label empty_;
    struct Row {
        Uuid id;
        Gtk::Label* outcome = nullptr;
        Gtk::Spinner* spinner = nullptr;
    };
    std::vector<Row> rowStates_;
    std::unique_ptr<ActionEditor> sheet_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<>::Connection runnerConnection_;
};

}  // namespace lectern
