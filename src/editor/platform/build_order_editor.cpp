#include "editor/platform/build_order_editor.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "base/platform/style.h"
#include "slides/body_layout.h"

namespace lectern {

namespace reveal_order {

void installStyle() {
    static constexpr const char* style = R"(
.reveal-order-help { font-size: smaller; }
.build-step { border: 1px solid alpha(currentColor, 0.15); border-radius: 8px; padding: 4px 4px 4px 8px; }
.build-step.drop-target { border-color: @accent_bg_color; background-color: alpha(@accent_bg_color, 0.15); }
.build-row, .card-order-row { padding: 2px 0; }
.build-gap { min-height: 10px; }
.build-gap.drop-target {
  background-image: linear-gradient(to bottom, transparent 4px, @accent_bg_color 4px,
                                    @accent_bg_color 6px, transparent 6px);
}
.card-order-row { border-radius: 6px; padding: 4px 8px; background-color: alpha(currentColor, 0.05); }
.card-order-row.drop-before { box-shadow: inset 0 2px @accent_bg_color; }
.card-order-row.drop-after { box-shadow: inset 0 -2px @accent_bg_color; }
)";
    installStyleOnce(style);
}

Glib::RefPtr<Gtk::DragSource> rowDragSource(Gtk::Widget& row, const char* content, std::function<void()> started,
                                            std::function<void()> ended) {
    auto source = Gtk::DragSource::create();
    source->set_actions(Gdk::DragAction::MOVE);
    source->signal_prepare().connect(
        [started = std::move(started), content](double, double) -> Glib::RefPtr<Gdk::ContentProvider> {
            started();
            Glib::Value<Glib::ustring> value;
            value.init(Glib::Value<Glib::ustring>::value_type());
            value.set(content);
            return Gdk::ContentProvider::create(value);
        },
        false);
    // The row's picture follows the pointer (the controller by pointer: a
    // handle in its own closure would keep it alive for ever).
    Gtk::DragSource* gesture = source.get();
    source->signal_drag_begin().connect([&row, gesture](const Glib::RefPtr<Gdk::Drag>&) {
        gesture->set_icon(Gtk::WidgetPaintable::create(row), 12, 12);
    });
    source->signal_drag_end().connect([ended = std::move(ended)](const Glib::RefPtr<Gdk::Drag>&, bool) { ended(); });
    return source;
}

std::string countText(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::optional<graphene_rect_t> boundsIn(Gtk::Widget& widget, Gtk::Widget& parent) {
    graphene_rect_t bounds;
    if (!widget.get_mapped() || !gtk_widget_compute_bounds(widget.gobj(), parent.gobj(), &bounds)) return std::nullopt;
    return bounds;
}

void assemble(Gtk::Box& section, Gtk::Expander& expander, Gtk::Label& help, const char* helpText, Gtk::Label& empty,
              const char* emptyText, Gtk::Widget& list) {
    help.set_text(helpText);
    empty.set_text(emptyText);
    for (Gtk::Label* label : {&help, &empty}) {
        label->set_wrap(true);
        label->set_xalign(0);
        label->add_css_class("dim-label");
        label->add_css_class("reveal-order-help");
    }
    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    content->set_margin_top(6);
    content->append(help);
    content->append(empty);
    content->append(list);
    expander.set_child(*content);
    section.append(expander);
}

void acceptRows(Gtk::Widget& list, std::function<Gdk::DragAction(double, double)> moved, std::function<void()> left,
                std::function<bool(double, double)> dropped) {
    auto target = Gtk::DropTarget::create(G_TYPE_STRING, Gdk::DragAction::MOVE);
    target->signal_enter().connect(moved, false);
    target->signal_motion().connect(moved, false);
    target->signal_leave().connect(std::move(left));
    target->signal_drop().connect(
        [dropped = std::move(dropped)](const Glib::ValueBase&, double x, double y) { return dropped(x, y); }, false);
    list.add_controller(target);
}

}  // namespace reveal_order

namespace {

constexpr const char* editLabel = N_("Change Build Order");
constexpr const char* dragContent = "lectern-build-order-row";

bool spans(const std::optional<graphene_rect_t>& bounds, double y) {
    return bounds && y >= bounds->origin.y && y < bounds->origin.y + bounds->size.height;
}

Gtk::Button* iconButton(const char* icon, const char* name) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    button->add_css_class("flat");
    button->set_valign(Gtk::Align::CENTER);
    button->set_tooltip_text(name);
    setAccessibleLabel(*button, name);
    return button;
}

}  // namespace

struct BuildOrderEditor::Row {
    Gtk::Box* box = nullptr;
    Gtk::Label* label = nullptr;
    Gtk::Button* breakButton = nullptr;
    BuildRowKey key;
    std::string text;
};

struct BuildOrderEditor::Step {
    Gtk::Box* box = nullptr;
    Gtk::Button* mergeButton = nullptr;
    std::size_t index = 0;
    std::vector<std::unique_ptr<Row>> rows;
};

BuildOrderEditor::BuildOrderEditor(DeckEditor& editor)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 6), editor_(editor) {
    reveal_order::installStyle();
    add_css_class("build-order-editor");

    auto* header = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* title = Gtk::make_managed<Gtk::Label>(_("Build Order"));
    title->add_css_class("heading");
    header->append(*title);
    count_.add_css_class("dim-label");
    count_.set_hexpand(true);
    count_.set_xalign(1);
    header->append(count_);
    expander_.set_label_widget(*header);
    expander_.set_expanded(true);
    setAccessibleLabel(expander_, _("Build Order"));

    reveal_order::assemble(*this, expander_, help_,
                           _("Tap and hold a row to drag it. Drop on a step to merge; drop in a gap between steps to "
                             "insert as a new step."),
                           empty_, _("Type content on the stage to build a reveal sequence."), stepsBox_);
    reveal_order::acceptRows(
        stepsBox_, [this](double x, double y) { return dragMoved(x, y); }, [this] { showDropSpot(std::nullopt); },
        [this](double x, double y) { return dropped(x, y); });
    gaps_.push_back(makeGap());

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange& change) {
        if (change.kind != DeckChange::Kind::saved) scheduleRefresh();
    });
    stateConnection_ = editor_.state().changed().connect([this](PresentationField field) {
        if (field == PresentationField::current) scheduleRefresh();
    });
    set_visible(false);
    showSteps({});
    refresh();
}

BuildOrderEditor::~BuildOrderEditor() { refreshIdle_.disconnect(); }

// Following the slide --------------------------------------------------

void BuildOrderEditor::scheduleRefresh() {
    // A burst of keys on the stage is one look at the slide, after it.
    if (refreshIdle_.connected()) return;
    refreshIdle_ = Glib::signal_idle().connect(
        [this] {
            refresh();
            return false;
        },
        Glib::PRIORITY_DEFAULT_IDLE);
}

void BuildOrderEditor::refresh() {
    refreshIdle_.disconnect();
    const Slide* slide = editor_.currentSlide();
    bool applies = slide && slide->reveal == RevealMode::reveal && slide->layout != SlideLayout::decisions;
    if (!applies) {
        if (shownApplies_ || get_visible()) set_visible(false);
        shownApplies_ = false;
        return;
    }
    auto units = revealUnits(slide->body);
    std::vector<std::vector<std::string>> texts;
    for (const auto& step : RevealPlan::normalized(units.size(), slide->revealPlan)) {
        auto& rows = texts.emplace_back();
        rows.reserve(step.size());
        for (std::int64_t unit : step) rows.push_back(units[static_cast<std::size_t>(unit)].text.string());
    }
    if (!shownApplies_) set_visible(true);
    shownApplies_ = true;
    if (texts == shown_) return;
    showSteps(texts);
    shown_ = std::move(texts);
}

void BuildOrderEditor::showSteps(const std::vector<std::vector<std::string>>& texts) {
    // Steps and rows are matched by position; only what differs changes.
    while (steps_.size() > texts.size()) {
        stepsBox_.remove(*steps_.back()->box);
        steps_.pop_back();
        stepsBox_.remove(*gaps_.back());
        gaps_.pop_back();
    }
    while (steps_.size() < texts.size()) {
        steps_.push_back(makeStep(steps_.size()));
        stepsBox_.append(*steps_.back()->box);
        gaps_.push_back(makeGap());
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        Step& step = *steps_[i];
        while (step.rows.size() > texts[i].size()) {
            step.box->remove(*step.rows.back()->box);
            step.rows.pop_back();
        }
        while (step.rows.size() < texts[i].size()) {
            step.rows.push_back(makeRow(step, step.rows.size()));
            step.box->append(*step.rows.back()->box);
        }
        bool canBreak = texts[i].size() > 1;
        for (std::size_t j = 0; j < texts[i].size(); ++j) {
            Row& row = *step.rows[j];
            if (row.text != texts[i][j]) setRowText(row, texts[i][j]);
            if (row.breakButton->get_visible() != canBreak) row.breakButton->set_visible(canBreak);
        }
    }

    bool any = !texts.empty();
    empty_.set_visible(!any);
    help_.set_visible(any);
    stepsBox_.set_visible(any);
    count_.set_visible(any);
    count_.set_text(reveal_order::countText(texts.size(), "step", "steps"));
}

std::unique_ptr<BuildOrderEditor::Step> BuildOrderEditor::makeStep(std::size_t index) {
    auto step = std::make_unique<Step>();
    step->index = index;
    step->box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 0);
    step->box->add_css_class("build-step");
    std::string name = _("Step ") + std::to_string(index + 1);
    setAccessibleLabel(*step->box, name);

    auto* header = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* title = Gtk::make_managed<Gtk::Label>(name);
    title->add_css_class("caption-heading");
    title->set_hexpand(true);
    title->set_xalign(0);
    header->append(*title);
    step->mergeButton = iconButton("go-up-symbolic", _("Merge with step above"));
    step->mergeButton->set_visible(index > 0);
    Step* raw = step.get();
    step->mergeButton->signal_clicked().connect([this, raw] {
        std::size_t at = raw->index;
        change([at](const Slide& slide) { return RevealPlan::mergeWithStepAbove(slide, at); });
    });
    header->append(*step->mergeButton);
    step->box->append(*header);
    return step;
}

std::unique_ptr<BuildOrderEditor::Row> BuildOrderEditor::makeRow(Step& step, std::size_t pos) {
    auto row = std::make_unique<Row>();
    row->key = BuildRowKey{step.index, pos};
    row->box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    row->box->add_css_class("build-row");
    row->box->set_focusable(false);
    auto* grip = Gtk::make_managed<Gtk::Image>();
    grip->set_from_icon_name("list-drag-handle-symbolic");
    grip->add_css_class("dim-label");
    row->box->append(*grip);
    row->label = Gtk::make_managed<Gtk::Label>();
    row->label->set_xalign(0);
    row->label->set_hexpand(true);
    row->label->set_ellipsize(Pango::EllipsizeMode::END);
    row->label->set_single_line_mode(true);
    row->box->append(*row->label);
    row->breakButton = iconButton("edit-cut-symbolic", _("Break into its own step"));
    row->breakButton->set_visible(false);
    Row* raw = row.get();
    row->breakButton->signal_clicked().connect([this, raw] {
        BuildRowKey key = raw->key;
        change([key](const Slide& slide) { return RevealPlan::breakIntoOwnStep(slide, key); });
    });
    row->box->append(*row->breakButton);

    row->box->add_controller(reveal_order::rowDragSource(
        *row->box, dragContent, [this, raw] { dragging_ = raw->key; },
        [this] {
            dragging_.reset();
            showDropSpot(std::nullopt);
        }));
    return row;
}

Gtk::Box* BuildOrderEditor::makeGap() {
    auto* gap = Gtk::make_managed<Gtk::Box>();
    gap->add_css_class("build-gap");
    gap->set_size_request(-1, 10);
    stepsBox_.append(*gap);
    return gap;
}

void BuildOrderEditor::setRowText(Row& row, const std::string& text) {
    row.text = text;
    // A line of the body is one row: tabs of list items read as spaces.
    std::string shown = text;
    for (char& c : shown) {
        if (c == '\t') c = ' ';
    }
    row.label->set_text(shown);
    setAccessibleLabel(*row.box, _("Step ") + std::to_string(row.key.step + 1) + ": " + shown);
}

// Changing the plan ----------------------------------------------------

void BuildOrderEditor::change(const std::function<RevealSteps(const Slide&)>& plan) {
    editor_.editCurrentSlide(_(editLabel), [&](Slide& slide) { slide.revealPlan = plan(slide); });
}

std::optional<BuildOrderEditor::DropSpot> BuildOrderEditor::spotAt(double, double y) {
    if (!dragging_ || steps_.empty()) return std::nullopt;
    std::optional<DropSpot> spot;
    for (std::size_t i = 0; i < steps_.size() && !spot; ++i) {
        if (spans(reveal_order::boundsIn(*steps_[i]->box, stepsBox_), y)) spot = DropSpot{DropSpot::Kind::step, i};
    }
    for (std::size_t i = 0; i < gaps_.size() && !spot; ++i) {
        if (spans(reveal_order::boundsIn(*gaps_[i], stepsBox_), y)) spot = DropSpot{DropSpot::Kind::gap, i};
    }
    if (!spot) {
        auto first = reveal_order::boundsIn(*steps_.front()->box, stepsBox_);
        bool above = first && y < first->origin.y;
        spot = DropSpot{DropSpot::Kind::gap, above ? 0 : steps_.size()};
    }
    // Spots that would leave the plan as it is are no drop: the row's own
    // step, and the gaps beside a step that holds only the row.
    std::size_t own = dragging_->step;
    if (own >= steps_.size()) return std::nullopt;
    if (spot->kind == DropSpot::Kind::step && spot->index == own) return std::nullopt;
    if (spot->kind == DropSpot::Kind::gap && steps_[own]->rows.size() == 1 &&
        (spot->index == own || spot->index == own + 1)) {
        return std::nullopt;
    }
    return spot;
}

void BuildOrderEditor::showDropSpot(const std::optional<DropSpot>& spot) {
    if (spot == dropSpot_) return;
    auto widgetOf = [this](const DropSpot& at) -> Gtk::Widget* {
        if (at.kind == DropSpot::Kind::step) return at.index < steps_.size() ? steps_[at.index]->box : nullptr;
        return at.index < gaps_.size() ? gaps_[at.index] : nullptr;
    };
    if (dropSpot_) {
        if (auto* widget = widgetOf(*dropSpot_)) widget->remove_css_class("drop-target");
    }
    dropSpot_ = spot;
    if (dropSpot_) {
        if (auto* widget = widgetOf(*dropSpot_)) widget->add_css_class("drop-target");
    }
}

Gdk::DragAction BuildOrderEditor::dragMoved(double x, double y) {
    // Only rows of this list are taken; anything else dragged in is refused.
    auto spot = spotAt(x, y);
    showDropSpot(spot);
    return spot ? Gdk::DragAction::MOVE : Gdk::DragAction(0);
}

bool BuildOrderEditor::dropped(double x, double y) {
    auto spot = spotAt(x, y);
    auto row = dragging_;
    showDropSpot(std::nullopt);
    dragging_.reset();
    if (!spot || !row) return false;
    if (spot->kind == DropSpot::Kind::step) {
        change([&](const Slide& slide) { return RevealPlan::dropRowOnStep(slide, *row, spot->index); });
    } else {
        change([&](const Slide& slide) { return RevealPlan::dropRowInGap(slide, *row, spot->index); });
    }
    return true;
}

}  // namespace lectern
