#include "editor/platform/layout_picker.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "editor/navigator_rules.h"
#include "editor/platform/new_slide_picker.h"
#include "slides/platform/slide_thumbnail.h"

namespace lectern {

namespace {

constexpr int layoutPictureWidth = 64;
constexpr int positionPictureWidth = 44;

bool sameLook(const SlidePaintOptions& a, const SlidePaintOptions& b) {
    return a.theme == b.theme && a.deckAccentHex == b.deckAccentHex && a.deckTitle == b.deckTitle;
}

const LayoutChoice& choiceOf(SlideLayout layout) {
    for (const auto& choice : layoutChoices()) {
        if (choice.layout == layout) return choice;
    }
    return layoutChoices().front();
}

// A picture of the layout (in a position): a sample slide titled with the
// layout's name, so every picture shows where that layout puts the title.
Gtk::Widget* layoutThumbnail(SlideLayout layout, SlidePosition position, int width, const SlidePaintOptions& look) {
    Slide sample = Slide::make(layout);
    sample.title = choiceOf(layout).name;
    sample.position = position;
    auto* picture = Gtk::make_managed<SlideThumbnail>(width);
    picture->setSlide(&sample, look);
    // Framed: a light slide on a light column would have no edge.
    auto* frame = Gtk::make_managed<Gtk::Frame>();
    frame->set_child(*picture);
    frame->set_valign(Gtk::Align::CENTER);
    frame->set_can_target(false);
    return frame;
}

// A toggle that shows whether its row is the slide's and, when pressed,
// hands the row's change on; the button itself keeps showing the slide's
// state until the deck says otherwise.
Gtk::ToggleButton* choiceButton(bool selected, std::function<void()> choose) {
    auto* button = Gtk::make_managed<Gtk::ToggleButton>();
    button->set_active(selected);
    button->set_has_frame(false);
    button->signal_toggled().connect([button, selected, choose = std::move(choose)] {
        if (button->get_active() == selected) return;  // our own reset below
        button->set_active(selected);
        choose();
    });
    return button;
}

}  // namespace

LayoutPicker::LayoutPicker(std::function<void(const LayoutChange&)> chosen)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 2), chosen_(std::move(chosen)) {
    add_css_class("layout-picker");
    setAccessibleLabel(*this, _("Layout"));
}

void LayoutPicker::show(const Slide& slide, const SlidePaintOptions& look) {
    state_.showSlide(slide);
    Slide shown = Slide::make(slide.layout);  // only what the rows depend on
    shown.id = slide.id;
    shown.position = slide.position;
    slide_ = shown;
    auto rows = state_.rows(slide);
    if (rows == rows_ && look_ && sameLook(*look_, look)) return;
    rows_ = std::move(rows);
    look_ = look;
    rebuild(look);
}

void LayoutPicker::rebuild(const SlidePaintOptions& look) {
    while (auto* child = get_first_child()) remove(*child);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const LayoutPickerRow& row = rows_[i];
        append(*layoutRow(row, look));
        if (!row.isExpanded) continue;
        std::vector<LayoutPickerRow> options;
        while (i + 1 < rows_.size() && rows_[i + 1].position) options.push_back(rows_[++i]);
        append(*positionRow(options, look));
    }
}

Gtk::Widget* LayoutPicker::layoutRow(const LayoutPickerRow& row, const SlidePaintOptions& look) {
    const LayoutChoice& choice = choiceOf(row.layout);
    auto* texts = layoutChoiceTexts(choice, true);

    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 10);
    content->append(*layoutThumbnail(row.layout, SlidePosition::full, layoutPictureWidth, look));
    content->append(*texts);

    LayoutChange change = row.action;
    auto* button = choiceButton(row.isSelected, [this, change] {
        state_.chose(change.layout);
        chosen_(change);
    });
    button->set_child(*content);
    button->set_hexpand(true);
    setAccessibleLabel(*button, choice.name + ": " + choice.description);

    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 2);
    line->add_css_class("layout-picker-row");
    if (row.isSelected) line->add_css_class("selected");
    line->append(*button);
    if (row.showsChevron) {
        auto* chevron = Gtk::make_managed<Gtk::Button>();
        chevron->set_icon_name(row.isExpanded ? "pan-down-symbolic" : "pan-end-symbolic");
        chevron->set_has_frame(false);
        chevron->set_valign(Gtk::Align::CENTER);
        setAccessibleLabel(*chevron, (row.isExpanded ? _("Hide positions of ") : _("Show positions of ")) + choice.name);
        chevron->set_tooltip_text(row.isExpanded ? _("Hide positions") : _("Show positions"));
        SlideLayout layout = row.layout;
        chevron->signal_clicked().connect([this, layout] {
            state_.toggle(layout);
            // Rebuilt after the click has finished with its button.
            Glib::signal_idle().connect_once([this] {
                if (slide_ && look_) {
                    rows_ = state_.rows(*slide_);
                    rebuild(*look_);
                }
            });
        });
        line->append(*chevron);
    }
    return line;
}

Gtk::Widget* LayoutPicker::positionRow(const std::vector<LayoutPickerRow>& options, const SlidePaintOptions& look) {
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 2);
    line->add_css_class("layout-picker-positions");
    line->set_margin_start(layoutPictureWidth / 2);
    line->set_margin_bottom(4);
    line->set_homogeneous(true);
    if (!options.empty()) setAccessibleLabel(*line, _("Positions of ") + choiceOf(options.front().layout).name);
    for (const auto& option : options) {
        LayoutChange change = option.action;
        auto* button = choiceButton(option.isSelected, [this, change] { chosen_(change); });
        button->set_child(*layoutThumbnail(option.layout, *option.position, positionPictureWidth, look));
        std::string name = positionName(*option.position);
        setAccessibleLabel(*button, name);
        button->set_tooltip_text(name);
        line->append(*button);
    }
    return line;
}

}  // namespace lectern
