#include "editor/platform/heading_fields.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"

namespace lectern {

namespace {

// The slide's text a field edits.
template <class S>
auto& textOf(S& slide, HeadingFields::Part part) {
    switch (part) {
        case HeadingFields::Part::eyebrow: return slide.eyebrow;
        case HeadingFields::Part::subtitle: return slide.subtitle;
        case HeadingFields::Part::title: break;
    }
    return slide.title;
}

const std::optional<TextBox>& boxOf(const SlideGeometry& geometry, HeadingFields::Part part) {
    switch (part) {
        case HeadingFields::Part::eyebrow: return geometry.eyebrow;
        case HeadingFields::Part::subtitle: return geometry.subtitle;
        case HeadingFields::Part::title: break;
    }
    return geometry.title;
}

const char* mergeName(HeadingFields::Part part) {
    switch (part) {
        case HeadingFields::Part::eyebrow: return "eyebrow:";
        case HeadingFields::Part::subtitle: return "subtitle:";
        case HeadingFields::Part::title: break;
    }
    return "title:";
}

}  // namespace

HeadingFields::HeadingFields(DeckEditor& editor) : editor_(editor) {
    build(Part::eyebrow, _("Eyebrow"));
    build(Part::title, _("Title"));
    build(Part::subtitle, _("Subtitle"));
}

HeadingFields::~HeadingFields() { settling_.disconnect(); }

void HeadingFields::build(Part part, const std::string& name) {
    Field& entry = fields_[static_cast<std::size_t>(part)];
    entry.text = makeStageText();
    Gtk::Text& text = *entry.text;
    setAccessibleLabel(text, name);
    text.set_name(name);
    // Typing is undone through the document, not by the field.
    text.set_enable_undo(false);
    text.set_propagate_text_width(false);
    entry.look = std::make_unique<StageFieldLook>(text);
    text.signal_changed().connect([this, part] { typed(part); });
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [this, part](guint key, guint, Gdk::ModifierType) {
            if (key == GDK_KEY_Escape) {
                leave();
                return true;
            }
            if (key != GDK_KEY_Return && key != GDK_KEY_KP_Enter) return false;
            // Return: from the eyebrow to the title, from the title and the
            // subtitle on to the body where there is one.
            if (part == Part::eyebrow) {
                field(Part::title).grab_focus();
            } else {
                bodyWanted_.emit();
            }
            return true;
        },
        false);
    text.add_controller(keys);
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_enter().connect([this, part] {
        fields_[static_cast<std::size_t>(part)].focused = true;
        fields_[static_cast<std::size_t>(part)].look->setShown(true);
        settleFocus();
    });
    focus->signal_leave().connect([this, part] {
        Field& left = fields_[static_cast<std::size_t>(part)];
        left.focused = false;
        left.look->setShown(false);
        left.text->select_region(0, 0);
        settleFocus();
    });
    text.add_controller(focus);
}

void HeadingFields::settleFocus() {
    // Moving from one field to the next leaves one before it enters the
    // other: react once, when the focus has landed.
    if (settling_.connected()) return;
    settling_ = Glib::signal_idle().connect([this] {
        focusChanged_.emit();
        return false;
    });
}

void HeadingFields::typed(Part part) {
    if (syncing_) return;
    const Slide* slide = editor_.currentSlide();
    if (!slide) return;
    std::string typed = field(part).get_text();
    if (textOf(*slide, part) == typed) return;
    editor_.editCurrentSlide(
        _("Typing"), [part, typed](Slide& changed) { textOf(changed, part) = typed; },
        mergeName(part) + slide->id.string());
}

void HeadingFields::leave() {
    if (auto* root = fields_[0].text->get_root()) root->unset_focus();
}

void HeadingFields::update(bool editing, const SlideGeometry& geometry, const Rect& slideArea) {
    const Slide* slide = editor_.currentSlide();
    const double scale = slideArea.width / SlidePainter::designWidth;
    for (Part part : {Part::eyebrow, Part::title, Part::subtitle}) {
        Field& entry = fields_[static_cast<std::size_t>(part)];
        const auto& box = boxOf(geometry, part);
        const bool shown = editing && slide && box && scale > 0;
        if (!shown) {
            if (entry.focused) leave();
            entry.text->set_visible(false);
            entry.place.reset();
            continue;
        }
        const std::string& stored = textOf(*slide, part);
        if (std::string(entry.text->get_text()) != stored) {
            syncing_ = true;
            int caret = entry.text->get_position();
            entry.text->set_text(stored);
            entry.text->set_position(std::min(caret, static_cast<int>(entry.text->get_text_length())));
            syncing_ = false;
        }
        entry.text->set_placeholder_text(box->placeholder);
        entry.text->set_alignment(box->look.align == TextAlign::centre ? 0.5f : 0.0f);
        entry.look->apply(box->look, scale);
        entry.place = toView(box->rect, slideArea);
        entry.text->set_visible(true);
    }
}

std::optional<Gdk::Rectangle> HeadingFields::placeOf(const Gtk::Widget* widget) const {
    for (const auto& field : fields_) {
        if (field.text == widget) return field.place;
    }
    return std::nullopt;
}

void HeadingFields::hide(SlidePaintOptions::Hidden& hidden) const {
    hidden.eyebrow = fields_[0].focused;
    hidden.title = fields_[1].focused;
    hidden.subtitle = fields_[2].focused;
}

bool HeadingFields::focused() const {
    return fields_[0].focused || fields_[1].focused || fields_[2].focused;
}

}  // namespace lectern
