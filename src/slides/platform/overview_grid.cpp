#include "slides/platform/overview_grid.h"

#include <glib/gi18n.h>

#include <cstdio>

#include "slides/platform/slide_thumbnail.h"

namespace lectern {

namespace {

constexpr int tileWidth = 240;

Gtk::FlowBoxChild* makeTile(std::size_t index, const Slide& slide, const SlidePaintOptions& options) {
    auto* thumbnail = Gtk::make_managed<SlideThumbnail>(tileWidth);
    thumbnail->setSlide(&slide, options);

    auto* picture = Gtk::make_managed<Gtk::Overlay>();
    picture->add_css_class("tile-picture");
    picture->set_child(*thumbnail);
    if (slide.layout == SlideLayout::web) {
        auto* live = Gtk::make_managed<Gtk::Label>(_("LIVE"));
        live->add_css_class("live-badge");
        live->set_halign(Gtk::Align::END);
        live->set_valign(Gtk::Align::START);
        live->set_margin(8);
        picture->add_overlay(*live);
    }
    if (slide.isSkipped) {
        auto* skipped = Gtk::make_managed<Gtk::Image>();
        skipped->set_from_icon_name("view-conceal-symbolic");
        skipped->add_css_class("skipped-mark");
        skipped->set_tooltip_text(_("Skipped in presentation"));
        skipped->set_halign(Gtk::Align::START);
        skipped->set_valign(Gtk::Align::START);
        skipped->set_margin(8);
        picture->add_overlay(*skipped);
    }

    auto* number = Gtk::make_managed<Gtk::Label>(OverviewGrid::tileNumber(index));
    number->add_css_class("tile-number");
    number->add_css_class("numeric");
    auto* title = Gtk::make_managed<Gtk::Label>(slide.title.empty() ? _("Untitled slide") : slide.title);
    title->set_ellipsize(Pango::EllipsizeMode::END);
    title->set_xalign(0);
    title->set_hexpand(true);
    if (slide.title.empty()) title->add_css_class("dim-label");
    auto* caption = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
    caption->append(*number);
    caption->append(*title);

    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 8);
    box->append(*picture);
    box->append(*caption);

    auto* child = Gtk::make_managed<Gtk::FlowBoxChild>();
    child->add_css_class("overview-tile");
    if (slide.isSkipped) child->add_css_class("skipped");
    child->set_child(*box);
    child->set_tooltip_text(slide.title.empty() ? _("Untitled slide") : slide.title);
    return child;
}

}  // namespace

OverviewGrid::OverviewGrid() {
    add_css_class("overview");
    set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    set_hexpand(true);
    set_vexpand(true);
    flow_.set_selection_mode(Gtk::SelectionMode::NONE);
    flow_.set_activate_on_single_click(true);
    flow_.set_homogeneous(true);
    flow_.set_min_children_per_line(2);
    flow_.set_max_children_per_line(8);
    flow_.set_column_spacing(24);
    flow_.set_row_spacing(24);
    flow_.set_margin(36);
    flow_.set_valign(Gtk::Align::START);
    flow_.signal_child_activated().connect(
        [this](Gtk::FlowBoxChild* child) { tileChosen_.emit(child->get_index()); });
    set_child(flow_);
    // Keyboard focus moving through the tiles scrolls them into view.
    flow_.set_vadjustment(get_vadjustment());
}

std::string OverviewGrid::tileNumber(std::size_t index) {
    char text[24];
    std::snprintf(text, sizeof text, "%02zu", index + 1);
    return text;
}

void OverviewGrid::setDeck(const Deck& deck, const SlidePaintOptions& options, const PageOf& pageOf) {
    for (auto* child : children_) flow_.remove(*child);
    children_.clear();
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        const Slide& slide = deck.slides[i];
        SlidePaintOptions look = options;
        if (pageOf) look.webPicture = pageOf(slide);
        auto* tile = makeTile(i, slide, look);
        flow_.append(*tile);
        children_.push_back(tile);
    }
    std::int64_t current = current_;
    current_ = -1;
    setCurrent(current);
}

void OverviewGrid::setCurrent(std::int64_t index) {
    if (current_ >= 0 && current_ < static_cast<std::int64_t>(children_.size())) {
        children_[static_cast<std::size_t>(current_)]->remove_css_class("current");
    }
    current_ = index;
    if (index < 0 || index >= static_cast<std::int64_t>(children_.size())) return;
    children_[static_cast<std::size_t>(index)]->add_css_class("current");
}

void OverviewGrid::focusCurrent() {
    if (current_ < 0 || current_ >= static_cast<std::int64_t>(children_.size())) return;
    children_[static_cast<std::size_t>(current_)]->grab_focus();
}

}  // namespace lectern
