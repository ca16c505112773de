#include "editor/platform/format_bar.h"

#include <glib/gi18n.h>

#include <cmath>

#include "base/platform/accessible.h"
#include "editor/platform/colour_swatch.h"
#include "model/color.h"

namespace lectern {
namespace {

using Group = FormatControlGroup;
using Id = FormatControlId;

constexpr int swatchSize = 22;

bool isToggle(Id id) {
    switch (id) {
        case Id::textColor:
        case Id::indent:
        case Id::outdent:
        case Id::more: return false;
        default: return true;
    }
}

// A click on the control keeps the keyboard focus in the text, for the
// control and for the button inside a menu button.
void keepFocusOffClick(Gtk::Widget& widget) {
    widget.set_focus_on_click(false);
    for (auto* child = widget.get_first_child(); child; child = child->get_next_sibling()) keepFocusOffClick(*child);
}

void name(Gtk::Widget& widget, std::string_view label) {
    widget.set_tooltip_text(std::string(label));
    setAccessibleLabel(widget, std::string(label));
}

}  // namespace

FormatBar::FormatBar(BodyEditor& editor) : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6), editor_(editor) {
    add_css_class("format-bar");
    setAccessibleLabel(*this, _("Formatting"));
    for (Group group : {Group::characterStyle, Group::alignment, Group::list, Group::block}) {
        groups_[group] = std::make_unique<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 2);
        groups_[group]->add_css_class("linked");
    }
    for (int i = 0; i < 3; ++i) separators_.push_back(std::make_unique<Gtk::Separator>(Gtk::Orientation::VERTICAL));
    for (const auto& control : formatControls()) {
        if (control.group == Group::overflow) continue;
        groups_[control.group]->append(*makeControl(control));
    }
    for (const auto& control : formatControls()) {
        if (control.id != Id::more) continue;
        more_.set_icon_name(std::string(control.iconName));
        name(more_, _(control.label.data()));
    }
    more_.set_has_frame(false);
    auto* morePopover = Gtk::make_managed<Gtk::Popover>();
    moreBox_.set_margin(6);
    morePopover->set_child(moreBox_);
    more_.set_popover(*morePopover);
    keepFocusOffClick(more_);
    buildColourMenu();
    arrange();
    stateConnection_ = editor_.formatStateChanged().connect([this] { refresh(); });
    refresh();
}

FormatBar::~FormatBar() {
    if (dialog_) dialog_->hide();
}

Gtk::Widget* FormatBar::makeControl(const FormatControl& control) {
    Gtk::Button* button = nullptr;
    if (control.id == Id::textColor) {
        colour_.set_icon_name(std::string(control.iconName));
        colour_.set_has_frame(false);
        name(colour_, _(control.label.data()));
        keepFocusOffClick(colour_);
        return &colour_;
    }
    if (isToggle(control.id)) {
        auto* toggle = Gtk::make_managed<Gtk::ToggleButton>();
        toggles_[control.id] = toggle;
        button = toggle;
    } else {
        button = Gtk::make_managed<Gtk::Button>();
        buttons_[control.id] = button;
    }
    button->set_icon_name(std::string(control.iconName));
    button->set_has_frame(false);
    name(*button, _(control.label.data()));
    keepFocusOffClick(*button);
    Id id = control.id;
    button->signal_clicked().connect([this, id] { editor_.apply(id); });
    return button;
}

void FormatBar::buildColourMenu() {
    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    box->set_margin(6);
    auto* automatic = Gtk::make_managed<Gtk::Button>(_("Automatic"));
    automatic->set_has_frame(false);
    automatic->set_focus_on_click(false);
    automatic->signal_clicked().connect([this] { pickColour(std::nullopt); });
    box->append(*automatic);
    box->append(deckSwatches_);
    box->append(appSwatches_);
    auto* custom = Gtk::make_managed<Gtk::Button>(_("Custom\u2026"));
    custom->set_has_frame(false);
    custom->set_focus_on_click(false);
    custom->signal_clicked().connect([this] { chooseCustomColour(); });
    box->append(*custom);
    auto* popover = Gtk::make_managed<Gtk::Popover>();
    popover->set_child(*box);
    colour_.set_popover(*popover);
}

void FormatBar::setPalettes(std::vector<std::string> deckPalette, std::vector<std::string> appPalette) {
    fillSwatches(deckSwatches_, deckPalette);
    fillSwatches(appSwatches_, appPalette);
}

void FormatBar::fillSwatches(Gtk::Box& row, const std::vector<std::string>& hexes) {
    while (auto* child = row.get_first_child()) row.remove(*child);
    for (const auto& text : hexes) {
        auto colour = Color::fromHex(text);
        if (!colour) continue;
        std::string hex = colour->hex();
        auto* swatch = makeColourSwatch(*colour, swatchSize);
        auto* button = Gtk::make_managed<Gtk::Button>();
        button->set_child(*swatch);
        button->set_has_frame(false);
        button->set_focus_on_click(false);
        name(*button, hex);
        button->signal_clicked().connect([this, hex] { pickColour(hex); });
        row.append(*button);
    }
    row.set_visible(row.get_first_child() != nullptr);
}

void FormatBar::pickColour(std::optional<std::string> hex) {
    if (auto* popover = colour_.get_popover()) popover->popdown();
    editor_.setTextColor(std::move(hex));
    editor_.grab_focus();
}

void FormatBar::chooseCustomColour() {
    if (auto* popover = colour_.get_popover()) popover->popdown();
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    dialog_ = window ? std::make_unique<Gtk::ColorChooserDialog>(_("Text Color"), *window)
                     : std::make_unique<Gtk::ColorChooserDialog>(_("Text Color"));
    dialog_->set_modal(true);
    dialog_->set_use_alpha(false);
    dialog_->signal_response().connect([this](int response) {
        if (response == Gtk::ResponseType::OK) {
            Gdk::RGBA rgba = dialog_->get_rgba();
            pickColour(Color{rgba.get_red(), rgba.get_green(), rgba.get_blue()}.hex());
        }
        dialog_->hide();
    });
    dialog_->show();
}

void FormatBar::arrange() {
    while (auto* child = get_first_child()) remove(*child);
    while (auto* child = moreBox_.get_first_child()) moreBox_.remove(*child);
    append(*groups_[Group::characterStyle]);
    std::size_t separator = 0;
    for (Group group : {Group::alignment, Group::list, Group::block}) {
        if (compact_) {
            moreBox_.append(*groups_[group]);
        } else {
            append(*separators_[separator++]);
            append(*groups_[group]);
        }
    }
    if (compact_) append(more_);
}

void FormatBar::setCompact(bool compact) {
    if (compact == compact_) return;
    compact_ = compact;
    if (auto* popover = more_.get_popover()) popover->popdown();
    arrange();
}

void FormatBar::refresh() {
    FormatState state = formatStateOf(editor_.editable());
    auto show = [&](Id id, bool on) {
        if (auto found = toggles_.find(id); found != toggles_.end()) found->second->set_active(on);
    };
    show(Id::bold, state.bold);
    show(Id::italic, state.italic);
    show(Id::underline, state.underline);
    show(Id::strikethrough, state.strikethrough);
    show(Id::alignLeft, state.alignment == SlideBodyAlignment::leading);
    show(Id::alignCenter, state.alignment == SlideBodyAlignment::center);
    show(Id::alignRight, state.alignment == SlideBodyAlignment::trailing);
    show(Id::bulletList, state.bulletList);
    show(Id::numberedList, state.numberedList);
    show(Id::commandBlock, state.commandBlock);
    buttons_[Id::indent]->set_sensitive(state.canIndent);
    buttons_[Id::outdent]->set_sensitive(state.canOutdent);
}

}  // namespace lectern
