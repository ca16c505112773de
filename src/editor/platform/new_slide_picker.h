#pragma once

#include <gtkmm.h>

#include <functional>
#include <vector>

#include "model/deck_enums.h"
#include "slides/slide_painter.h"

namespace lectern {

class SlideThumbnail;
struct LayoutChoice;

// A layout's name over its one-line description, as both layout pickers
// list them; `wrap`: the description wraps in a narrow column.
Gtk::Box* layoutChoiceTexts(const LayoutChoice& choice, bool wrap);

// The popover of the "New slide" button, titled "Choose layout for new
// slide": one row per layout with a small picture of a slide in it, its name
// and what it is for. Choosing a row closes the popover and hands the layout
// on.
class NewSlidePicker : public Gtk::Popover {
public:
    explicit NewSlidePicker(std::function<void(SlideLayout)> chosen);

    // Draws the pictures in the deck's look; call when the popover opens.
    void setLook(const SlidePaintOptions& options);

private:
    std::function<void(SlideLayout)> chosen_;
    Gtk::ListBox layouts_;
    std::vector<SlideThumbnail*> pictures_;
};

}  // namespace lectern
