#pragma once

#include <gtkmm.h>

#include <functional>
#include <memory>

#include "base/signal.h"
#include "base/worker.h"
#include "editor/deck_editor.h"
#include "slides/slide_painter.h"

namespace lectern {

class BodyField;
class HeadingFields;
class StageView;
// [components] forward declarations
class ImageEditing;
class CardEditors;

// Editing on the stage: the fields, editors and drop areas that lie over
// the painted slide in the editor, each where the painter draws what it
// edits. It owns them, places them as the stage's overlay children, and
// tells the stage how to paint around them (texts a focused field shows are
// left out, a dragged card follows the pointer).
class StageEditing {
public:
    // `overlay` is the stage's overlay, `stage` its main child;
    // `baseOptions` gives the deck's theme, accent and title.
    StageEditing(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage, Worker& worker,
                 std::function<SlidePaintOptions()> baseOptions);
    ~StageEditing();

    // Follows the current slide, the deck, the stage's size and whether the
    // editor is open.
    void update(bool editing);
    // The options the editor's stage paints the current slide with.
    SlidePaintOptions paintOptions() const;

    HeadingFields& headings() { return *headings_; }
    BodyField& body() { return *body_; }

    // Something the painting depends on changed (a field took or left the
    // focus, a card is dragged): the stage paints again.
    Signal<>& looksChanged() { return looksChanged_; }

private:
    void place();

    DeckEditor& editor_;
    Gtk::Overlay& overlay_;
    StageView& stage_;
    std::function<SlidePaintOptions()> baseOptions_;
    bool editing_ = false;
    std::unique_ptr<HeadingFields> headings_;
    std::unique_ptr<BodyField> body_;
    // [components] members
    std::unique_ptr<ImageEditing> images_;
    std::unique_ptr<CardEditors> cards_;
    Signal<>::Connection cardLooksConnection_;
    sigc::connection resized_;
    Signal<> looksChanged_;
    Signal<>::Connection headingFocusConnection_;
    Signal<>::Connection bodyWantedConnection_;
    Signal<>::Connection bodyActiveConnection_;
};

}  // namespace lectern
