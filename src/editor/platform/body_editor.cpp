#include "editor/platform/body_editor.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "base/platform/accessible.h"
#include "model/body_lines.h"
#include "slides/slide_painter.h"

namespace lectern {
namespace {

constexpr double typeScale = 1.5;      // the painter's design-canvas factor for theme sizes
constexpr double tabIndent = 1.6;      // one leading tab, in body font sizes
constexpr double paragraphGap = 0.45;  // space above each paragraph but the first, in sizes
constexpr int tabStops = 12;

int pixels(double value) { return static_cast<int>(std::lround(value)); }

Gdk::RGBA rgba(const Color& colour) {
    Gdk::RGBA out;
    out.set_rgba(colour.red, colour.green, colour.blue, colour.alpha);
    return out;
}

// A family list for CSS: every name quoted but the generic ones.
std::string cssFamilies(const std::string& families) {
    std::stringstream in(families);
    std::string name, out;
    while (std::getline(in, name, ',')) {
        name.erase(0, name.find_first_not_of(' '));
        if (!out.empty()) out += ", ";
        bool generic = name == "serif" || name == "sans-serif" || name == "monospace";
        out += generic ? name : "\"" + name + "\"";
    }
    return out;
}

std::string cssColour(const Color& colour) {
    return "rgba(" + std::to_string(pixels(colour.red * 255)) + "," + std::to_string(pixels(colour.green * 255)) + "," +
           std::to_string(pixels(colour.blue * 255)) + "," + std::to_string(colour.alpha) + ")";
}

Pango::FontDescription fontOf(FontDesign design, double sizePixels) {
    Pango::FontDescription font;
    font.set_family(fontFamily(design));
    font.set_absolute_size(sizePixels * PANGO_SCALE);
    return font;
}

bool isCommandParagraph(const AttributedText& text, const BodyLine& line) {
    return line.paragraphEnd() > line.begin && text.attributesAt(line.begin).isCommand();
}

}  // namespace

BodyEditor::BodyEditor() : buffer_(get_buffer()) {
    buffer_->set_enable_undo(false);
    set_wrap_mode(Gtk::WrapMode::WORD_CHAR);
    set_accepts_tab(false);  // Tab outside a list item moves the focus on
    set_left_margin(0);
    set_right_margin(0);
    set_top_margin(0);
    set_bottom_margin(0);
    add_css_class("stage-body-editor");
    setAccessibleLabel(*this, _("Body"));
    css_ = Gtk::CssProvider::create();
    get_style_context()->add_provider(css_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    createTags();
    setLook(look_);

    buffer_->signal_insert().connect(
        [this](Gtk::TextIter& at, const Glib::ustring& text, int bytes) {
            onInsert(at, Glib::ustring(text.raw().substr(0, static_cast<std::size_t>(std::max(bytes, 0)))));
        },
        false);
    buffer_->signal_erase().connect([this](Gtk::TextIter& begin, Gtk::TextIter& end) { onErase(begin, end); },
                                    false);
    buffer_->signal_begin_user_action().connect([this] { onBeginUserAction(); });
    buffer_->signal_end_user_action().connect([this] { onEndUserAction(); });
    buffer_->signal_mark_set().connect(
        [this](const Gtk::TextIter&, const Glib::RefPtr<Gtk::TextMark>& mark) { onMarkSet(mark); });

    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType state) { return onKeyPressed(keyval, state); }, false);
    add_controller(keys);
}

BodyEditor::~BodyEditor() {
    pendingIdle_.disconnect();
    syncIdle_.disconnect();
}

// ---- Tags ----

void BodyEditor::createTags() {
    // Created in order of priority: later tags win, so the command look
    // (monospaced, code colours) beats bold, italic and colours, and the
    // command block's edges beat the first paragraph's spacing.
    auto add = [&](Role role, const std::string& name) {
        auto tag = buffer_->create_tag(name);
        tags_[role] = tag;
        roles_[tag->gobj()] = role;
        return tag;
    };
    add(Role::bold, "bold")->property_weight() = static_cast<int>(Pango::Weight::BOLD);
    add(Role::italic, "italic")->property_style() = Pango::Style::ITALIC;
    add(Role::codeIntent, "intent-code");
    add(Role::strikeIntent, "intent-strikethrough")->property_strikethrough() = true;
    add(Role::underline, "underline")->property_underline() = Pango::Underline::SINGLE;
    add(Role::strikethrough, "strikethrough")->property_strikethrough() = true;
    add(Role::center, "align-center")->property_justification() = Gtk::Justification::CENTER;
    add(Role::right, "align-right")->property_justification() = Gtk::Justification::RIGHT;
    for (const char* name : {"look:first", "look:before-block"}) lookTags_[name] = buffer_->create_tag(name);
    add(Role::command, "command");
    for (const char* name : {"look:left", "look:cmd-top", "look:cmd-mid", "look:cmd-bottom"}) {
        lookTags_[name] = buffer_->create_tag(name);
    }
    lookTags_["look:left"]->property_justification() = Gtk::Justification::LEFT;
}

Glib::RefPtr<Gtk::TextTag> BodyEditor::colourTag(const std::string& hex) {
    if (auto found = colourTags_.find(hex); found != colourTags_.end()) return found->second;
    auto tag = buffer_->create_tag("fg:" + hex);
    if (auto colour = Color::fromHex(hex)) tag->property_foreground_rgba() = rgba(*colour);
    colourTags_[hex] = tag;
    roles_[tag->gobj()] = Role::colour;
    // The command look stays above every colour.
    tags_[Role::command]->set_priority(buffer_->get_tag_table()->get_size() - 1);
    return tag;
}

Glib::RefPtr<Gtk::TextTag> BodyEditor::indentTag(int pixels) {
    std::string name = "look:indent:" + std::to_string(pixels);
    if (auto found = lookTags_.find(name); found != lookTags_.end()) return found->second;
    // A negative indent hangs: the first line starts at the margin (its tabs
    // and marker fill the room), the wrapped lines line up with the text. A
    // positive one moves a command line in from the edge of its background.
    auto tag = buffer_->create_tag(name);
    tag->property_indent() = pixels;
    tag->set_priority(0);
    lookTags_[name] = tag;
    return tag;
}

int BodyEditor::markerWidth(const std::string& marker) {
    if (auto found = markerWidths_.find(marker); found != markerWidths_.end()) return found->second;
    auto layout = create_pango_layout(marker);
    layout->set_font_description(fontOf(look_.style.bodyFont.design, size_));
    int width = 0, height = 0;
    layout->get_pixel_size(width, height);
    markerWidths_[marker] = width;
    return width;
}

void BodyEditor::setLook(const BodyEditorLook& look) {
    look_ = look;
    size_ = look.style.bodyFont.size * typeScale * look.fit * look.pixelsPerPoint;
    const double codeSize = look.style.codeFont.size * typeScale * look.fit * look.pixelsPerPoint;
    const int padX = pixels(16 * look.fit * look.pixelsPerPoint);
    const int padY = pixels(11 * look.fit * look.pixelsPerPoint);
    const int gap = pixels(size_ * paragraphGap);
    markerWidths_.clear();

    css_->load_from_data("textview.stage-body-editor, textview.stage-body-editor > text {"
                         " background: none; padding: 0; }"
                         "textview.stage-body-editor { font-family: " +
                         cssFamilies(fontFamily(look.style.bodyFont.design)) +
                         "; font-size: " + std::to_string(size_) + "px; color: " + cssColour(look.style.primaryText) +
                         "; }");
    set_pixels_above_lines(gap);
    set_pixels_below_lines(0);
    set_pixels_inside_wrap(0);
    set_justification(look.centreLeading ? Gtk::Justification::CENTER : Gtk::Justification::LEFT);
    Pango::TabArray tabs(tabStops, true);
    for (int i = 0; i < tabStops; ++i) tabs.set_tab(i, Pango::TabAlign::LEFT, pixels(size_ * tabIndent * (i + 1)));
    set_tabs(tabs);

    auto command = tags_[Role::command];
    Pango::FontDescription code = fontOf(look.style.codeFont.design, codeSize);
    code.set_weight(Pango::Weight::NORMAL);
    code.set_style(Pango::Style::NORMAL);
    command->property_font_desc() = code;
    command->property_foreground_rgba() = rgba(look.style.codeBlockText);
    command->property_paragraph_background_rgba() = rgba(look.style.codeBlockBackground);
    commandPadding_ = padX;
    lookTags_["look:first"]->property_pixels_above_lines() = 0;
    lookTags_["look:before-block"]->property_pixels_below_lines() = gap;
    lookTags_["look:cmd-top"]->property_pixels_above_lines() = padY;
    lookTags_["look:cmd-mid"]->property_pixels_above_lines() = 0;
    lookTags_["look:cmd-bottom"]->property_pixels_below_lines() = padY;

    // Hanging indents are measured in the new size: drop them and set every
    // paragraph again.
    auto table = buffer_->get_tag_table();
    for (auto it = lookTags_.begin(); it != lookTags_.end();) {
        if (it->first.rfind("look:indent:", 0) == 0) {
            table->remove(it->second);
            it = lookTags_.erase(it);
        } else {
            ++it;
        }
    }
    bool wasWriting = writing_;
    writing_ = true;
    retag({0, body_.text.size()});
    writing_ = wasWriting;
}

void BodyEditor::retag(TextRange range) {
    const std::string& s = body_.text.string();
    range.end = std::min(range.end, s.size());
    if (range.begin > range.end) return;
    buffer_->remove_all_tags(iterAt(range.begin), iterAt(range.end));

    // Byte offsets are visited in order, so their character offsets are
    // counted on from the previous one.
    std::size_t lastByte = 0;
    long lastChar = 0;
    auto charAt = [&](std::size_t byte) {
        if (byte < lastByte) {
            lastByte = 0;
            lastChar = 0;
        }
        lastChar += g_utf8_pointer_to_offset(s.data() + lastByte, s.data() + byte);
        lastByte = byte;
        return static_cast<int>(lastChar);
    };
    body_.text.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& a) {
        std::size_t from = std::max(begin, range.begin), to = std::min(end, range.end);
        if (from >= to) return;
        auto first = buffer_->get_iter_at_offset(charAt(from));
        auto last = buffer_->get_iter_at_offset(charAt(to));
        auto tag = [&](Role role) { buffer_->apply_tag(tags_[role], first, last); };
        if (a.isBold()) tag(Role::bold);
        if (a.isItalic()) tag(Role::italic);
        if (a.inlineIntent & inline_intent::code) tag(Role::codeIntent);
        if (a.inlineIntent & inline_intent::strikethrough) tag(Role::strikeIntent);
        if (a.underline) tag(Role::underline);
        if (a.strikethrough) tag(Role::strikethrough);
        if (a.alignment == SlideBodyAlignment::center) tag(Role::center);
        if (a.alignment == SlideBodyAlignment::trailing) tag(Role::right);
        if (a.isCommand()) tag(Role::command);
        if (a.foregroundColor) buffer_->apply_tag(colourTag(*a.foregroundColor), first, last);
    });

    // The look of each paragraph: spacing, block edges, hanging markers.
    auto lines = splitLines(s);
    for (const auto& line : lines) {
        if (line.paragraphEnd() <= range.begin && line.begin < range.begin) continue;
        if (line.begin >= range.end) break;
        if (line.paragraphEnd() == line.begin) continue;
        std::vector<Glib::RefPtr<Gtk::TextTag>> look;
        bool command = isCommandParagraph(body_.text, line);
        bool before = line.index > 0 && isCommandParagraph(body_.text, lines[line.index - 1]);
        bool after = line.index + 1 < lines.size() && isCommandParagraph(body_.text, lines[line.index + 1]);
        const SlideBodyAttributes& a = body_.text.attributesAt(line.begin);
        if (line.index == 0) look.push_back(lookTags_["look:first"]);
        std::string_view text = std::string_view(s).substr(line.begin, line.length());
        double indent = 0;
        if (command) {
            look.push_back(lookTags_[before ? "look:cmd-mid" : "look:cmd-top"]);
            if (!after) look.push_back(lookTags_["look:cmd-bottom"]);
            if (!a.alignment) look.push_back(lookTags_["look:left"]);
            indent = static_cast<double>(std::min(text.find_first_not_of('\t'), text.size())) * size_ * tabIndent;
        } else {
            if (after) look.push_back(lookTags_["look:before-block"]);
            ListMarker marker = listMarkerOf(text);
            indent = static_cast<double>(marker.tabs) * size_ * tabIndent;
            bool leading = !a.alignment && !look_.centreLeading;
            if (marker.isListItem() && leading) {
                indent += markerWidth(std::string(text.substr(marker.tabs, marker.length)));
            }
        }
        if (command) {
            look.push_back(indentTag(commandPadding_ + pixels(indent)));
        } else if (indent >= 1) {
            look.push_back(indentTag(-pixels(indent)));
        }
        auto first = buffer_->get_iter_at_offset(charAt(line.begin));
        auto last = buffer_->get_iter_at_offset(charAt(line.paragraphEnd()));
        for (const auto& tag : look) buffer_->apply_tag(tag, first, last);
    }
}

// ---- Reading the buffer ----

AttributedText BodyEditor::body() const {
    AttributedText out;
    auto at = buffer_->begin();
    while (!at.is_end()) {
        auto next = at;
        next.forward_to_tag_toggle({});
        SlideBodyAttributes a;
        for (const auto& tag : at.get_tags()) {
            auto role = roles_.find(tag->gobj());
            if (role == roles_.end()) continue;
            switch (role->second) {
                case Role::bold: a.inlineIntent |= inline_intent::stronglyEmphasized; break;
                case Role::italic: a.inlineIntent |= inline_intent::emphasized; break;
                case Role::codeIntent: a.inlineIntent |= inline_intent::code; break;
                case Role::strikeIntent: a.inlineIntent |= inline_intent::strikethrough; break;
                case Role::underline: a.underline = true; break;
                case Role::strikethrough: a.strikethrough = true; break;
                case Role::center: a.alignment = SlideBodyAlignment::center; break;
                case Role::right: a.alignment = SlideBodyAlignment::trailing; break;
                case Role::command: a.block = SlideBodyBlockKind::command; break;
                case Role::colour: a.foregroundColor = tag->property_name().get_value().substr(3); break;
            }
        }
        out.append(buffer_->get_text(at, next, true).raw(), a);
        at = next;
    }
    return out;
}

EditableSlideBody BodyEditor::editable() const { return body_; }

std::size_t BodyEditor::byteOffset(int charOffset) const {
    const std::string& s = body_.text.string();
    long count = g_utf8_strlen(s.data(), static_cast<gssize>(s.size()));
    long clamped = std::clamp<long>(charOffset, 0, count);
    return static_cast<std::size_t>(g_utf8_offset_to_pointer(s.data(), clamped) - s.data());
}

Gtk::TextIter BodyEditor::iterAt(std::size_t byte) const {
    const std::string& s = body_.text.string();
    byte = std::min(byte, s.size());
    return buffer_->get_iter_at_offset(static_cast<int>(g_utf8_pointer_to_offset(s.data(), s.data() + byte)));
}

TextSelection BodyEditor::selectionFromBuffer() const {
    auto insert = buffer_->get_iter_at_mark(buffer_->get_insert());
    auto bound = buffer_->get_iter_at_mark(buffer_->get_selection_bound());
    std::size_t a = byteOffset(insert.get_offset()), b = byteOffset(bound.get_offset());
    return TextSelection::range(std::min(a, b), std::max(a, b));
}

void BodyEditor::showSelection() {
    TextSelection selection = normalizedSelection(body_.selection, body_.text.string());
    const TextRange& range = selection.ranges.front();
    // Keep the direction the user selected in.
    auto insert = buffer_->get_iter_at_mark(buffer_->get_insert());
    auto bound = buffer_->get_iter_at_mark(buffer_->get_selection_bound());
    bool backwards = insert.get_offset() < bound.get_offset();
    auto begin = iterAt(range.begin), end = iterAt(range.end);
    if (backwards) {
        buffer_->select_range(begin, end);
    } else {
        buffer_->select_range(end, begin);
    }
}

// ---- Model sync ----

void BodyEditor::setBody(const AttributedText& body) {
    AttributedText normalized = body;
    normalizeParagraphAttributes(normalized);
    if (normalized == body_.text && !pendingEdits_) return;
    int caret = buffer_->get_iter_at_mark(buffer_->get_insert()).get_offset();
    pendingEdits_ = false;
    pendingSplices_.clear();
    pendingIdle_.disconnect();
    applyingModelSync_ = true;
    writing_ = true;
    body_.text = std::move(normalized);
    buffer_->set_text(body_.text.string());
    retag({0, body_.text.size()});
    std::size_t at = byteOffset(caret);
    buffer_->place_cursor(iterAt(at));
    body_.selection = TextSelection::caret(at);
    body_.typingAttributes = typingAttributesAt(body_.text, at);
    writing_ = false;
    formatStateChanged_.emit();
    syncIdle_.disconnect();
    syncIdle_ = Glib::signal_idle().connect([this] {
        applyingModelSync_ = false;
        return false;
    });
}

// ---- User edits ----

void BodyEditor::recordSplice(TextSplice splice) {
    if (!pendingEdits_) {
        pendingEdits_ = true;
        pendingText_ = body_.text.string();
        pendingSplices_.clear();
        pendingDirty_.reset();
    }
    pendingText_.replace(splice.begin, splice.end - splice.begin, splice.text);
    TextRange inserted{splice.begin, splice.begin + splice.text.size()};
    if (pendingDirty_) {
        inserted.begin = std::min(inserted.begin, offsetThrough(splice, pendingDirty_->begin));
        inserted.end = std::max(inserted.end, offsetThrough(splice, pendingDirty_->end));
    }
    pendingDirty_ = inserted;
    pendingSplices_.push_back(std::move(splice));
    // A change outside a user action (none of GTK's own) is handled once the
    // main loop turns, when nobody holds iterators into the buffer.
    if (userActionDepth_ == 0 && !pendingIdle_.connected()) {
        pendingIdle_ = Glib::signal_idle().connect([this] {
            finishPendingEdits();
            return false;
        });
    }
}

void BodyEditor::onInsert(const Gtk::TextIter& at, const Glib::ustring& text) {
    if (writing_) return;
    std::string_view current = pendingEdits_ ? pendingText_ : body_.text.string();
    long count = g_utf8_strlen(current.data(), static_cast<gssize>(current.size()));
    auto byte = static_cast<std::size_t>(
        g_utf8_offset_to_pointer(current.data(), std::clamp<long>(at.get_offset(), 0, count)) - current.data());
    recordSplice({byte, byte, text.raw()});
}

void BodyEditor::onErase(const Gtk::TextIter& begin, const Gtk::TextIter& end) {
    if (writing_) return;
    std::string_view current = pendingEdits_ ? pendingText_ : body_.text.string();
    long count = g_utf8_strlen(current.data(), static_cast<gssize>(current.size()));
    auto byteOf = [&](int offset) {
        return static_cast<std::size_t>(
            g_utf8_offset_to_pointer(current.data(), std::clamp<long>(offset, 0, count)) - current.data());
    };
    std::size_t a = byteOf(begin.get_offset()), b = byteOf(end.get_offset());
    if (a != b) recordSplice({std::min(a, b), std::max(a, b), {}});
}

void BodyEditor::onBeginUserAction() { ++userActionDepth_; }

void BodyEditor::onEndUserAction() {
    if (userActionDepth_ > 0) --userActionDepth_;
    if (userActionDepth_ == 0) finishPendingEdits();
}

void BodyEditor::finishPendingEdits() {
    pendingIdle_.disconnect();
    if (!pendingEdits_ || writing_) return;
    pendingEdits_ = false;
    std::string bufferText = std::move(pendingText_);
    auto splices = std::move(pendingSplices_);
    pendingSplices_.clear();
    EditableSlideBody next = replayBufferEdits(body_, splices);
    commit(bufferText, pendingDirty_, std::move(next), _("Typing"), true);
}

void BodyEditor::commit(const std::string& bufferText, std::optional<TextRange> dirty, EditableSlideBody next,
                        const std::string& label, bool mergeable) {
    writing_ = true;
    TextRange changed = differingRange(body_.text, next.text);
    bool textChanged = !(body_.text == next.text);
    // A deletion can leave an empty differing range: it still counts.
    bool touched = textChanged || !changed.empty();
    auto widen = [&](TextRange range) {
        changed = touched ? TextRange{std::min(changed.begin, range.begin), std::max(changed.end, range.end)} : range;
        touched = true;
    };
    TextSplice splice = spliceBetween(bufferText, next.text.string());
    if (!splice.empty()) {
        auto charAt = [&](std::size_t byte) {
            return static_cast<int>(g_utf8_pointer_to_offset(bufferText.data(), bufferText.data() + byte));
        };
        auto begin = buffer_->get_iter_at_offset(charAt(splice.begin));
        auto end = buffer_->get_iter_at_offset(charAt(splice.end));
        auto at = buffer_->erase(begin, end);
        buffer_->insert(at, splice.text);
        widen({splice.begin, splice.begin + splice.text.size()});
    }
    if (dirty) widen({offsetThrough(splice, dirty->begin), offsetThrough(splice, dirty->end)});
    body_ = std::move(next);
    if (touched) retag(paragraphsAround(body_.text.string(), changed));
    showSelection();
    writing_ = false;
    if (textChanged && !applyingModelSync_) edited_.emit(body_.text, label, mergeable);
    formatStateChanged_.emit();
}

void BodyEditor::onMarkSet(const Glib::RefPtr<Gtk::TextMark>& mark) {
    if (writing_ || userActionDepth_ > 0 || pendingEdits_) return;
    if (mark->gobj() != buffer_->get_insert()->gobj() && mark->gobj() != buffer_->get_selection_bound()->gobj()) return;
    TextSelection selection = selectionFromBuffer();
    if (selection == body_.selection) return;
    body_.selection = selection;
    const TextRange& range = selection.ranges.front();
    // Text typed over a selection looks like its first character; at a
    // caret, like the text before it.
    body_.typingAttributes = range.empty() ? typingAttributesAt(body_.text, range.begin)
                                           : body_.text.attributesAt(range.begin);
    formatStateChanged_.emit();
}

bool BodyEditor::onKeyPressed(guint keyval, Gdk::ModifierType state) {
    using Mod = Gdk::ModifierType;
    const bool control = (state & Mod::CONTROL_MASK) == Mod::CONTROL_MASK;
    const bool shift = (state & Mod::SHIFT_MASK) == Mod::SHIFT_MASK;
    const bool alt = (state & Mod::ALT_MASK) == Mod::ALT_MASK;
    finishPendingEdits();
    guint key = gdk_keyval_to_lower(keyval);
    if (control && !alt) {
        switch (key) {
            case GDK_KEY_z: activate_action(shift ? "win.redo" : "win.undo"); return true;
            case GDK_KEY_y: activate_action("win.redo"); return true;
            case GDK_KEY_b: if (!shift) { apply(FormatControlId::bold); return true; } break;
            case GDK_KEY_i: if (!shift) { apply(FormatControlId::italic); return true; } break;
            case GDK_KEY_u: if (!shift) { apply(FormatControlId::underline); return true; } break;
            default: break;
        }
        return false;
    }
    if (alt || control) return false;
    if (keyval == GDK_KEY_Return || keyval == GDK_KEY_KP_Enter || keyval == GDK_KEY_ISO_Enter) {
        commit(body_.text.string(), std::nullopt, insertNewline(body_), _("Typing"), true);
        scroll_to(buffer_->get_insert());
        return true;
    }
    if (keyval == GDK_KEY_Tab || keyval == GDK_KEY_ISO_Left_Tab || keyval == GDK_KEY_KP_Tab) {
        if (!formatStateOf(body_).canIndent) return false;  // not in a list: the focus moves on
        apply(keyval == GDK_KEY_ISO_Left_Tab || shift ? FormatControlId::outdent : FormatControlId::indent);
        return true;
    }
    return false;
}

void BodyEditor::apply(FormatControlId control) {
    finishPendingEdits();
    for (const auto& c : formatControls()) {
        if (c.id != control) continue;
        commit(body_.text.string(), std::nullopt, applyFormatControl(body_, control), editLabelOf(c), false);
        return;
    }
}

void BodyEditor::setTextColor(std::optional<std::string> hex) {
    finishPendingEdits();
    EditableSlideBody next = lectern::setTextColor(body_, hex ? std::optional<std::string_view>(*hex) : std::nullopt);
    for (const auto& c : formatControls()) {
        if (c.id == FormatControlId::textColor) commit(body_.text.string(), std::nullopt, std::move(next), editLabelOf(c), false);
    }
}

}  // namespace lectern
