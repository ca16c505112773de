#include "editor/platform/body_field.h"

#include <algorithm>

#include "editor/platform/body_editor.h"
#include "editor/platform/format_bar.h"
#include "editor/platform/stage_field.h"

namespace lectern {

namespace {

// Below this width of the body on screen the bar folds into "More formatting".
constexpr int compactBelow = 520;

}  // namespace

BodyField::BodyField(DeckEditor& editor, PreferencesStore& preferences) : editor_(editor), appPalette_(preferences) {
    body_ = Gtk::make_managed<BodyEditor>();
    bar_ = Gtk::make_managed<FormatBar>(*body_);
    bar_->add_css_class("toolbar");
    bar_->add_css_class("osd");
    bar_->set_visible(false);
    body_->set_opacity(0);
    editedConnection_ = body_->edited().connect([this](const AttributedText& text, const std::string& label, bool typing) {
        const Slide* slide = editor_.currentSlide();
        if (!slide || slide->body == text) return;
        editor_.editCurrentSlide(
            label, [text](Slide& changed) { changed.body = text; }, typing ? "body:" + slide->id.string() : std::string());
    });
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType) {
            // Escape hands the keyboard back to the window.
            if (key != GDK_KEY_Escape) return false;
            if (auto* root = body_->get_root()) root->unset_focus();
            return true;
        },
        false);
    body_->add_controller(keys);
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_enter().connect([this] { settle(); });
    focus->signal_leave().connect([this] { settle(); });
    body_->add_controller(focus);
    auto barFocus = Gtk::EventControllerFocus::create();
    barFocus->signal_leave().connect([this] { settle(); });
    bar_->add_controller(barFocus);
}

BodyField::~BodyField() { settling_.disconnect(); }

void BodyField::settle() {
    // The keyboard moves from the body into the bar's menus and back: decide
    // once it has landed whether the body is still being edited.
    if (settling_.connected()) return;
    settling_ = Glib::signal_idle().connect([this] {
        auto* root = body_->get_root();
        const Gtk::Widget* focus = root ? root->get_focus() : nullptr;
        bool active = focus && (isWithin(focus, *body_) || isWithin(focus, *bar_));
        body_->set_opacity(active ? 1 : 0);
        bar_->set_visible(active && bodyPlace_);
        if (active != active_) {
            active_ = active;
            activeChanged_.emit();
        }
        return false;
    });
}

void BodyField::focus() {
    body_->grab_focus();
    auto buffer = body_->get_buffer();
    buffer->place_cursor(buffer->end());
}

void BodyField::update(bool editing, const SlideGeometry& geometry, const Rect& slideArea, Theme theme) {
    const Slide* slide = editor_.currentSlide();
    const double scale = slideArea.width / SlidePainter::designWidth;
    if (!editing || !slide || !geometry.body || scale <= 0) {
        if (active_) {
            if (auto* root = body_->get_root()) root->unset_focus();
        }
        body_->set_visible(false);
        bar_->set_visible(false);
        bodyPlace_.reset();
        barPlace_.reset();
        return;
    }
    // The slide's body, unless it is only behind typing the editor has not
    // reported yet (a copy now would throw that typing away).
    if (!(body_->hasPendingEdits() && modelBody_ && slide->id == modelSlide_ && *modelBody_ == slide->body)) {
        body_->setBody(slide->body);
    }
    modelSlide_ = slide->id;
    modelBody_ = slide->body;
    LookKey look{theme, geometry.body->fit, scale, geometry.body->centreLeading};
    if (look != look_) {
        look_ = look;
        body_->setLook({ThemeStyle::of(theme), look.fit, look.scale, look.centreLeading});
    }
    bodyPlace_ = toView(geometry.body->rect, slideArea);
    body_->set_visible(true);

    bar_->setCompact(bodyPlace_->get_width() < compactBelow);
    std::vector<std::string> deckHexes;
    for (const auto& swatch : editor_.deck().palette.swatches()) {
        if (swatch) deckHexes.push_back(*swatch);
    }
    if (deckHexes != deckHexes_ || appPalette_.hexes() != appHexes_) {
        deckHexes_ = deckHexes;
        appHexes_ = appPalette_.hexes();
        bar_->setPalettes(deckHexes_, appHexes_);
    }
    int minimum = 0, natural = 0, minBaseline = 0, natBaseline = 0;
    bar_->measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, minBaseline, natBaseline);
    int width = natural;
    bar_->measure(Gtk::Orientation::VERTICAL, width, minimum, natural, minBaseline, natBaseline);
    int height = natural;
    // The bar sits above the slide where the stage leaves room, so that it
    // covers nothing of it; else over the slide's top edge.
    int x = static_cast<int>(slideArea.x + std::max(0.0, (slideArea.width - width) / 2));
    int y = static_cast<int>(slideArea.y) - height - 6;
    if (y < 0) y = static_cast<int>(slideArea.y) + 6;
    barPlace_ = Gdk::Rectangle(x, y, width, height);
    bar_->set_visible(active_);
}

std::optional<Gdk::Rectangle> BodyField::placeOf(const Gtk::Widget* widget) const {
    if (widget == body_) return bodyPlace_;
    if (widget == bar_) return barPlace_;
    return std::nullopt;
}

}  // namespace lectern
