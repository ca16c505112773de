#include "editor/platform/new_slide_picker.h"

#include <glib/gi18n.h>
#include "base/platform/accessible.h"

#include "editor/navigator_rules.h"
#include "slides/platform/slide_thumbnail.h"

namespace lectern {

namespace {

constexpr int pictureWidth = 72;

// A sample of the layout for its picture: its name as the title, so that
// every picture shows where that layout puts the title.
Slide sampleSlide(const LayoutChoice& choice) {
    Slide slide = Slide::make(choice.layout);
    slide.title = choice.name;
    return slide;
}

}  // namespace

Gtk::Box* layoutChoiceTexts(const LayoutChoice& choice, bool wrap) {
    auto* name = Gtk::make_managed<Gtk::Label>(choice.name);
    name->add_css_class("heading");
    name->set_xalign(0);
    auto* description = Gtk::make_managed<Gtk::Label>(choice.description);
    description->add_css_class("caption");
    description->add_css_class("dim-label");
    description->set_xalign(0);
    description->set_wrap(wrap);
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
    texts->set_valign(Gtk::Align::CENTER);
    texts->append(*name);
    texts->append(*description);
    return texts;
}


NewSlidePicker::NewSlidePicker(std::function<void(SlideLayout)> chosen) : chosen_(std::move(chosen)) {
    add_css_class("new-slide-picker");
    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    auto* heading = Gtk::make_managed<Gtk::Label>(_("Choose layout for new slide"));
    heading->add_css_class("heading");
    heading->set_xalign(0);
    heading->set_margin_start(6);
    heading->set_margin_top(4);
    box->append(*heading);

    layouts_.set_selection_mode(Gtk::SelectionMode::NONE);
    layouts_.add_css_class("navigation-sidebar");
    setAccessibleLabel(layouts_, _("Choose layout for new slide"));
    for (const auto& choice : layoutChoices()) {
        auto* picture = Gtk::make_managed<SlideThumbnail>(pictureWidth);
        picture->set_valign(Gtk::Align::CENTER);
        pictures_.push_back(picture);

        auto* texts = layoutChoiceTexts(choice, false);

        auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
        line->set_margin(4);
        line->append(*picture);
        line->append(*texts);
        auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
        row->set_child(*line);
        setAccessibleLabel(*row, choice.name + ": " + choice.description);
        layouts_.append(*row);
    }
    layouts_.signal_row_activated().connect([this](Gtk::ListBoxRow* row) {
        auto index = static_cast<std::size_t>(row->get_index());
        if (index >= layoutChoices().size()) return;
        SlideLayout layout = layoutChoices()[index].layout;
        popdown();
        chosen_(layout);
    });
    box->append(layouts_);
    set_child(*box);
    signal_show().connect([this] {
        if (auto* first = layouts_.get_row_at_index(0)) first->grab_focus();
    });
}

void NewSlidePicker::setLook(const SlidePaintOptions& options) {
    const auto& choices = layoutChoices();
    for (std::size_t i = 0; i < pictures_.size() && i < choices.size(); ++i) {
        Slide sample = sampleSlide(choices[i]);
        pictures_[i]->setSlide(&sample, options);
    }
}

}  // namespace lectern
