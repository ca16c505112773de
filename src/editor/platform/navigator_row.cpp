#include "editor/platform/navigator_row.h"

#include <glib/gi18n.h>
#include "base/platform/accessible.h"

#include <algorithm>

#include "editor/navigator_rules.h"

namespace lectern {

namespace {

bool sameLook(const SlidePaintOptions& a, const SlidePaintOptions& b) {
    return a.theme == b.theme && a.deckAccentHex == b.deckAccentHex && a.deckTitle == b.deckTitle &&
           a.drawWebPlaceholder == b.drawWebPlaceholder;
}

}  // namespace

NavigatorRow::NavigatorRow(std::function<void(const Uuid&, const std::string&)> commit, std::function<void()> cancel)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 0), commit_(std::move(commit)), cancel_(std::move(cancel)) {
    add_css_class("navigator-row");

    sectionTitle_.add_css_class("navigator-section-title");
    sectionTitle_.add_css_class("caption-heading");
    sectionTitle_.set_xalign(0);
    sectionTitle_.set_ellipsize(Pango::EllipsizeMode::END);
    sectionTitle_.set_visible(false);
    append(sectionTitle_);

    number_.add_css_class("navigator-number");
    number_.add_css_class("numeric");
    number_.add_css_class("dim-label");
    number_.set_width_chars(2);
    number_.set_xalign(1);
    number_.set_valign(Gtk::Align::START);
    line_.append(number_);

    thumbnail_.set_valign(Gtk::Align::START);
    thumbnail_.set_hexpand(false);
    line_.append(thumbnail_);

    title_.set_xalign(0);
    title_.set_wrap(true);
    title_.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    title_.set_lines(2);
    title_.set_ellipsize(Pango::EllipsizeMode::END);
    title_.set_hexpand(true);
    title_.set_valign(Gtk::Align::START);
    title_.set_width_chars(6);
    title_.set_max_width_chars(20);
    line_.append(title_);

    entry_.set_hexpand(true);
    entry_.set_valign(Gtk::Align::START);
    entry_.set_width_chars(6);
    entry_.set_visible(false);
    setAccessibleLabel(entry_, _("Slide title"));
    entry_.signal_activate().connect([this] { finishRename(true); });
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType) {
            if (keyval != GDK_KEY_Escape || !renaming_) return false;
            finishRename(false);
            return true;
        },
        false);
    entry_.add_controller(keys);
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_leave().connect([this] {
        if (renaming_) finishRename(true);
    });
    entry_.add_controller(focus);
    line_.append(entry_);

    skipped_.set_from_icon_name("view-conceal-symbolic");
    skipped_.add_css_class("navigator-skipped");
    skipped_.set_tooltip_text(_("Skipped in presentation"));
    setAccessibleLabel(skipped_, _("Skipped in presentation"));
    skipped_.set_valign(Gtk::Align::START);
    skipped_.set_visible(false);
    line_.append(skipped_);
    append(line_);

    sectionEnd_.add_css_class("navigator-section-end");
    sectionEnd_.set_visible(false);
    append(sectionEnd_);
}

Gtk::Widget& NavigatorRow::cell() {
    auto* parent = get_parent();
    return parent ? *parent : static_cast<Gtk::Widget&>(*this);
}

void NavigatorRow::show(const Deck& deck, std::size_t index, const SlidePaintOptions& options) {
    const Slide& slide = deck.slides[index];
    if (slideId_ != slide.id && renaming_) endRename();
    slideId_ = slide.id;
    index_ = index;

    number_.set_text(navigatorRowNumber(index));
    // Wide enough for the deck's longest number, so that the thumbnails line up.
    number_.set_width_chars(static_cast<int>(navigatorRowNumber(deck.slides.size() - 1).size()));
    title_.set_text(navigatorRowTitle(slide));
    if (navigatorRowTitle(slide) == slide.title) title_.remove_css_class("dim-label");
    else title_.add_css_class("dim-label");
    skipped_.set_visible(slide.isSkipped);
    if (slide.isSkipped) add_css_class("skipped"); else remove_css_class("skipped");

    sectionTitle_.set_visible(slide.isSection);
    if (slide.isSection) {
        std::string section = slide.sectionTitle.value_or("");
        sectionTitle_.set_text(section.empty() ? _("Untitled section") : section);
    }
    bool member = !slide.isSection && slide.sectionId;
    line_.set_margin_start(member ? memberIndent : 0);
    sectionEnd_.set_visible(deck.closesSection(index));

    // The list's cell is what a screen reader lands on; the section a row
    // opens is its description.
    std::string label = navigatorRowAccessibleName(index, slide);
    for (Gtk::Widget* widget : {static_cast<Gtk::Widget*>(this), &cell()}) {
        setAccessibleLabel(*widget, label);
        if (slide.isSection) {
            gtk_accessible_update_property(GTK_ACCESSIBLE(widget->gobj()), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                           sectionTitle_.get_text().c_str(), -1);
        } else {
            gtk_accessible_reset_property(GTK_ACCESSIBLE(widget->gobj()), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION);
        }
    }

    if (!drawn_ || !(*drawn_ == slide) || !sameLook(drawnOptions_, options)) {
        thumbnail_.setSlide(&slide, options);
        drawn_ = slide;
        drawnOptions_ = options;
    }
}

void NavigatorRow::clear() {
    if (renaming_) endRename();
    slideId_.reset();
    drawn_.reset();
    thumbnail_.setSlide(nullptr, {});
    title_.set_text("");
    number_.set_text("");
    skipped_.set_visible(false);
    sectionTitle_.set_visible(false);
    sectionEnd_.set_visible(false);
    setGroupTarget(false);
}

void NavigatorRow::beginRename(const std::string& title) {
    renaming_ = true;
    entry_.set_text(title);
    title_.set_visible(false);
    entry_.set_visible(true);
    entry_.grab_focus();
    entry_.select_region(0, -1);
}

void NavigatorRow::endRename() {
    renaming_ = false;
    // The title first: hiding the focused field moves the focus, and it
    // must not land on the field again.
    title_.set_visible(true);
    entry_.set_visible(false);
}

void NavigatorRow::finishRename(bool commit) {
    if (!renaming_ || !slideId_) return;
    Uuid slide = *slideId_;
    std::string text = entry_.get_text();
    endRename();
    if (commit) commit_(slide, text); else cancel_();
}

void NavigatorRow::setGroupTarget(bool target) {
    if (target) cell().add_css_class("navigator-group-target");
    else cell().remove_css_class("navigator-group-target");
}

}  // namespace lectern
