#include "editor/platform/stage_editing.h"

#include "editor/platform/body_editor.h"
#include "editor/platform/body_field.h"
#include "editor/platform/format_bar.h"
#include "editor/platform/heading_fields.h"
#include "slides/platform/stage_view.h"
// [components] includes
#include "editor/platform/image_editing.h"
#include "editor/platform/card_editors.h"

namespace lectern {

StageEditing::StageEditing(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage, Worker& worker,
                           std::function<SlidePaintOptions()> baseOptions)
    : editor_(editor), overlay_(overlay), stage_(stage), baseOptions_(std::move(baseOptions)) {
    headings_ = std::make_unique<HeadingFields>(editor_);
    for (auto part : {HeadingFields::Part::eyebrow, HeadingFields::Part::title, HeadingFields::Part::subtitle}) {
        overlay_.add_overlay(headings_->field(part));
    }
    headingFocusConnection_ = headings_->focusChanged().connect([this] { looksChanged_.emit(); });
    body_ = std::make_unique<BodyField>(editor_, editor_.preferences());
    overlay_.add_overlay(body_->editor());
    bodyActiveConnection_ = body_->activeChanged().connect([this] { looksChanged_.emit(); });
    bodyWantedConnection_ = headings_->bodyWanted().connect([this] {
        if (body_->editor().get_visible()) {
            body_->focus();
        } else if (auto* root = stage_.get_root()) {
            root->unset_focus();
        }
    });
    // [components] construction
    images_ = std::make_unique<ImageEditing>(editor_, overlay_, stage_, worker, [this] { return paintOptions(); });
    cards_ = std::make_unique<CardEditors>(editor_, overlay_, stage_, [this] { return paintOptions(); });
    cardLooksConnection_ = cards_->looksChanged().connect([this] { looksChanged_.emit(); });
    // The format bar over everything else on the slide.
    overlay_.add_overlay(body_->bar());
    overlay_.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& allocation) {
            bool heading = true;
            auto place = headings_->placeOf(child);
            if (!place) {
                place = body_->placeOf(child);
                heading = false;
            }
            if (!place) return false;
            // A field is never smaller than it needs: a heading line grows
            // around its middle, the body downwards.
            int minimum = 0, natural = 0, minBaseline = 0, natBaseline = 0;
            child->measure(Gtk::Orientation::VERTICAL, place->get_width(), minimum, natural, minBaseline, natBaseline);
            allocation = *place;
            if (allocation.get_height() < minimum) {
                if (heading) allocation.set_y(allocation.get_y() - (minimum - allocation.get_height()) / 2);
                allocation.set_height(minimum);
            }
            return true;
        },
        false);
    stage_.signal_resize().connect([this](int, int) {
        // The fields follow the slide's new scale after this allocation.
        if (resized_.connected()) return;
        resized_ = Glib::signal_idle().connect([this] {
            update(editing_);
            return false;
        });
    });
}

StageEditing::~StageEditing() { resized_.disconnect(); }

SlidePaintOptions StageEditing::paintOptions() const {
    SlidePaintOptions options = baseOptions_();
    if (!editing_) return options;
    options.editing = true;
    headings_->hide(options.hidden);
    options.showEmptySubtitle = headings_->focused();
    options.hidden.body = body_->active();
    // [components] paint options
    options.hidden.cardText = cards_->editingCard();
    if (const auto& drag = cards_->drag()) options.cardDrag = SlidePaintOptions::CardDrag{drag->id, drag->dx, drag->dy, drag->target};
    return options;
}

void StageEditing::update(bool editing) {
    editing_ = editing;
    const Slide* slide = editor_.currentSlide();
    SlideGeometry geometry;
    if (editing && slide) geometry = SlidePainter::geometry(*slide, paintOptions());
    headings_->update(editing, geometry, stage_.slideArea());
    body_->update(editing, geometry, stage_.slideArea(), baseOptions_().theme);
    // [components] update
    images_->update(editing);
    cards_->update(editing);
    overlay_.queue_allocate();
}

}  // namespace lectern
