#include "editor/platform/slide_inspector.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>

#include "base/platform/accessible.h"
#include "editor/platform/colour_swatch.h"
#include "editor/deck_edits.h"
#include "editor/platform/layout_picker.h"
#include "model/color.h"
#include "web/browser_profile_edits.h"

namespace lectern {

namespace {

constexpr int swatchSize = 20;
constexpr const char* nextHeading = N_("Where \u201cNext\u201d goes from this slide");
constexpr const char* revealAllText = N_("Everything visible immediately");
constexpr const char* revealStepsText = N_("Reveal content step by step");

std::vector<std::string> titlesOf(const auto& choices) {
    std::vector<std::string> titles;
    titles.reserve(choices.size());
    for (const auto& choice : choices) titles.push_back(choice.title);
    return titles;
}

// Entries as one line each, cut short with an ellipsis: a long slide title
// must not widen the column.
Glib::RefPtr<Gtk::ListItemFactory> oneLineEntries() {
    auto factory = Gtk::SignalListItemFactory::create();
    factory->signal_setup().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
        auto* label = Gtk::make_managed<Gtk::Label>();
        label->set_xalign(0);
        label->set_ellipsize(Pango::EllipsizeMode::END);
        label->set_max_width_chars(28);
        item->set_child(*label);
    });
    factory->signal_bind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
        auto entry = std::dynamic_pointer_cast<Gtk::StringObject>(item->get_item());
        if (auto* label = dynamic_cast<Gtk::Label*>(item->get_child())) {
            label->set_text(entry ? entry->get_string() : Glib::ustring());
        }
    });
    return factory;
}

}  // namespace

SlideInspector::SlideInspector(DeckEditor& editor)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 18), editor_(editor), appPalette_(editor.preferences()) {
    add_css_class("slide-inspector");

    layout_ = Gtk::make_managed<LayoutPicker>([this](const LayoutChange& change) {
        bool moved = editor_.currentSlide() && editor_.currentSlide()->layout == change.layout;
        editor_.editCurrentSlide(moved ? _("Change Position") : _("Change Layout"),
                                 [change](Slide& slide) { applyLayoutChange(slide, change); });
    });
    section(_("Layout")).append(*layout_);
    buildReveal();
    buildNext();
    buildAccent();
    buildProfile();
    buildToggles();

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange&) { refresh(); });
    stateConnection_ = editor_.state().changed().connect([this](PresentationField field) {
        if (field == PresentationField::current) refresh();
    });
    paletteConnection_ = appPalette_.changed().connect([this] { refresh(); });
    refresh();
}

SlideInspector::~SlideInspector() {
    if (dialog_) dialog_->hide();
}

Gtk::Box& SlideInspector::section(const std::string& title) {
    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    auto* heading = Gtk::make_managed<Gtk::Label>(title);
    heading->add_css_class("heading");
    heading->set_xalign(0);
    heading->set_wrap(true);
    box->append(*heading);
    append(*box);
    return *box;
}

void SlideInspector::buildReveal() {
    Gtk::Box& box = section(_("Reveal"));
    revealAll_.set_label(_(revealAllText));
    revealSteps_.set_label(_(revealStepsText));
    revealSteps_.set_group(revealAll_);
    for (auto [button, mode] : {std::pair{&revealAll_, RevealMode::all}, std::pair{&revealSteps_, RevealMode::reveal}}) {
        setAccessibleLabel(*button, button->get_label());
        button->signal_toggled().connect([this, button, mode] {
            if (syncing_ || !button->get_active()) return;
            // The plan stays when switching to "all", for switching back.
            editor_.editCurrentSlide(_("Change Reveal"), [mode](Slide& slide) { slide.reveal = mode; });
        });
        box.append(*button);
    }
}

void SlideInspector::buildNext() {
    Gtk::Box& box = section(_(nextHeading));
    setAccessibleLabel(next_, _(nextHeading));
    next_.set_factory(oneLineEntries());
    next_.property_selected().signal_changed().connect([this] {
        if (syncing_) return;
        auto index = next_.get_selected();
        if (index >= nextChoices_.size()) return;
        auto value = nextChoices_[index].value;
        editor_.editCurrentSlide(_("Route Next"), [value](Slide& slide) { slide.nextSlideAction = value; });
    });
    box.append(next_);
}

void SlideInspector::buildAccent() {
    accentSection_ = &section(_("Accent colour"));
    deckAccent_.set_label(_("Deck accent"));
    setAccessibleLabel(deckAccent_, _("Deck accent"));
    deckAccent_.set_tooltip_text(_("Use the deck's accent colour"));
    deckAccent_.signal_toggled().connect([this] {
        if (syncing_) return;
        bool wanted = !accentShown_;
        if (deckAccent_.get_active() != wanted) {
            syncing_ = true;
            deckAccent_.set_active(wanted);
            syncing_ = false;
        }
        setAccent(std::nullopt);
    });
    auto* custom = Gtk::make_managed<Gtk::Button>(_("Custom\u2026"));
    setAccessibleLabel(*custom, _("Custom accent colour"));
    custom->signal_clicked().connect([this] { chooseCustomAccent(); });
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    line->append(deckAccent_);
    line->append(*custom);
    accentSection_->append(*line);
    setAccessibleLabel(deckSwatches_, _("Deck palette"));
    setAccessibleLabel(appSwatches_, _("Accent palette"));
    accentSection_->append(deckSwatches_);
    accentSection_->append(appSwatches_);
}

void SlideInspector::buildProfile() {
    profileSection_ = &section(_("Browser profile"));
    setAccessibleLabel(profile_, _("Browser profile"));
    profile_.set_hexpand(true);
    profile_.set_factory(oneLineEntries());
    profile_.property_selected().signal_changed().connect([this] {
        if (syncing_) return;
        auto index = profile_.get_selected();
        if (index >= profileChoices_.size()) return;
        auto value = profileChoices_[index].value;
        editor_.editCurrentSlide(_("Choose Profile"), [value](Slide& slide) { slide.browserProfileId = value; });
    });
    auto* add = Gtk::make_managed<Gtk::Button>();
    add->set_icon_name("list-add-symbolic");
    add->set_tooltip_text(_("Add profile"));
    setAccessibleLabel(*add, _("Add profile"));
    add->signal_clicked().connect([this] {
        auto slide = editor_.currentSlideId();
        if (!slide) return;
        // A new profile of the deck, used by this slide at once: one step.
        editor_.edit(_("Add Profile"), [slide](Deck deck) {
            Uuid profile = BrowserProfileEdits::add(deck);
            return edits::updateSlide(std::move(deck), *slide, [profile](Slide& s) { s.browserProfileId = profile; });
        });
    });
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    line->append(profile_);
    line->append(*add);
    profileSection_->append(*line);
}

void SlideInspector::buildToggles() {
    Gtk::Box& box = section(_("Presenting"));
    struct Toggle {
        Gtk::CheckButton* button;
        const char* label;
        void (*set)(Slide&, bool);
    };
    const Toggle toggles[] = {
        {&subtitles_, _("Show Link Subtitles"), [](Slide& s, bool on) { s.showLinkSubtitles = on; }},
        {&fill_, _("Fill Image"), [](Slide& s, bool on) { s.imageFill = on; }},
        {&skip_, _("Skip in Presentation"), [](Slide& s, bool on) { s.isSkipped = on; }},
    };
    for (const Toggle& toggle : toggles) {
        Gtk::CheckButton* button = toggle.button;
        setAccessibleLabel(*button, button->get_label());
        button->signal_toggled().connect([this, button, label = std::string(toggle.label), set = toggle.set] {
            if (syncing_) return;
            bool on = button->get_active();
            editor_.editCurrentSlide(label, [set, on](Slide& slide) { set(slide, on); });
        });
        box.append(*button);
    }
    fill_.set_tooltip_text(_("Fill the area and crop the image, rather than fit it inside"));
}

void SlideInspector::setToggle(Gtk::CheckButton& button, bool active) {
    if (button.get_active() == active) return;
    syncing_ = true;
    button.set_active(active);
    syncing_ = false;
}

void SlideInspector::setChoices(Gtk::DropDown& dropDown, const std::vector<std::string>& titles,
                                std::vector<std::string>& shown) {
    if (titles == shown && dropDown.get_model()) return;
    shown = titles;
    std::vector<Glib::ustring> strings(titles.begin(), titles.end());
    syncing_ = true;
    dropDown.set_model(Gtk::StringList::create(strings));
    syncing_ = false;
}

void SlideInspector::refresh() {
    const Slide* slide = editor_.currentSlide();
    set_sensitive(slide != nullptr);
    if (!slide) return;
    const Deck& deck = editor_.deck();

    SlidePaintOptions look;
    look.theme = deck.theme;
    look.deckAccentHex = deck.accentHex;
    look.deckTitle = deck.title.value_or("");
    layout_->show(*slide, look);

    setToggle(revealAll_, slide->reveal == RevealMode::all);
    setToggle(revealSteps_, slide->reveal == RevealMode::reveal);

    auto next = nextRouteChoices(deck, *slide);
    if (next != nextChoices_) {
        nextChoices_ = std::move(next);
        setChoices(next_, titlesOf(nextChoices_), nextTitles_);
    }
    auto selected = static_cast<guint>(selectedNextRoute(nextChoices_, *slide));
    if (next_.get_selected() != selected) {
        syncing_ = true;
        next_.set_selected(selected);
        syncing_ = false;
    }

    refreshAccent(*slide);

    subtitles_.set_visible(slide->layout == SlideLayout::decisions);
    setToggle(subtitles_, slide->showLinkSubtitles);
    fill_.set_visible(slide->layout == SlideLayout::image);
    setToggle(fill_, slide->imageFill);
    setToggle(skip_, slide->isSkipped);

    profileSection_->set_visible(slide->layout == SlideLayout::web);
    auto profiles = profileChoices(deck);
    if (profiles != profileChoices_) {
        profileChoices_ = std::move(profiles);
        setChoices(profile_, titlesOf(profileChoices_), profileTitles_);
    }
    auto profile = static_cast<guint>(selectedProfile(profileChoices_, *slide));
    if (profile_.get_selected() != profile) {
        syncing_ = true;
        profile_.set_selected(profile);
        syncing_ = false;
    }
}

void SlideInspector::refreshAccent(const Slide& slide) {
    auto swatches = accentSwatches(editor_.deck(), appPalette_.hexes());
    auto accent = slideAccent(slide);
    bool rebuilt = swatches != swatches_;
    if (rebuilt) {
        swatches_ = swatches;
        swatchButtons_.clear();
        fillSwatches(deckSwatches_, swatches.deck);
        fillSwatches(appSwatches_, swatches.app);
    }
    if (!rebuilt && accent == accentShown_) return;
    accentShown_ = accent;
    syncing_ = true;
    deckAccent_.set_active(!accentShown_);
    for (auto& [hex, button] : swatchButtons_) button->set_active(accentShown_ == hex);
    syncing_ = false;
}

void SlideInspector::fillSwatches(Gtk::Box& row, const std::vector<std::string>& hexes) {
    while (auto* child = row.get_first_child()) row.remove(*child);
    for (const auto& hex : hexes) {
        auto colour = Color::fromHex(hex);
        if (!colour) continue;
        auto* swatch = makeColourSwatch(*colour, swatchSize);
        auto* button = Gtk::make_managed<Gtk::ToggleButton>();
        button->set_child(*swatch);
        button->set_has_frame(false);
        button->set_tooltip_text(hex);
        setAccessibleLabel(*button, _("Accent ") + hex);
        button->signal_toggled().connect([this, button, hex] {
            if (syncing_) return;
            bool wanted = accentShown_ == hex;
            if (button->get_active() != wanted) {
                syncing_ = true;
                button->set_active(wanted);  // shows the slide's colour until the deck changes
                syncing_ = false;
            }
            setAccent(hex);
        });
        swatchButtons_.emplace_back(hex, button);
        row.append(*button);
    }
    row.set_visible(row.get_first_child() != nullptr);
}

void SlideInspector::setAccent(std::optional<std::string> hex) {
    editor_.editCurrentSlide(_("Change Accent"), [hex](Slide& slide) { slide.accentHex = hex; });
}

void SlideInspector::chooseCustomAccent() {
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    dialog_ = window ? std::make_unique<Gtk::ColorChooserDialog>(_("Slide Accent"), *window)
                     : std::make_unique<Gtk::ColorChooserDialog>(_("Slide Accent"));
    dialog_->set_modal(true);
    dialog_->set_use_alpha(false);
    const Slide* slide = editor_.currentSlide();
    auto current = Color::fromHex(slide && slide->accentHex ? *slide->accentHex : std::string(defaultAccentHex));
    if (current) {
        Gdk::RGBA rgba;
        rgba.set_rgba(current->red, current->green, current->blue, 1);
        dialog_->set_rgba(rgba);
    }
    dialog_->signal_response().connect([this](int response) {
        if (response == Gtk::ResponseType::OK) {
            Gdk::RGBA rgba = dialog_->get_rgba();
            setAccent(Color{rgba.get_red(), rgba.get_green(), rgba.get_blue()}.hex());
        }
        dialog_->hide();
    });
    dialog_->show();
}

}  // namespace lectern
