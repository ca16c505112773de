#include "editor/platform/card_editors.h"

#include <glib/gi18n.h>
#include "editor/platform/stage_field.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/platform/accessible.h"
#include "editor/card_routes.h"
#include "slides/decision_cards.h"
#include "slides/platform/stage_view.h"

namespace lectern {

namespace {

// The pointer travels this far (view points) before a press becomes a drag.
constexpr double dragThreshold = 6;
constexpr int markSize = 16;

// CSS numbers are written with a dot whatever the locale.
std::string cssNumber(double value) {
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 2);
    return std::string(buffer, result.ptr);
}

std::string cssColour(const Color& colour) {
    auto channel = [](double value) { return std::to_string(std::lround(std::clamp(value, 0.0, 1.0) * 255)); };
    return "rgba(" + channel(colour.red) + "," + channel(colour.green) + "," + channel(colour.blue) + "," +
           cssNumber(std::clamp(colour.alpha, 0.0, 1.0)) + ")";
}

int cssWeight(FontWeight weight) {
    switch (weight) {
        case FontWeight::medium: return 500;
        case FontWeight::semibold: return 600;
        case FontWeight::bold: return 700;
        default: return 400;
    }
}

Gdk::Rectangle rectangle(double x, double y, double width, double height) {
    return Gdk::Rectangle(static_cast<int>(std::round(x)), static_cast<int>(std::round(y)),
                          std::max(1, static_cast<int>(std::round(width))),
                          std::max(1, static_cast<int>(std::round(height))));
}

// A widget's smallest size along one axis.
int minimum(Gtk::Widget& widget, Gtk::Orientation orientation) {
    int min = 0, natural = 0, minBaseline = -1, naturalBaseline = -1;
    widget.measure(orientation, -1, min, natural, minBaseline, naturalBaseline);
    return min;
}

int natural(Gtk::Widget& widget, Gtk::Orientation orientation) {
    int min = 0, natural = 0, minBaseline = -1, naturalBaseline = -1;
    widget.measure(orientation, -1, min, natural, minBaseline, naturalBaseline);
    return natural;
}

SlideLink* linkOf(Slide& slide, const Uuid& id) {
    auto it = std::find_if(slide.links.begin(), slide.links.end(), [&](const SlideLink& link) { return link.id == id; });
    return it == slide.links.end() ? nullptr : &*it;
}

}  // namespace

// One text field over a card: its label or its subtitle.
struct CardEditors::Field {
    Uuid card;
    bool subtitle = false;
    Gtk::Text* text = nullptr;
    Glib::RefPtr<Gtk::CssProvider> style;
    std::string css;              // what `style` holds now
    std::optional<TextBox> box;   // where the painter sets the text
    bool focused = false;
    bool syncing = false;         // the deck's text going in, not typing
};

struct CardEditors::Card {
    Uuid id;
    std::unique_ptr<Field> label;
    std::unique_ptr<Field> subtitle;
    Gtk::Image* mark = nullptr;  // no target, or a deleted one
    Rect frame;
};

CardEditors::CardEditors(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage,
                         std::function<SlidePaintOptions()> paintOptions)
    : editor_(editor), overlay_(overlay), stage_(stage), paintOptions_(std::move(paintOptions)) {
    // "Add option", under the cards.
    addButton_ = Gtk::make_managed<Gtk::Button>();
    auto* addContent = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* addIcon = Gtk::make_managed<Gtk::Image>();
    addIcon->set_from_icon_name("list-add-symbolic");
    addContent->append(*addIcon);
    addContent->append(*Gtk::make_managed<Gtk::Label>(_("Add option")));
    addButton_->set_child(*addContent);
    addButton_->add_css_class("osd");
    addButton_->set_focus_on_click(false);
    setAccessibleLabel(*addButton_, _("Add option"));
    addButton_->signal_clicked().connect([this] { addOption(); });
    addButton_->set_visible(false);
    overlay_.add_overlay(*addButton_);

    // The selected card's controls: where it leads, and removing it.
    controls_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    controls_->add_css_class("osd");
    controls_->add_css_class("toolbar");
    auto* routeCaption = Gtk::make_managed<Gtk::Label>(_("Route to"));
    routeCaption->add_css_class("dim-label");
    routeCaption->set_margin_start(6);
    controls_->append(*routeCaption);
    routeButton_ = Gtk::make_managed<Gtk::MenuButton>();
    routeButton_->set_label(_(CardRoutes::setTarget));
    setAccessibleLabel(*routeButton_, _("Route to"));
    routeMenu_ = Gio::Menu::create();
    routeButton_->set_menu_model(routeMenu_);
    // The deck's slides are listed when the menu opens, not on every edit.
    routeButton_->set_create_popup_func([this] { buildRouteMenu(); });
    controls_->append(*routeButton_);
    removeButton_ = Gtk::make_managed<Gtk::Button>();
    removeButton_->set_icon_name("list-remove-symbolic");
    removeButton_->set_tooltip_text(_("Remove option"));
    setAccessibleLabel(*removeButton_, _("Remove option"));
    removeButton_->signal_clicked().connect([this] { removeSelected(); });
    controls_->append(*removeButton_);
    auto actions = Gio::SimpleActionGroup::create();
    actions->add_action_with_parameter("route", Glib::VARIANT_TYPE_STRING, [this](const Glib::VariantBase& value) {
        route(Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(value).get());
    });
    controls_->insert_action_group("cards", actions);
    controls_->set_visible(false);
    overlay_.add_overlay(*controls_);

    placeConnection_ = overlay_.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& allocation) { return place(child, allocation); }, false);

    // A click on a card in the editor selects it.
    chosenConnection_ = stage_.cardChosen().connect([this](std::size_t index) {
        const Slide* slide = decisionsSlide();
        if (editing_ && slide && index < slide->links.size()) select(slide->links[index].id);
    });

    dragGesture_ = Gtk::GestureDrag::create();
    dragGesture_->set_button(GDK_BUTTON_PRIMARY);
    dragGesture_->signal_drag_begin().connect([this](double x, double y) { dragBegin(x, y); });
    dragGesture_->signal_drag_update().connect([this](double dx, double dy) { dragUpdate(dx, dy); });
    dragGesture_->signal_drag_end().connect([this](double, double) { dragEnd(); });
    dragGesture_->signal_cancel().connect([this](Gdk::EventSequence*) {
        press_.reset();
        setDrag(std::nullopt);
    });
    stage_.add_controller(dragGesture_);

    // The overlay may go first when the window closes, taking our widgets
    // and the stage with it: nothing of it is touched afterwards.
    overlay_.signal_destroy().connect([this] {
        closing_ = true;
        widgetsGone_ = true;
    });
}

CardEditors::~CardEditors() {
    closing_ = true;
    if (widgetsGone_) return;
    placeConnection_.disconnect();
    stage_.remove_controller(dragGesture_);
    for (auto& card : cards_) {
        if (card->label) overlay_.remove_overlay(*card->label->text);
        if (card->subtitle) overlay_.remove_overlay(*card->subtitle->text);
        overlay_.remove_overlay(*card->mark);
    }
    overlay_.remove_overlay(*controls_);
    overlay_.remove_overlay(*addButton_);
}

std::optional<Uuid> CardEditors::editingCard() const {
    if (!focused_) return std::nullopt;
    return focused_->card;
}

const Slide* CardEditors::decisionsSlide() const {
    const Slide* slide = editor_.currentSlide();
    return slide && slide->layout == SlideLayout::decisions ? slide : nullptr;
}

void CardEditors::update(bool editing) {
    const Slide* slide = decisionsSlide();
    editing_ = editing && slide;
    if (!editing_) {
        hideAll();
        return;
    }
    // The editor shows every card: lay them out as the stage draws them.
    Slide shown = *slide;
    shown.reveal = RevealMode::all;
    geometry_ = SlidePainter::geometry(shown, paintOptions_());

    // Cards that left the slide take their widgets with them.
    std::erase_if(cards_, [&](const std::unique_ptr<Card>& card) {
        bool kept = std::any_of(slide->links.begin(), slide->links.end(),
                                [&](const SlideLink& link) { return link.id == card->id; });
        if (kept) return false;
        if (focused_ && focused_->card == card->id) focused_ = nullptr;
        if (card->label) overlay_.remove_overlay(*card->label->text);
        if (card->subtitle) overlay_.remove_overlay(*card->subtitle->text);
        overlay_.remove_overlay(*card->mark);
        return true;
    });

    const auto& slides = editor_.deck().slides;
    for (const SlideLink& link : slide->links) {
        Card& card = cardFor(link.id);
        std::optional<TextBox> label, subtitle;
        for (const CardBox& box : geometry_.cardBoxes) {
            if (box.id != link.id) continue;
            label = box.label;
            subtitle = box.subtitle;
            card.frame = box.frame;
        }
        syncField(*card.label, link.label, label);
        if (subtitle && !card.subtitle) card.subtitle = makeField(link.id, true);
        if (card.subtitle) syncField(*card.subtitle, link.subtitle, subtitle);
        auto warning = CardRoutes::warning(link.targetId, slides);
        if (warning) {
            card.mark->set_tooltip_text(*warning);
            setAccessibleLabel(*card.mark, *warning);
        }
        card.mark->set_visible(warning.has_value());
    }
    addButton_->set_visible(DecisionCards::canAddOption(slide->links));
    updateControls();
    overlay_.queue_allocate();
}

CardEditors::Card& CardEditors::cardFor(const Uuid& id) {
    for (auto& card : cards_) {
        if (card->id == id) return *card;
    }
    auto card = std::make_unique<Card>();
    card->id = id;
    card->label = makeField(id, false);
    card->mark = Gtk::make_managed<Gtk::Image>();
    card->mark->set_from_icon_name("dialog-warning-symbolic");
    card->mark->set_pixel_size(markSize);
    card->mark->add_css_class("warning");
    card->mark->add_css_class("osd");
    overlay_.add_overlay(*card->mark);
    cards_.push_back(std::move(card));
    return *cards_.back();
}

std::unique_ptr<CardEditors::Field> CardEditors::makeField(const Uuid& id, bool subtitle) {
    auto field = std::make_unique<Field>();
    field->card = id;
    field->subtitle = subtitle;
    field->text = makeStageText();
    Gtk::Text& text = *field->text;
    text.set_width_chars(1);
    text.set_enable_undo(false);  // the deck's history undoes typing
    setAccessibleLabel(text, subtitle ? _("Option subtitle") : _("Option title"));
    field->style = Gtk::CssProvider::create();
    text.get_style_context()->add_provider(field->style, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);

    Field* raw = field.get();
    text.signal_changed().connect([this, raw] { fieldChanged(*raw); });
    // Return or Escape hands the keyboard back to the stage.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType) {
            if (key != GDK_KEY_Escape && key != GDK_KEY_Return && key != GDK_KEY_KP_Enter) return false;
            stage_.grab_focus();
            return true;
        },
        false);
    text.add_controller(keys);
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_enter().connect([this, raw] { fieldFocused(*raw, true); });
    focus->signal_leave().connect([this, raw] { fieldFocused(*raw, false); });
    text.add_controller(focus);
    overlay_.add_overlay(text);
    styleField(*field);
    return field;
}

void CardEditors::syncField(Field& field, const std::string& text, const std::optional<TextBox>& box) {
    field.box = box;
    field.text->set_visible(box.has_value());
    if (std::string(field.text->get_text()) != text) {
        // The deck changed under the field (undo, another editor): show it.
        field.syncing = true;
        field.text->set_text(text);
        field.syncing = false;
    }
    styleField(field);
}

void CardEditors::styleField(Field& field) {
    Gtk::Text& text = *field.text;
    std::string css = "text { background: none; border: none; box-shadow: none; outline: none; "
                      "padding: 0; margin: 0; min-height: 0; ";
    if (field.box) {
        const TextLook& look = field.box->look;
        double scale = SlidePainter::fit(stage_.slideArea().width, stage_.slideArea().height).scale;
        css += "font-family: " + fontFamily(look.design) + "; font-weight: " + std::to_string(cssWeight(look.weight)) +
               "; font-size: " + cssNumber(std::max(look.size * scale, 1.0)) +
               "px; letter-spacing: " + cssNumber(look.tracking * scale) + "px; ";
        text.set_alignment(look.align == TextAlign::centre ? 0.5f : 0.0f);
    }
    // Out of focus the field is there to take a click, but the painted card
    // shows through it. While either field of a card has the focus, the
    // painter leaves out both texts, so both fields show theirs.
    const bool shown = focused_ && focused_->card == field.card;
    if (shown && field.box) {
        std::string colour = cssColour(field.box->look.colour);
        css += "color: " + colour + "; caret-color: " + colour + "; }";
    } else {
        css += "color: transparent; caret-color: transparent; }";
    }
    if (css != field.css) {
        field.css = css;
        field.style->load_from_data(css);
    }
    std::string placeholder = shown ? (field.subtitle ? _("Optional subtitle") : _("Option title")) : "";
    if (std::string(text.get_placeholder_text()) != placeholder) text.set_placeholder_text(placeholder);
}

void CardEditors::fieldFocused(Field& field, bool focused) {
    if (closing_) return;
    field.focused = focused;
    if (focused) {
        focused_ = &field;
        select(field.card);
    } else {
        if (focused_ == &field) focused_ = nullptr;
        field.text->select_region(0, 0);
    }
    for (auto& card : cards_) {
        if (card->id != field.card) continue;
        styleField(*card->label);
        if (card->subtitle) styleField(*card->subtitle);
    }
    looksChanged_.emit();
}

void CardEditors::fieldChanged(Field& field) {
    if (field.syncing || closing_) return;
    std::string text = field.text->get_text();
    Uuid id = field.card;
    bool subtitle = field.subtitle;
    editor_.editCurrentSlide(
        _("Typing"),
        [&](Slide& slide) {
            if (SlideLink* link = linkOf(slide, id)) (subtitle ? link->subtitle : link->label) = text;
        },
        (subtitle ? "card-subtitle:" : "card-label:") + id.string());
}

void CardEditors::select(const std::optional<Uuid>& id) {
    stage_.setSelectedCard(id);
    updateControls();
    overlay_.queue_allocate();
}

void CardEditors::updateControls() {
    const Slide* slide = decisionsSlide();
    const auto& selected = stage_.selectedCard();
    const SlideLink* link = nullptr;
    if (editing_ && slide && selected) {
        for (const SlideLink& candidate : slide->links) {
            if (candidate.id == *selected) link = &candidate;
        }
    }
    if (!link) {
        controlsCard_.reset();
        controls_->set_visible(false);
        return;
    }
    controlsCard_ = link->id;
    routeButton_->set_label(CardRoutes::controlLabel(link->targetId, editor_.deck().slides));
    controls_->set_visible(true);
}

void CardEditors::buildRouteMenu() {
    routeMenu_->remove_all();
    auto entries = CardRoutes::entries(editor_.deck().slides);
    auto none = Gio::Menu::create();
    auto slides = Gio::Menu::create();
    for (std::size_t k = 0; k < entries.size(); ++k) {
        // Ids and the empty string need no quoting inside the action target.
        auto item = Gio::MenuItem::create(entries[k].title, "cards.route('" + entries[k].targetId + "')");
        if (k == 0) {
            item->set_icon(Gio::ThemedIcon::create("list-remove-symbolic"));
            none->append_item(item);
        } else {
            slides->append_item(item);
        }
    }
    routeMenu_->append_section(none);
    routeMenu_->append_section(slides);
}

void CardEditors::route(const std::string& targetId) {
    if (!controlsCard_) return;
    Uuid id = *controlsCard_;
    editor_.editCurrentSlide(_("Route Option"), [&](Slide& slide) {
        if (SlideLink* link = linkOf(slide, id)) link->targetId = targetId;
    });
}

void CardEditors::addOption() {
    const Slide* slide = decisionsSlide();
    if (!slide || !DecisionCards::canAddOption(slide->links)) return;
    if (!editor_.editCurrentSlide(_("Add Option"),
                                  [](Slide& changed) { changed.links = DecisionCards::addOption(changed.links); }))
        return;
    slide = decisionsSlide();
    if (!slide || slide->links.empty()) return;
    Uuid added = slide->links.back().id;
    // The window has redrawn the stage by now; make sure our widgets follow
    // even where nobody else calls update().
    update(true);
    select(added);
    Card& card = cardFor(added);
    card.label->text->grab_focus();
    card.label->text->select_region(0, -1);
}

void CardEditors::removeSelected() {
    if (!controlsCard_) return;
    Uuid id = *controlsCard_;
    stage_.setSelectedCard(std::nullopt);
    editor_.editCurrentSlide(_("Remove Option"),
                             [&](Slide& slide) { slide.links = DecisionCards::removeCard(slide.links, id); });
    updateControls();
}

void CardEditors::hideAll() {
    for (auto& card : cards_) {
        card->label->text->set_visible(false);
        if (card->subtitle) card->subtitle->text->set_visible(false);
        card->mark->set_visible(false);
    }
    controls_->set_visible(false);
    addButton_->set_visible(false);
    controlsCard_.reset();
    press_.reset();
    if (drag_) setDrag(std::nullopt);
}

Rect CardEditors::toView(const Rect& design) const {
    Rect area = stage_.slideArea();
    auto fit = SlidePainter::fit(area.width, area.height);
    return {area.x + fit.offsetX + design.x * fit.scale, area.y + fit.offsetY + design.y * fit.scale,
            design.width * fit.scale, design.height * fit.scale};
}

bool CardEditors::place(Gtk::Widget* child, Gdk::Rectangle& allocation) {
    if (!child) return false;
    const double width = overlay_.get_width(), height = overlay_.get_height();
    if (child == addButton_) {
        // Under the slide in the stage's margin when it fits there, else
        // just inside the slide's bottom edge: never over the cards' text.
        Rect area = stage_.slideArea();
        int w = natural(*addButton_, Gtk::Orientation::HORIZONTAL);
        int h = natural(*addButton_, Gtk::Orientation::VERTICAL);
        double below = height - (area.y + area.height);
        double y = below >= h + 4 ? area.y + area.height + (below - h) / 2 : area.y + area.height - h - 8;
        allocation = rectangle(area.x + (area.width - w) / 2, y, w, h);
        return true;
    }
    if (child == controls_) {
        // Under the selected card, or over it where there is no room below.
        Rect frame{};
        for (const auto& card : cards_) {
            if (controlsCard_ && card->id == *controlsCard_) frame = toView(card->frame);
        }
        int w = natural(*controls_, Gtk::Orientation::HORIZONTAL);
        int h = natural(*controls_, Gtk::Orientation::VERTICAL);
        double x = std::clamp(frame.x + (frame.width - w) / 2, 0.0, std::max(0.0, width - w));
        double y = frame.y + frame.height + 6;
        if (y + h > height) y = std::max(0.0, frame.y - h - 6);
        allocation = rectangle(x, y, w, h);
        return true;
    }
    for (const auto& card : cards_) {
        if (child == card->mark) {
            Rect frame = toView(card->frame);
            allocation = rectangle(frame.x + frame.width - markSize - 8, frame.y + 8, markSize, markSize);
            return true;
        }
        for (Field* field : {card->label.get(), card->subtitle.get()}) {
            if (!field || child != field->text) continue;
            Rect box = field->box ? toView(field->box->rect) : Rect{0, 0, 1, 1};
            // The painted line's box, or the least the field needs about its middle.
            double w = std::max<double>(box.width, minimum(*field->text, Gtk::Orientation::HORIZONTAL));
            double h = std::max<double>(box.height, minimum(*field->text, Gtk::Orientation::VERTICAL));
            allocation = rectangle(box.x, box.y + (box.height - h) / 2, w, h);
            return true;
        }
    }
    return false;
}

void CardEditors::dragBegin(double x, double y) {
    press_.reset();
    const Slide* slide = decisionsSlide();
    auto index = editing_ && slide ? stage_.cardAt(x, y) : std::nullopt;
    if (!index || *index >= slide->links.size()) {
        dragGesture_->set_state(Gtk::EventSequenceState::DENIED);
        return;
    }
    // The frames as they are now: the grid holds still under the pointer.
    press_ = Press{slide->links[*index].id, x, y, geometry_.cards};
}

void CardEditors::dragUpdate(double dx, double dy) {
    if (!press_) return;
    if (!drag_ && std::hypot(dx, dy) < dragThreshold) return;
    // A drag is not a click: the stage's click gesture lets go of it.
    if (!drag_) dragGesture_->set_state(Gtk::EventSequenceState::CLAIMED);
    Rect area = stage_.slideArea();
    auto fit = SlidePainter::fit(area.width, area.height);
    if (fit.scale <= 0) return;
    double px = (press_->x + dx - area.x - fit.offsetX) / fit.scale;
    double py = (press_->y + dy - area.y - fit.offsetY) / fit.scale;
    Drag drag{press_->id, dx / fit.scale, dy / fit.scale, std::nullopt};
    for (const auto& [id, frame] : press_->frames) {
        if (id != press_->id && frame.contains(px, py)) drag.target = id;
    }
    setDrag(drag);
}

void CardEditors::dragEnd() {
    auto drag = drag_;
    press_.reset();
    drag_.reset();
    if (drag && drag->target) {
        editor_.editCurrentSlide(_("Move Option"), [&](Slide& slide) {
            slide.links = DecisionCards::moveCard(slide.links, drag->id, drag->target);
        });
    }
    if (drag) looksChanged_.emit();
}

void CardEditors::setDrag(std::optional<Drag> drag) {
    bool same = drag.has_value() == drag_.has_value() &&
                (!drag || (drag->id == drag_->id && drag->dx == drag_->dx && drag->dy == drag_->dy &&
                           drag->target == drag_->target));
    drag_ = std::move(drag);
    if (!same) looksChanged_.emit();
}

}  // namespace lectern
