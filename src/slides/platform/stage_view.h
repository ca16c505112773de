#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <optional>
#include <string>

#include "slides/platform/reveal_animation.h"
#include "base/signal.h"
#include "model/slide.h"
#include "slides/slide_painter.h"

namespace lectern {

// The stage: the current slide with its reveal state, drawn by the slide
// painter. Steps not yet revealed keep their places, transparent and a few
// points lower, and fade in while rising when the reveal index grows; a
// click on a shown decision card asks for a jump to its target.
class StageView : public Gtk::DrawingArea {
public:
    static constexpr double frameMargin = 28;
    static constexpr double frameRadius = 10;

    StageView();
    ~StageView() override;

    // The slide to show (null: none) at a reveal index. The same slide at
    // another index animates; anything else is shown at once. `options`
    // carries the deck's theme, accent and title.
    void show(const Slide* slide, std::int64_t revealIndex, const SlidePaintOptions& options);
    // Framed: the editor's stage, the slide as a card with a margin around
    // it. Otherwise the slide fills the view (presenting).
    void setFramed(bool framed);
    bool framed() const { return framed_; }

    // Where the slide is drawn, in view coordinates.
    Rect slideArea() const { return slideArea(get_width(), get_height()); }
    // Where a web slide's live page goes, in view coordinates, with the
    // radius of its corners; none for other slides.
    struct WebArea {
        Rect rect;
        double radius = 0;
    };
    std::optional<WebArea> webArea() const;
    // The shown card of a decisions slide under a point of the view, as its
    // index in the slide's links.
    std::optional<std::size_t> cardAt(double x, double y) const;
    // Step appearances as drawn now (empty when the slide shows everything).
    std::vector<double> appearance() const;
    bool isAnimating() const { return tick_ != 0; }

    // A shown card with a target was clicked: the target's id text.
    Signal<const std::string&>& cardClicked() { return cardClicked_; }
    // Any shown card was clicked: its index in the slide's links.
    Signal<std::size_t>& cardChosen() { return cardChosen_; }
    // The card drawn as selected (the editor's), by its link id.
    void setSelectedCard(std::optional<Uuid> link);
    const std::optional<Uuid>& selectedCard() const { return selectedCard_; }
    // Emitted at the end of every draw of the stage.
    Signal<>& drawn() { return drawn_; }

private:
    Rect slideArea(double width, double height) const;
    void draw(const Cairo::RefPtr<Cairo::Context>& context, int width, int height);
    void drawSelectedCard(const Cairo::RefPtr<Cairo::Context>& cr, const Rect& area);
    void startTicking();
    static double monotonicSeconds();

    std::optional<Slide> slide_;
    SlidePaintOptions options_;
    RevealAnimation animation_;
    bool framed_ = true;
    guint tick_ = 0;
    std::optional<Uuid> selectedCard_;
    Signal<const std::string&> cardClicked_;
    Signal<std::size_t> cardChosen_;
    Signal<> drawn_;
};

}  // namespace lectern
