#pragma once

#include <gtkmm.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"
#include "model/theme_style.h"
#include "slides/body_editing.h"
#include "slides/format_control.h"

namespace lectern {

// How the body is set on the stage now, so the text view looks like the
// painted body.
struct BodyEditorLook {
    ThemeStyle style;
    double fit = 1;              // the painter's shrink factor for this body
    double pixelsPerPoint = 1;   // view pixels per design point (the stage's scale)
    bool centreLeading = false;  // callouts centre ordinary lines
};

// The slide body as an editable text view. The buffer's tags carry exactly
// the body's attributes (one tag per attribute value) plus a few tags that
// only shape the look (spacing, hanging list markers, command block edges).
// Every change the user makes goes through the formatting core: the buffer
// is let to change as GTK wants, and at the end of the user action the edit
// is made again on the core's body and the differing paragraphs are
// written back, so the buffer always holds what the core decided.
class BodyEditor : public Gtk::TextView {
public:
    BodyEditor();
    ~BodyEditor() override;

    // Model sync: replaces the buffer with the slide's body (normalised)
    // unless it already holds exactly that text; while it copies,
    // isApplyingModelSync is set and buffer changes are not reported; the flag
    // clears on the next main-loop turn. The caret stays at its offset,
    // clamped.
    void setBody(const AttributedText& body);
    AttributedText body() const;        // read back from the buffer's text and tags
    EditableSlideBody editable() const;  // body + selection + typing attributes
    void setLook(const BodyEditorLook& look);
    // Typing not yet reported (it is, at the end of the user action or on
    // the next idle).
    bool hasPendingEdits() const { return pendingEdits_; }
    // Presses a control of the bar on the current selection (also the shortcuts).
    void apply(FormatControlId control);
    void setTextColor(std::optional<std::string> hex);  // nullopt: the theme's colour
    bool isApplyingModelSync() const { return applyingModelSync_; }

    // Emitted once per user change with the new body: typing (label
    // "Typing", mergeable) or a control (its label, not mergeable).
    Signal<const AttributedText&, const std::string&, bool>& edited() { return edited_; }
    Signal<>& formatStateChanged() { return formatStateChanged_; }

private:
    enum class Role { bold, italic, codeIntent, strikeIntent, underline, strikethrough, center, right, command, colour };

    void createTags();
    Glib::RefPtr<Gtk::TextTag> colourTag(const std::string& hex);
    Glib::RefPtr<Gtk::TextTag> indentTag(int pixels);
    void applyLookToTags();
    int markerWidth(const std::string& marker);

    // Raw buffer changes, recorded while a user action runs.
    void onInsert(const Gtk::TextIter& at, const Glib::ustring& text);
    void onErase(const Gtk::TextIter& begin, const Gtk::TextIter& end);
    void onBeginUserAction();
    void onEndUserAction();
    void recordSplice(TextSplice splice);
    void finishPendingEdits();
    void onMarkSet(const Glib::RefPtr<Gtk::TextMark>& mark);
    bool onKeyPressed(guint keyval, Gdk::ModifierType state);

    // Makes the buffer (whose text is now `bufferText`, with `dirty` of it
    // holding text of unknown tags) hold `next`, and reports the change.
    void commit(const std::string& bufferText, std::optional<TextRange> dirty, EditableSlideBody next,
                const std::string& label, bool mergeable);
    // Rewrites the tags of whole paragraphs [range) of body_.text.
    void retag(TextRange range);
    void showSelection();
    TextSelection selectionFromBuffer() const;
    std::size_t byteOffset(int charOffset) const;
    Gtk::TextIter iterAt(std::size_t byte) const;

    Glib::RefPtr<Gtk::TextBuffer> buffer_;
    Glib::RefPtr<Gtk::CssProvider> css_;
    EditableSlideBody body_;  // what the buffer shows, its selection and typing attributes
    BodyEditorLook look_;
    double size_ = 21;        // body font size in view pixels
    int commandPadding_ = 16; // room between a command block's edge and its text

    std::map<const GtkTextTag*, Role> roles_;  // what each attribute tag stands for
    std::map<Role, Glib::RefPtr<Gtk::TextTag>> tags_;
    std::map<std::string, Glib::RefPtr<Gtk::TextTag>> colourTags_;
    std::map<std::string, Glib::RefPtr<Gtk::TextTag>> lookTags_;
    std::map<std::string, int> markerWidths_;

    // The user action in progress: the buffer's text as the recorded
    // splices left it, the splices, and the span of it holding new text.
    int userActionDepth_ = 0;
    bool pendingEdits_ = false;
    std::string pendingText_;
    std::vector<TextSplice> pendingSplices_;
    std::optional<TextRange> pendingDirty_;
    sigc::connection pendingIdle_;

    bool writing_ = false;
    bool applyingModelSync_ = false;
    sigc::connection syncIdle_;

    Signal<const AttributedText&, const std::string&, bool> edited_;
    Signal<> formatStateChanged_;
};

}  // namespace lectern
