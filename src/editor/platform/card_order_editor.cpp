#include "editor/platform/card_order_editor.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "editor/platform/build_order_editor.h"

namespace lectern {

namespace {

constexpr const char* editLabel = N_("Change Build Order");
constexpr const char* dragContent = "lectern-card-order-row";

const Slide* cardsSlide(const Slide* slide) {
    return slide && slide->layout == SlideLayout::decisions && slide->reveal == RevealMode::reveal ? slide : nullptr;
}

std::vector<Uuid> idsOf(const std::vector<SlideLink>& links) {
    std::vector<Uuid> ids;
    for (const auto& link : links) ids.push_back(link.id);
    return ids;
}

}  // namespace

struct CardOrderEditor::Row {
    Gtk::Box* box = nullptr;
    Gtk::Label* label = nullptr;
    std::size_t index = 0;
    Uuid id;
    std::optional<std::string> text;  // as shown; none before the first
};

CardOrderEditor::CardOrderEditor(DeckEditor& editor) : Gtk::Box(Gtk::Orientation::VERTICAL, 6), editor_(editor) {
    reveal_order::installStyle();
    add_css_class("card-order-editor");

    auto* header = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* title = Gtk::make_managed<Gtk::Label>(_("Card Reveal Order"));
    title->add_css_class("heading");
    header->append(*title);
    count_.add_css_class("dim-label");
    count_.set_hexpand(true);
    count_.set_xalign(1);
    header->append(count_);
    expander_.set_label_widget(*header);
    expander_.set_expanded(true);
    setAccessibleLabel(expander_, _("Card Reveal Order"));

    reveal_order::assemble(*this, expander_, help_,
                           _("Tap and hold a row to drag it to a new position — decision cards reveal in the order "
                             "shown here during manual reveal."),
                           empty_, _("Add decision cards on the stage to build a reveal sequence."), rowsBox_);
    reveal_order::acceptRows(
        rowsBox_, [this](double x, double y) { return dragMoved(x, y); }, [this] { showTarget(std::nullopt); },
        [this](double x, double y) { return dropped(x, y); });

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange& change) {
        if (change.kind != DeckChange::Kind::saved) scheduleRefresh();
    });
    stateConnection_ = editor_.state().changed().connect([this](PresentationField field) {
        if (field == PresentationField::current) scheduleRefresh();
    });
    set_visible(false);
    refresh();
}

CardOrderEditor::~CardOrderEditor() { refreshIdle_.disconnect(); }

void CardOrderEditor::scheduleRefresh() {
    if (refreshIdle_.connected()) return;
    refreshIdle_ = Glib::signal_idle().connect(
        [this] {
            refresh();
            return false;
        },
        Glib::PRIORITY_DEFAULT_IDLE);
}

void CardOrderEditor::refresh() {
    refreshIdle_.disconnect();
    const Slide* slide = cardsSlide(editor_.currentSlide());
    if (!slide) {
        if (shownApplies_ || get_visible()) set_visible(false);
        shownApplies_ = false;
        return;
    }
    if (!shownApplies_) set_visible(true);
    shownApplies_ = true;

    const auto& links = slide->links;
    while (rows_.size() > links.size()) {
        rowsBox_.remove(*rows_.back()->box);
        rows_.pop_back();
    }
    while (rows_.size() < links.size()) {
        rows_.push_back(makeRow(rows_.size()));
        rowsBox_.append(*rows_.back()->box);
    }
    for (std::size_t i = 0; i < links.size(); ++i) {
        Row& row = *rows_[i];
        row.id = links[i].id;
        std::string text = links[i].label.empty() ? _("Untitled option") : links[i].label;
        if (row.text == text) continue;
        row.text = text;
        row.label->set_text(text);
        setAccessibleLabel(*row.box, _("Card ") + std::to_string(i + 1) + ": " + text);
    }
    bool any = !links.empty();
    empty_.set_visible(!any);
    help_.set_visible(any);
    rowsBox_.set_visible(any);
    count_.set_visible(any);
    count_.set_text(reveal_order::countText(links.size(), "card", "cards"));
}

std::unique_ptr<CardOrderEditor::Row> CardOrderEditor::makeRow(std::size_t index) {
    auto row = std::make_unique<Row>();
    row->index = index;
    row->box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    row->box->add_css_class("card-order-row");
    auto* number = Gtk::make_managed<Gtk::Label>(std::to_string(index + 1));
    number->add_css_class("dim-label");
    number->add_css_class("numeric");
    row->box->append(*number);
    row->label = Gtk::make_managed<Gtk::Label>();
    row->label->set_xalign(0);
    row->label->set_hexpand(true);
    row->label->set_ellipsize(Pango::EllipsizeMode::END);
    row->box->append(*row->label);
    auto* grip = Gtk::make_managed<Gtk::Image>();
    grip->set_from_icon_name("list-drag-handle-symbolic");
    grip->add_css_class("dim-label");
    row->box->append(*grip);

    Row* raw = row.get();
    row->box->add_controller(reveal_order::rowDragSource(
        *row->box, dragContent, [this, raw] { dragging_ = raw->id; },
        [this] {
            dragging_.reset();
            showTarget(std::nullopt);
        }));
    return row;
}

std::optional<LinkRevealDropTarget> CardOrderEditor::targetAt(double, double y) {
    const Slide* slide = cardsSlide(editor_.currentSlide());
    if (!dragging_ || !slide || rows_.empty()) return std::nullopt;
    // The row under the pointer, or the next one below it (between rows);
    // its upper half puts the card before it, its lower half after it.
    std::optional<LinkRevealDropTarget> target;
    for (const auto& row : rows_) {
        auto bounds = reveal_order::boundsIn(*row->box, rowsBox_);
        if (!bounds || y >= bounds->origin.y + bounds->size.height) continue;
        target = LinkRevealDropTarget{row->id, y > bounds->origin.y + bounds->size.height / 2};
        break;
    }
    if (!target) target = LinkRevealDropTarget{rows_.back()->id, true};
    // A place that leaves the order as it is is no drop.
    if (idsOf(DecisionCards::moveLink(slide->links, *dragging_, *target)) == idsOf(slide->links)) {
        return std::nullopt;
    }
    return target;
}

void CardOrderEditor::showTarget(const std::optional<LinkRevealDropTarget>& target) {
    if (target == target_) return;
    for (auto& row : rows_) {
        bool here = target && target->id == row->id;
        if (here && !target->after) row->box->add_css_class("drop-before");
        else row->box->remove_css_class("drop-before");
        if (here && target->after) row->box->add_css_class("drop-after");
        else row->box->remove_css_class("drop-after");
    }
    target_ = target;
}

Gdk::DragAction CardOrderEditor::dragMoved(double x, double y) {
    auto target = targetAt(x, y);
    showTarget(target);
    return target ? Gdk::DragAction::MOVE : Gdk::DragAction(0);
}

bool CardOrderEditor::dropped(double x, double y) {
    auto target = targetAt(x, y);
    auto dragged = dragging_;
    showTarget(std::nullopt);
    dragging_.reset();
    if (!target || !dragged) return false;
    editor_.editCurrentSlide(_(editLabel), [&](Slide& slide) {
        slide.links = DecisionCards::moveLink(std::move(slide.links), *dragged, *target);
    });
    return true;
}

}  // namespace lectern
