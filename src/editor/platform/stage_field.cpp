#include "editor/platform/stage_field.h"

#include <cmath>
#include <cstdio>

namespace lectern {

namespace {

std::string cssColour(const Color& colour) {
    char text[64];
    std::snprintf(text, sizeof text, "rgba(%d,%d,%d,%.3f)", static_cast<int>(std::lround(colour.red * 255)),
                  static_cast<int>(std::lround(colour.green * 255)), static_cast<int>(std::lround(colour.blue * 255)),
                  colour.alpha);
    return text;
}

int cssWeight(FontWeight weight) {
    switch (weight) {
        case FontWeight::medium: return 500;
        case FontWeight::semibold: return 600;
        case FontWeight::bold: return 700;
        case FontWeight::regular: break;
    }
    return 400;
}

}  // namespace

StageFieldLook::StageFieldLook(Gtk::Widget& field) : field_(field) {
    field_.add_css_class("stage-field");
    field_.get_style_context()->add_provider(css_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
    setShown(false);
}

void StageFieldLook::apply(const TextLook& look, double scale) {
    char size[32], tracking[32];
    std::snprintf(size, sizeof size, "%.2fpx", look.size * scale);
    std::snprintf(tracking, sizeof tracking, "%.2fpx", look.tracking * scale);
    std::string css = ".stage-field { font-family: " + fontFamily(look.design) + "; font-size: " + size +
                      "; font-weight: " + std::to_string(cssWeight(look.weight)) + "; color: " + cssColour(look.colour) +
                      "; caret-color: " + cssColour(look.colour) + "; letter-spacing: " + tracking +
                      "; text-transform: " + (look.uppercase ? "uppercase" : "none") +
                      "; background: none; border: none; box-shadow: none; outline: none; padding: 0; margin: 0;"
                      " min-height: 0; }";
    if (css == applied_) return;
    applied_ = css;
    css_->load_from_data(css);
}

void StageFieldLook::setShown(bool shown) { field_.set_opacity(shown ? 1.0 : 0.0); }

Gtk::Text* makeStageText() {
    auto* object = g_object_new(GTK_TYPE_TEXT, "accessible-role", GTK_ACCESSIBLE_ROLE_TEXT_BOX, nullptr);
    return Gtk::manage(Glib::wrap(GTK_TEXT(object)));
}

Gdk::Rectangle toView(const Rect& design, const Rect& slideArea) {
    const double scale = slideArea.width / SlidePainter::designWidth;
    const int x = static_cast<int>(std::floor(slideArea.x + design.x * scale));
    const int y = static_cast<int>(std::floor(slideArea.y + design.y * scale));
    const int right = static_cast<int>(std::ceil(slideArea.x + (design.x + design.width) * scale));
    const int bottom = static_cast<int>(std::ceil(slideArea.y + (design.y + design.height) * scale));
    return {x, y, std::max(1, right - x), std::max(1, bottom - y)};
}

bool isWithin(const Gtk::Widget* widget, const Gtk::Widget& ancestor) {
    for (; widget; widget = widget->get_parent()) {
        if (widget == &ancestor) return true;
    }
    return false;
}

}  // namespace lectern
