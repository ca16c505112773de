#include "editor/platform/deck_inspector.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>

#include "base/platform/accessible.h"
#include "editor/platform/colour_swatch.h"
#include "editor/deck_inspector_model.h"
#include "editor/platform/profiles_section.h"
#include "model/color.h"
#include "model/theme_style.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

constexpr int swatchSize = 22;
constexpr const char* titleMergeKey = "deck-inspector-title";
constexpr std::array<Theme, 4> themes{Theme::clinical, Theme::editorial, Theme::monochrome, Theme::dark};

Gtk::Label* heading(const std::string& text) {
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    label->add_css_class("heading");
    label->set_xalign(0);
    label->set_margin_top(6);
    return label;
}

std::optional<Color> colourOf(const std::optional<std::string>& hex) {
    return hex ? Color::fromHex(*hex) : std::nullopt;
}

std::string swatchName(std::size_t index, const std::optional<std::string>& hex) {
    auto canonical = hex ? canonicalHex(*hex) : std::nullopt;
    return _("Palette swatch ") + std::to_string(index + 1) + ": " + (canonical ? *canonical : std::string("empty"));
}

}  // namespace

DeckInspector::DeckInspector(DeckEditor& editor)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 6), editor_(editor), appPalette_(editor.preferences()) {
    add_css_class("deck-inspector");
    const Deck& deck = editor_.deck();
    shownTitle_ = deck.title;
    shownTheme_ = deck.theme;
    shownAccent_ = deck.accentHex;
    shownPalette_ = deck.palette;
    shownMinutes_ = deck.targetMinutes;
    shownAppHexes_ = appPalette_.hexes();

    buildTitle();
    buildTheme();
    buildAccent();
    buildPalette();
    buildTalkLength();

    auto& stores = WebServices::shared().profileStores(editor_.preferences());
    profiles_ = Gtk::make_managed<ProfilesSection>(editor_, stores, editor_.state().windowId());
    profiles_->set_margin_top(6);
    append(*profiles_);

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange& change) {
        if (change.kind != DeckChange::Kind::saved) deckChanged();
    });
    appPaletteConnection_ = appPalette_.changed().connect([this] {
        shownAppHexes_ = appPalette_.hexes();
        fillAccentChoices();
    });
}

DeckInspector::~DeckInspector() {
    deckConnection_.disconnect();
    appPaletteConnection_.disconnect();
}

void DeckInspector::buildTitle() {
    append(*heading(_("Title")));
    title_.set_placeholder_text(_("Untitled deck"));
    title_.set_text(editor_.deck().title.value_or(""));
    setAccessibleLabel(title_, _("Deck title"));
    title_.signal_changed().connect([this] {
        if (syncing_) return;
        auto title = DeckInspectorModel::titleFromText(title_.get_text().raw());
        shownTitle_ = title;
        editor_.edit(
            _("Rename Deck"),
            [&](Deck deck) {
                deck.title = title;
                return deck;
            },
            titleMergeKey);
    });
    append(title_);
}

void DeckInspector::buildTheme() {
    append(*heading(_("Theme")));
    themes_.add_css_class("boxed-list");
    themes_.set_selection_mode(Gtk::SelectionMode::SINGLE);
    setAccessibleLabel(themes_, _("Theme"));
    for (Theme theme : themes) {
        auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
        box->set_margin(8);
        auto* name = Gtk::make_managed<Gtk::Label>(themeDisplayName(theme));
        name->set_xalign(0);
        auto* description = Gtk::make_managed<Gtk::Label>(std::string(themeDescription(theme)));
        description->set_xalign(0);
        description->add_css_class("dim-label");
        description->add_css_class("caption");
        box->append(*name);
        box->append(*description);
        auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
        row->set_child(*box);
        setAccessibleLabel(*row, themeDisplayName(theme) + ": " + std::string(themeDescription(theme)));
        themes_.append(*row);
    }
    themes_.select_row(*themes_.get_row_at_index(static_cast<int>(editor_.deck().theme)));
    themes_.signal_row_selected().connect([this](Gtk::ListBoxRow* row) {
        if (syncing_ || !row) return;
        Theme theme = themes[static_cast<std::size_t>(row->get_index())];
        shownTheme_ = theme;
        editor_.edit(_("Change Theme"), [&](Deck deck) {
            deck.theme = theme;
            return deck;
        });
        accentNote_.set_visible(!ThemeStyle::of(theme).usesAccent);
    });
    append(themes_);
}

void DeckInspector::buildAccent() {
    append(*heading(_("Accent")));
    accentNote_.set_text(_("This theme shows no accent colour."));
    accentNote_.set_xalign(0);
    accentNote_.set_wrap(true);
    accentNote_.add_css_class("dim-label");
    accentNote_.add_css_class("caption");
    accentNote_.set_visible(!ThemeStyle::of(editor_.deck().theme).usesAccent);
    append(accentNote_);

    accents_.set_selection_mode(Gtk::SelectionMode::NONE);
    accents_.set_max_children_per_line(8);
    accents_.set_homogeneous(true);
    setAccessibleLabel(accents_, _("Accent colours"));
    append(accents_);

    auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    defaultAccent_.set_label(_("Theme Default"));
    setAccessibleLabel(defaultAccent_, _("Theme default accent"));
    defaultAccent_.signal_toggled().connect([this] {
        if (!syncing_ && defaultAccent_.get_active()) setAccent(std::nullopt);
    });
    buttons->append(defaultAccent_);
    auto* custom = Gtk::make_managed<Gtk::Button>(_("Custom\u2026"));
    setAccessibleLabel(*custom, _("Custom accent colour"));
    custom->signal_clicked().connect([this] {
        chooseColour(_("Accent Color"), [this](std::string hex) { setAccent(std::move(hex)); });
    });
    buttons->append(*custom);
    accentValue_.add_css_class("dim-label");
    accentValue_.set_hexpand(true);
    accentValue_.set_xalign(1);
    buttons->append(accentValue_);
    append(*buttons);
    fillAccentChoices();
}

void DeckInspector::fillAccentChoices() {
    auto choices = DeckInspectorModel::accentChoices(shownAppHexes_, editor_.deck().palette);
    if (choices == accentChoices_ && !accentButtons_.empty()) return showAccent();
    accentChoices_ = choices;
    while (auto* child = accents_.get_first_child()) accents_.remove(*child);
    accentButtons_.clear();
    for (const auto& hex : accentChoices_) {
        auto* button = Gtk::make_managed<Gtk::ToggleButton>();
        button->set_child(*makeColourSwatch([colour = Color::fromHex(hex)] { return colour; }, swatchSize));
        button->set_has_frame(false);
        button->set_group(defaultAccent_);
        button->set_tooltip_text(hex);
        setAccessibleLabel(*button, _("Accent ") + hex);
        button->signal_toggled().connect([this, button, hex] {
            if (!syncing_ && button->get_active()) setAccent(hex);
        });
        // A secondary click on a colour of the application's palette
        // replaces it there, for every deck.
        auto replace = Gtk::GestureClick::create();
        replace->set_button(GDK_BUTTON_SECONDARY);
        replace->signal_pressed().connect([this, hex](int, double, double) {
            const auto& hexes = appPalette_.hexes();
            auto it = std::find_if(hexes.begin(), hexes.end(),
                                   [&](const std::string& h) { return DeckInspectorModel::sameColour(h, hex); });
            if (it == hexes.end()) return;
            std::size_t index = static_cast<std::size_t>(it - hexes.begin());
            chooseColour(_("Accent Palette Color"), [this, index](std::string chosen) {
                appPalette_.replace(index, std::move(chosen));
            });
        });
        button->add_controller(replace);
        accents_.append(*button);
        accentButtons_.emplace_back(hex, button);
    }
    showAccent();
}

void DeckInspector::showAccent() {
    syncing_ = true;
    const auto& accent = editor_.deck().accentHex;
    for (auto& [hex, button] : accentButtons_) {
        bool same = DeckInspectorModel::sameColour(accent, hex);
        if (button->get_active() != same) button->set_active(same);
    }
    defaultAccent_.set_active(!accent);
    // A colour chosen in the colour chooser may have no button of its own.
    accentValue_.set_text(accent ? canonicalHex(*accent).value_or(*accent) : _("Theme default"));
    syncing_ = false;
}

void DeckInspector::setAccent(std::optional<std::string> hex) {
    if (hex) hex = canonicalHex(*hex);
    editor_.edit(_("Change Accent"), [&](Deck deck) {
        deck.accentHex = hex;
        return deck;
    });
}

void DeckInspector::buildPalette() {
    append(*heading(_("Palette")));
    auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 2);
    for (std::size_t index = 0; index < swatches_.size(); ++index) {
        auto* button = Gtk::make_managed<Gtk::MenuButton>();
        button->set_child(*makeColourSwatch([this, index] { return colourOf(editor_.deck().palette.swatches()[index]); }, swatchSize));
        button->set_has_frame(false);
        button->set_popover(*swatchMenu(index));
        std::string name = swatchName(index, editor_.deck().palette.swatches()[index]);
        setAccessibleLabel(*button, name);
        button->set_tooltip_text(name);
        swatches_[index] = button;
        row->append(*button);
    }
    append(*row);
}

Gtk::Popover* DeckInspector::swatchMenu(std::size_t index) {
    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    box->set_margin(6);
    auto* colours = Gtk::make_managed<Gtk::FlowBox>();
    colours->set_selection_mode(Gtk::SelectionMode::NONE);
    colours->set_max_children_per_line(6);
    auto* popover = Gtk::make_managed<Gtk::Popover>();
    // The application's accent palette, as it is when the menu opens.
    auto fill = [this, colours, popover, index] {
        while (auto* child = colours->get_first_child()) colours->remove(*child);
        for (const auto& text : appPalette_.hexes()) {
            auto hex = canonicalHex(text);
            if (!hex) continue;
            auto* button = Gtk::make_managed<Gtk::Button>();
            button->set_child(*makeColourSwatch([colour = Color::fromHex(*hex)] { return colour; }, swatchSize));
            button->set_has_frame(false);
            button->set_tooltip_text(*hex);
            setAccessibleLabel(*button, *hex);
            button->signal_clicked().connect([this, popover, index, hex] {
                popover->popdown();
                setSwatch(index, hex);
            });
            colours->append(*button);
        }
    };
    popover->signal_show().connect(fill);
    box->append(*colours);
    auto* custom = Gtk::make_managed<Gtk::Button>(_("Custom\u2026"));
    custom->set_has_frame(false);
    custom->signal_clicked().connect([this, popover, index] {
        popover->popdown();
        chooseColour(_("Palette Color"), [this, index](std::string hex) { setSwatch(index, std::move(hex)); });
    });
    box->append(*custom);
    auto* clear = Gtk::make_managed<Gtk::Button>(_("Empty Swatch"));
    clear->set_has_frame(false);
    clear->signal_clicked().connect([this, popover, index] {
        popover->popdown();
        setSwatch(index, std::nullopt);
    });
    box->append(*clear);
    popover->set_child(*box);
    return popover;
}

void DeckInspector::setSwatch(std::size_t index, std::optional<std::string> hex) {
    editor_.edit(_("Change Palette"), [&](Deck deck) {
        deck.palette.setSwatch(index, std::move(hex));
        return deck;
    });
}

void DeckInspector::buildTalkLength() {
    append(*heading(_("Talk Length")));
    auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    talk_.set_placeholder_text(_("None"));
    talk_.set_input_purpose(Gtk::InputPurpose::DIGITS);
    talk_.set_width_chars(6);
    talk_.set_text(DeckInspectorModel::talkLengthText(editor_.deck().targetMinutes));
    setAccessibleLabel(talk_, _("Talk length in minutes"));
    // Committed on Enter and when the field loses the keyboard, so that
    // typing "0" on the way to "05" is not turned into 1 underfoot.
    talk_.signal_activate().connect([this] { commitTalkLength(); });
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_leave().connect([this] { commitTalkLength(); });
    talk_.add_controller(focus);
    row->append(talk_);
    auto* unit = Gtk::make_managed<Gtk::Label>(_("minutes"));
    unit->add_css_class("dim-label");
    row->append(*unit);
    append(*row);
}

void DeckInspector::commitTalkLength() {
    auto parsed = DeckInspectorModel::parseTalkLength(talk_.get_text().raw());
    std::optional<std::int64_t> minutes = parsed ? *parsed : editor_.deck().targetMinutes;
    if (parsed) {
        editor_.edit(_("Change Talk Length"), [&](Deck deck) {
            deck.targetMinutes = minutes;
            return deck;
        });
    }
    syncing_ = true;
    talk_.set_text(DeckInspectorModel::talkLengthText(minutes));
    syncing_ = false;
}

void DeckInspector::chooseColour(const std::string& title, std::function<void(std::string)> chosen) {
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    colourDialog_ = window ? std::make_unique<Gtk::ColorChooserDialog>(title, *window)
                           : std::make_unique<Gtk::ColorChooserDialog>(title);
    colourDialog_->set_modal(true);
    colourDialog_->set_use_alpha(false);
    colourDialog_->signal_response().connect([this, chosen = std::move(chosen)](int response) {
        Gdk::RGBA rgba = colourDialog_->get_rgba();
        colourDialog_->hide();
        if (response == Gtk::ResponseType::OK) chosen(Color{rgba.get_red(), rgba.get_green(), rgba.get_blue()}.hex());
    });
    colourDialog_->show();
}

void DeckInspector::deckChanged() {
    const Deck& deck = editor_.deck();
    syncing_ = true;
    if (deck.title != shownTitle_) {
        shownTitle_ = deck.title;
        // The field as typed already says this (an empty field is no title).
        if (DeckInspectorModel::titleFromText(title_.get_text().raw()) != deck.title) {
            title_.set_text(deck.title.value_or(""));
        }
    }
    if (deck.theme != shownTheme_) {
        shownTheme_ = deck.theme;
        themes_.select_row(*themes_.get_row_at_index(static_cast<int>(deck.theme)));
        accentNote_.set_visible(!ThemeStyle::of(deck.theme).usesAccent);
    }
    if (deck.targetMinutes != shownMinutes_) {
        shownMinutes_ = deck.targetMinutes;
        talk_.set_text(DeckInspectorModel::talkLengthText(deck.targetMinutes));
    }
    syncing_ = false;
    bool paletteChanged = deck.palette != shownPalette_;
    if (paletteChanged) {
        for (std::size_t index = 0; index < swatches_.size(); ++index) {
            const auto& swatch = deck.palette.swatches()[index];
            if (swatch == shownPalette_.swatches()[index]) continue;
            std::string name = swatchName(index, swatch);
            setAccessibleLabel(*swatches_[index], name);
            swatches_[index]->set_tooltip_text(name);
            swatches_[index]->get_child()->queue_draw();
        }
        shownPalette_ = deck.palette;
    }
    if (paletteChanged) {
        fillAccentChoices();  // the palette's colours are accent choices too
    } else if (deck.accentHex != shownAccent_) {
        showAccent();
    }
    shownAccent_ = deck.accentHex;
    profiles_->deckChanged();
}

}  // namespace lectern
