#pragma once

#include <gtkmm.h>

namespace lectern {

// Lays out the presenter display's current slide and the one that comes
// next: the current one as large as the space allows, the next one at
// `nextScale` of its width, beside it or, when that leaves the current one
// larger (a tall display), below it. It asks for the height that layout
// takes within a share of the window's height. Each child is a column whose height
// follows its width (a 16:9 picture with a title and a caption).
class PresenterSlides : public Gtk::Widget {
public:
    static constexpr double nextScale = 0.55;
    static constexpr int gap = 12;
    // The part of the window's height the slides ask for.
    static constexpr double heightShare = 0.55;

    // Takes both columns as its children.
    PresenterSlides(Gtk::Widget& current, Gtk::Widget& next);
    ~PresenterSlides() override;

    // Whether the last layout put the next slide below the current one.
    bool stacked() const { return stacked_; }
    // The current slide's column width in the last layout.
    int currentWidth() const { return currentWidth_; }

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural, int& minimumBaseline,
                       int& naturalBaseline) const override;
    void size_allocate_vfunc(int width, int height, int baseline) override;

private:
    struct Fit {
        int width = 0;  // of the current slide's column
        bool stacked = false;
    };
    void releaseChildren();
    int rootHeight() const;
    int usedHeight(Fit chosen) const;
    int columnHeight(Gtk::Widget& column, int width) const;
    int minimumWidth(Gtk::Widget& column) const;
    int nextWidth(int currentWidth) const;
    // The widest current column that fits `width` × `height` either way.
    Fit fit(int width, int height) const;

    Gtk::Widget& current_;
    Gtk::Widget& next_;
    bool released_ = false;
    mutable int measuredRootHeight_ = 0;
    sigc::connection remeasure_;
    bool stacked_ = false;
    int currentWidth_ = 0;
};

}  // namespace lectern
