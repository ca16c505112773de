#include "slides/platform/stage_view.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>

#include "model/theme_style.h"
#include "slides/decision_cards.h"

namespace lectern {

namespace {

void roundedRectangle(const Cairo::RefPtr<Cairo::Context>& cr, const Rect& r, double radius) {
    cr->begin_new_sub_path();
    cr->arc(r.x + r.width - radius, r.y + radius, radius, -M_PI / 2, 0);
    cr->arc(r.x + r.width - radius, r.y + r.height - radius, radius, 0, M_PI / 2);
    cr->arc(r.x + radius, r.y + r.height - radius, radius, M_PI / 2, M_PI);
    cr->arc(r.x + radius, r.y + radius, radius, M_PI, 3 * M_PI / 2);
    cr->close_path();
}

}  // namespace

StageView::StageView() {
    set_hexpand(true);
    set_vexpand(true);
    // The stage holds the keyboard focus while nothing else wants it, so no
    // header button shows a focus ring during a talk.
    set_focusable(true);
    add_css_class("stage");
    set_draw_func(sigc::mem_fun(*this, &StageView::draw));

    auto click = Gtk::GestureClick::create();
    click->set_button(GDK_BUTTON_PRIMARY);
    click->signal_released().connect([this](int presses, double x, double y) {
        if (presses != 1 || !slide_) return;
        if (auto card = cardAt(x, y)) {
            cardChosen_.emit(*card);
            const std::string target = slide_->links[*card].targetId;
            if (!target.empty()) cardClicked_.emit(target);
        }
    });
    add_controller(click);

    // A pointing hand over cards that lead somewhere.
    auto motion = Gtk::EventControllerMotion::create();
    motion->signal_motion().connect([this](double x, double y) {
        auto card = cardAt(x, y);
        bool leads = card && !slide_->links[*card].targetId.empty();
        set_cursor(leads ? "pointer" : "");
    });
    add_controller(motion);
}

StageView::~StageView() {
    if (tick_) remove_tick_callback(tick_);
}

void StageView::show(const Slide* slide, std::int64_t revealIndex, const SlidePaintOptions& options) {
    bool sameSlide = slide && slide_ && slide->id == slide_->id;
    options_ = options;
    options_.reveal = slide ? RevealState{slide->reveal, revealIndex} : RevealState{};
    auto targets = slide ? RevealAnimation::targets(*slide, revealIndex) : std::vector<double>{};
    if (sameSlide) {
        animation_.retarget(targets, monotonicSeconds());
    } else {
        animation_.reset(targets);
    }
    if (slide) slide_ = *slide; else slide_.reset();
    if (animation_.isRunning(monotonicSeconds())) startTicking();
    queue_draw();
}

void StageView::setSelectedCard(std::optional<Uuid> link) {
    if (selectedCard_ == link) return;
    selectedCard_ = std::move(link);
    queue_draw();
}

void StageView::setFramed(bool framed) {
    if (framed_ == framed) return;
    framed_ = framed;
    queue_draw();
}

Rect StageView::slideArea(double width, double height) const {
    if (!framed_) return {0, 0, width, height};
    double availableWidth = std::max(width - 2 * frameMargin, 1.0);
    double availableHeight = std::max(height - 2 * frameMargin, 1.0);
    double ratio = SlidePainter::designWidth / SlidePainter::designHeight;
    double w = std::min(availableWidth, availableHeight * ratio);
    double h = w / ratio;
    return {std::round((width - w) / 2), std::round((height - h) / 2), std::round(w), std::round(h)};
}

std::optional<std::size_t> StageView::cardAt(double x, double y) const {
    if (!slide_ || slide_->layout != SlideLayout::decisions) return std::nullopt;
    Rect area = slideArea();
    auto fit = SlidePainter::fit(area.width, area.height);
    if (fit.scale <= 0) return std::nullopt;
    double px = (x - area.x - fit.offsetX) / fit.scale;
    double py = (y - area.y - fit.offsetY) / fit.scale;
    auto geometry = SlidePainter::geometry(*slide_, options_);
    for (const auto& [id, rect] : geometry.cards) {
        if (!rect.contains(px, py)) continue;
        for (std::size_t k = 0; k < slide_->links.size(); ++k) {
            if (slide_->links[k].id != id) continue;
            // A card that has not appeared yet cannot be chosen.
            if (!DecisionCards::isRevealed(k, options_.reveal)) return std::nullopt;
            return k;
        }
    }
    return std::nullopt;
}

std::optional<StageView::WebArea> StageView::webArea() const {
    if (!slide_ || slide_->layout != SlideLayout::web) return std::nullopt;
    auto geometry = SlidePainter::geometry(*slide_, options_);
    if (!geometry.mediaArea) return std::nullopt;
    Rect area = slideArea();
    auto fit = SlidePainter::fit(area.width, area.height);
    const Rect& media = *geometry.mediaArea;
    Rect rect{std::round(area.x + fit.offsetX + media.x * fit.scale), std::round(area.y + fit.offsetY + media.y * fit.scale),
              std::round(media.width * fit.scale), std::round(media.height * fit.scale)};
    return WebArea{rect, geometry.mediaRadius * fit.scale};
}

std::vector<double> StageView::appearance() const { return animation_.values(monotonicSeconds()); }

void StageView::draw(const Cairo::RefPtr<Cairo::Context>& cr, int width, int height) {
    Rect area = slideArea(width, height);
    if (framed_) {
        // A soft shadow under the slide card.
        for (int i = 6; i >= 1; --i) {
            Rect spread{area.x - i, area.y - i + 2, area.width + 2 * i, area.height + 2 * i};
            roundedRectangle(cr, spread, frameRadius + i);
            cr->set_source_rgba(0, 0, 0, 0.035);
            cr->fill();
        }
        roundedRectangle(cr, area, frameRadius);
        cr->clip();
    }
    cr->save();
    cr->translate(area.x, area.y);
    if (slide_) {
        SlidePaintOptions options = options_;
        options.stepAppearance = animation_.values(monotonicSeconds());
        SlidePainter::paint(cr->cobj(), *slide_, options, area.width, area.height);
        drawSelectedCard(cr, area);
    } else {
        // No slide at the current index (an empty deck).
        ThemeStyle style = ThemeStyle::of(options_.theme);
        const Color& bg = style.stageBackground;
        cr->set_source_rgb(bg.red, bg.green, bg.blue);
        cr->paint();
        auto layout = create_pango_layout(_("No slide selected"));
        Pango::FontDescription font("Sans");
        font.set_absolute_size(std::max(area.height / 24, 10.0) * PANGO_SCALE);
        layout->set_font_description(font);
        int textWidth = 0, textHeight = 0;
        layout->get_pixel_size(textWidth, textHeight);
        const Color& muted = style.mutedText;
        cr->set_source_rgb(muted.red, muted.green, muted.blue);
        cr->move_to((area.width - textWidth) / 2, (area.height - textHeight) / 2);
        layout->show_in_cairo_context(cr);
    }
    cr->restore();
    drawn_.emit();
}

void StageView::drawSelectedCard(const Cairo::RefPtr<Cairo::Context>& cr, const Rect& area) {
    if (!selectedCard_ || !slide_ || slide_->layout != SlideLayout::decisions) return;
    auto fit = SlidePainter::fit(area.width, area.height);
    for (const auto& [id, rect] : SlidePainter::geometry(*slide_, options_).cards) {
        if (id != *selectedCard_) continue;
        // A ring in the system's selection colour, just outside the card.
        Rect ring{fit.offsetX + rect.x * fit.scale - 3, fit.offsetY + rect.y * fit.scale - 3,
                  rect.width * fit.scale + 6, rect.height * fit.scale + 6};
        roundedRectangle(cr, ring, 10);
        cr->set_source_rgb(0.21, 0.52, 0.89);
        cr->set_line_width(3);
        cr->stroke();
    }
}

void StageView::startTicking() {
    if (tick_) return;
    tick_ = add_tick_callback([this](const Glib::RefPtr<Gdk::FrameClock>&) {
        queue_draw();
        if (animation_.isRunning(monotonicSeconds())) return true;
        tick_ = 0;
        return false;
    });
}

double StageView::monotonicSeconds() { return static_cast<double>(g_get_monotonic_time()) / 1e6; }

}  // namespace lectern
