#pragma once

#include <gtkmm.h>

#include <optional>

#include "model/slide.h"
#include "slides/slide_painter.h"

namespace lectern {

// A small picture of a slide with everything revealed, as the overview grid
// and the presenter panel show it; rounded, and always as tall as its width
// asks for at 16:9, however wide it is laid out.
class SlideThumbnail : public Gtk::DrawingArea {
public:
    // `width` is the natural width; it may shrink to half of it.
    explicit SlideThumbnail(int width);
    ~SlideThumbnail() override;

    void setSlide(const Slide* slide, const SlidePaintOptions& options);

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural, int& minimumBaseline,
                       int& naturalBaseline) const override;

private:
    void draw(const Cairo::RefPtr<Cairo::Context>& context, int width, int height);

    std::optional<Slide> slide_;
    sigc::connection redraw_;
    SlidePaintOptions options_;
    int naturalWidth_;
};

}  // namespace lectern
