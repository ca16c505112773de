#include <gtest/gtest.h>

#include <random>

#include <algorithm>
#include <functional>

#include "base/manual_scheduler.h"
#include "editor/autosaver.h"
#include "editor/deck_document.h"
#include "editor/deck_editor.h"
#include "editor/deck_edits.h"
#include "editor/recovery_store.h"
#include "model/deck_package.h"
#include "support/fake_http.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

Deck deckOf(std::initializer_list<const char*> titles) {
    Deck deck;
    for (const char* title : titles) {
        Slide slide = Slide::make(SlideLayout::regular);
        slide.title = title;
        deck.slides.push_back(slide);
    }
    return deck;
}

std::vector<std::string> titles(const Deck& deck) {
    std::vector<std::string> out;
    for (const auto& slide : deck.slides) out.push_back(slide.title);
    return out;
}

Deck retitled(Deck deck, std::size_t index, std::string title) {
    deck.slides[index].title = std::move(title);
    return deck;
}

// A window's document, state and editor on a manual clock.
struct Window {
    testing::TempDir dir;
    ManualScheduler scheduler{100};
    PreferencesStore preferences{dir / "preferences.json"};
    DeckDocument document;
    PresentationState state{scheduler, preferences,
                            std::make_unique<ActionRunner>(std::make_unique<testing::FakeHttpTransport>(), nullptr,
                                                           [this] { return scheduler.now(); })};
    DeckEditor editor{document, state, preferences, nullptr, nullptr};

    explicit Window(Deck deck, std::optional<std::filesystem::path> package = std::nullopt)
        : document(std::move(deck), std::move(package), [this] { return scheduler.now(); }) {}
    std::string current() const { return editor.currentSlide() ? editor.currentSlide()->title : "-"; }
};

TEST(DeckDocument, UndoRedoMergingAndDirtyState) {
    Window w(deckOf({"A", "B"}));
    EXPECT_FALSE(w.document.isDirty());
    EXPECT_FALSE(w.document.edit("Rename Slide", [](Deck d) { return d; }));  // no change, no step
    EXPECT_FALSE(w.document.canUndo());

    // Typing in one field within a second of the last keystroke is one step.
    for (const char* text : {"T", "Ty", "Typ"}) {
        w.document.edit("Typing", [&](Deck d) { return retitled(std::move(d), 0, text); }, "title");
        w.scheduler.advance(0.5);
    }
    w.scheduler.advance(1.0);
    w.document.edit("Typing", [](Deck d) { return retitled(std::move(d), 0, "Type"); }, "title");
    EXPECT_EQ(w.document.undoLabel(), "Typing");
    w.document.undo();
    EXPECT_EQ(titles(w.document.deck()), (std::vector<std::string>{"Typ", "B"}));
    w.document.undo();
    EXPECT_EQ(titles(w.document.deck()), (std::vector<std::string>{"A", "B"}));
    EXPECT_FALSE(w.document.isDirty());  // back to what was saved
    EXPECT_FALSE(w.document.canUndo());
    w.document.redo();
    w.document.redo();
    EXPECT_EQ(w.document.deck().slides[0].title, "Type");
    EXPECT_TRUE(w.document.isDirty());

    // Saving makes it clean; a new edit clears what could be redone.
    w.document.markSaved(w.document.deck(), w.dir / "Deck.lectern");
    EXPECT_FALSE(w.document.isDirty());
    w.document.undo();
    EXPECT_TRUE(w.document.isDirty());
    w.document.edit("Rename Slide", [](Deck d) { return retitled(std::move(d), 1, "Z"); });
    EXPECT_FALSE(w.document.canRedo());
}

TEST(DeckDocument, KeepsAtLeastAHundredSteps) {
    Window w(deckOf({"0"}));
    for (int i = 1; i <= 250; ++i) w.document.edit("Rename Slide", [&](Deck d) { return retitled(std::move(d), 0, std::to_string(i)); });
    int undone = 0;
    while (w.document.canUndo()) {
        w.document.undo();
        ++undone;
    }
    EXPECT_GE(undone, 100);
    EXPECT_EQ(w.document.deck().slides[0].title, std::to_string(250 - undone));
}

TEST(DeckDocument, UndoAndRedoGiveBackEveryDeckOfARandomHistory) {
    Window w(deckOf({"A", "B", "C", "D"}));
    std::vector<Deck> history{w.document.deck()};
    std::minstd_rand random(7);  // the same history on every run
    auto next = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
    for (int i = 0; i < 150; ++i) {
        std::size_t count = w.document.deck().slides.size();
        std::function<Deck(Deck)> change;
        switch (next(4)) {
        case 0: change = [&](Deck d) { return edits::insertSlide(std::move(d), next(static_cast<unsigned>(count + 1)), Slide::make(SlideLayout::web)); }; break;
        case 1: change = [&](Deck d) { return count > 1 ? edits::deleteSlide(std::move(d), next(static_cast<unsigned>(count))) : d; }; break;
        case 2: change = [&](Deck d) { return edits::moveSlide(std::move(d), next(static_cast<unsigned>(count)), next(static_cast<unsigned>(count))); }; break;
        default: change = [&](Deck d) { return retitled(std::move(d), next(static_cast<unsigned>(count)), std::to_string(i)); }; break;
        }
        // Some steps merge as typing does, so a step is told again.
        if (w.document.edit("Edit", change, next(3) == 0 ? "typing" : "")) history.push_back(w.document.deck());
    }
    // Merged steps leave out decks in between: compare what undo reaches
    // with the decks it must pass, in order.
    std::vector<Deck> undone{w.document.deck()};
    while (w.document.canUndo()) {
        w.document.undo();
        undone.push_back(w.document.deck());
    }
    EXPECT_EQ(undone.back(), history.front());
    for (const Deck& deck : undone) EXPECT_NE(std::find(history.begin(), history.end(), deck), history.end());
    for (std::size_t i = undone.size() - 1; i-- > 0;) {
        w.document.redo();
        EXPECT_EQ(w.document.deck(), undone[i]);
    }
}

TEST(DeckEditor, CurrentSlideIsKeptByIdThroughEditsAndUndo) {
    Window w(deckOf({"A", "B", "C"}));
    w.state.goTo(1, false);
    // Inserting above the current slide, moving it and undoing never change
    // which slide shows.
    w.editor.edit("New Slide", [](Deck d) { return edits::insertSlide(std::move(d), 0, Slide::make(SlideLayout::callout)); });
    EXPECT_EQ(w.current(), "B");
    EXPECT_EQ(w.state.current(), 2);
    w.editor.edit("Move Slide", [](Deck d) { return edits::moveSlide(std::move(d), 2, 0); });
    EXPECT_EQ(w.current(), "B");
    EXPECT_EQ(w.state.current(), 0);
    w.state.goTo(3, false);  // C
    w.editor.undo();         // the move: back to the slide the move was made on
    EXPECT_EQ(w.current(), "B");

    // An edit that names a slide to show goes there; undoing it comes back.
    w.state.goTo(0, false);
    Slide added = Slide::make(SlideLayout::web);
    added.title = "New";
    w.editor.edit("New Slide", [&](Deck d) { return edits::insertSlide(std::move(d), 4, added); }, {}, added.id);
    EXPECT_EQ(w.current(), "New");
    w.editor.undo();
    EXPECT_EQ(w.state.current(), 0);
    w.editor.redo();
    EXPECT_EQ(w.current(), "New");

    // Deleting the current slide shows the one that took its place; the last
    // one, the one before it.
    w.editor.edit("Delete Slide", [](Deck d) { return edits::deleteSlide(std::move(d), 4); });
    EXPECT_EQ(w.state.current(), 3);
}

TEST(Autosaver, SavesACopyAfterTheLastEditAndKeepsRecoveryUntilSaved) {
    testing::TempDir dir;
    Deck deck = deckOf({"A"});
    auto package = dir / "Talk.lectern";
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    Window w(deck, package);
    InlineWorker worker;
    auto recovery = std::make_shared<RecoveryStore>(dir / "recovery");
    int writes = 0;
    bool failing = false;
    Autosaver saver(w.document, w.scheduler, worker,
                    [&](const Deck& d, const std::filesystem::path& p) -> Status {
                        ++writes;
                        if (failing) return Error{"The disk is full.", ErrorKind::fileWrite};
                        return DeckPackage::write(d, p, p, {});
                    },
                    recovery);

    for (const char* text : {"B", "C", "D"}) {
        w.document.edit("Typing", [&](Deck d) { return retitled(std::move(d), 0, text); }, "title");
        w.scheduler.advance(0.5);
    }
    EXPECT_EQ(writes, 0);  // still typing
    w.scheduler.advance(1.0);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(DeckPackage::read(package)->slides[0].title, "D");
    EXPECT_FALSE(w.document.isDirty());

    // A failing disk: the change stays in the document and in a recovery
    // copy, and closing reports the failure.
    failing = true;
    std::string message;
    auto failed = saver.failed().connect([&](const Error& error) { message = error.message; });
    w.document.edit("Rename Slide", [](Deck d) { return retitled(std::move(d), 0, "E"); });
    w.scheduler.advance(Autosaver::recoverySeconds + 0.1);
    EXPECT_EQ(message, "The disk is full.");
    EXPECT_TRUE(w.document.isDirty());
    ASSERT_EQ(recovery->list().size(), 1u);
    EXPECT_EQ(recovery->read(recovery->list()[0])->slides[0].title, "E");
    EXPECT_FALSE(saver.flush());
    EXPECT_EQ(DeckPackage::read(package)->slides[0].title, "D");  // the old package is whole

    failing = false;
    EXPECT_TRUE(saver.flush());
    EXPECT_EQ(DeckPackage::read(package)->slides[0].title, "E");
    EXPECT_TRUE(recovery->list().empty());
}

}  // namespace
}  // namespace lectern
