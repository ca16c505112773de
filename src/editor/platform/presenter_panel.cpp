#include "editor/platform/presenter_panel.h"

#include <glib/gi18n.h>

#include <adwaita.h>

#include "base/platform/accessible.h"
#include "base/translation.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_slides.h"
#include "present/action_runner.h"
#include "present/presenter_timer.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

Gtk::Label* sectionTitle(const char* text) {
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    label->add_css_class("caption-heading");
    label->add_css_class("dim-label");
    label->set_xalign(0);
    return label;
}

// A slide picture with its title above and its name below; `aside` goes to
// the right of the title.
Gtk::Box* slideColumn(const char* title, SlideThumbnail& thumbnail, Gtk::Label& caption, Gtk::Widget* aside) {
    auto* column = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    auto* heading = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* label = sectionTitle(title);
    label->set_hexpand(true);
    // A small slide keeps its counter whole; the heading gives way.
    label->set_ellipsize(Pango::EllipsizeMode::END);
    heading->append(*label);
    if (aside) heading->append(*aside);
    column->append(*heading);
    column->append(thumbnail);
    caption.set_ellipsize(Pango::EllipsizeMode::END);
    caption.set_xalign(0);
    caption.set_max_width_chars(1);
    caption.set_hexpand(true);
    caption.add_css_class("caption");
    column->append(caption);
    return column;
}

std::string slideTitle(const Slide& slide) { return slide.title.empty() ? _("Untitled slide") : slide.title; }

}  // namespace

PresenterPanel::PresenterPanel(DeckWindow& deckWindow)
    : deckWindow_(deckWindow),
      state_(deckWindow.state()),
      timer_(deckWindow.state(), [this] { return deckWindow_.deck().targetMinutes; }),
      settings_(deckWindow.editor().preferences()) {
    set_title(_("Presenter Display"));
    auto remembered = settings_.windowSize();
    set_default_size(remembered ? remembered->width : width, remembered ? remembered->height : height);
    // The size it is left at is the size it opens at next time, in this
    // window or another, also after a restart. The default size follows
    // the person's resizing but not maximizing or full screen.
    signal_hide().connect([this] {
        int w = 0, h = 0;
        get_default_size(w, h);
        settings_.setWindowSize({w, h});
    });
    set_transient_for(deckWindow);
    set_destroy_with_parent(true);
    add_css_class("presenter-panel");

    GtkWidget* header = adw_header_bar_new();
    GtkWidget* title = adw_window_title_new(_("Presenter Display"), deckWindow.get_title().c_str());
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), title);
    gtk_window_set_titlebar(gobj(), header);

    // Controls: step back and forth as the arrow keys do, the timer, the grid.
    auto button = [](const char* icon, const char* tooltip) {
        auto* b = Gtk::make_managed<Gtk::Button>();
        b->set_icon_name(icon);
        b->set_tooltip_text(tooltip);
        setAccessibleLabel(*b, tooltip);
        return b;
    };
    auto* previous = button("go-previous-symbolic", _("Previous Slide"));
    previous->signal_clicked().connect([this] { state_.previous(deckWindow_.deck().slides); });
    auto* next = button("go-next-symbolic", _("Next Slide"));
    next->signal_clicked().connect([this] { state_.next(deckWindow_.deck().slides); });
    auto* navigation = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    navigation->add_css_class("linked");
    navigation->append(*previous);
    navigation->append(*next);
    auto* overview = button("view-grid-symbolic", _("Overview Grid"));
    overview->signal_clicked().connect([this] { state_.toggleOverview(); });
    timer_.add_css_class("large");
    timer_.set_hexpand(true);
    timer_.set_halign(Gtk::Align::CENTER);
    auto* controls = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    controls->append(*navigation);
    controls->append(timer_);
    controls->append(*overview);

    // Elapsed time, time left (with a talk length only) and the wall clock.
    auto* times = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 18);
    times->set_halign(Gtk::Align::CENTER);
    for (Gtk::Label* label : {&elapsed_, &remaining_, &clock_}) {
        label->add_css_class("numeric");
        label->add_css_class("presenter-time");
        times->append(*label);
    }
    timesConnection_ = state_.changed().connect([this](PresentationField field) {
        if (field == PresentationField::now || field == PresentationField::timerStart) refreshTimes();
    });
    // The clock moves on without the timer running too.
    clockTimer_ = Glib::signal_timeout().connect_seconds(
        [this] {
            refreshTimes();
            return true;
        },
        5);

    // The slide on screen and the one that comes next.
    counter_.add_css_class("numeric");
    counter_.add_css_class("caption");
    counter_.add_css_class("dim-label");
    slides_ = Gtk::make_managed<PresenterSlides>(*slideColumn(_("Current"), current_, currentCaption_, &counter_),
                                                 *slideColumn(_("Next"), next_, nextCaption_, nullptr));
    slides_->set_valign(Gtk::Align::START);

    // Said in the presenter's window only: the audience sees the page.
    signInNote_.set_wrap(true);
    signInNote_.set_xalign(0);
    signInNote_.add_css_class("warning");
    signInNote_.set_visible(false);

    notes_.set_wrap(true);
    notes_.set_xalign(0);
    notes_.set_yalign(0);
    notes_.set_selectable(true);
    notes_.add_css_class("panel-notes");
    auto* notesScroller = Gtk::make_managed<Gtk::ScrolledWindow>();
    notesScroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    notesScroller->set_vexpand(true);
    notesScroller->set_min_content_height(72);
    applyNotesPoints(settings_.notesPoints());
    notesScroller->set_child(notes_);
    notesScroller->add_css_class("card");
    notesScroller->add_css_class("panel-notes-frame");

    actions_.add_css_class("boxed-list");
    actions_.set_selection_mode(Gtk::SelectionMode::NONE);
    actionsSection_.append(*sectionTitle(_("Actions")));
    actionsSection_.append(actions_);

    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
    content->set_margin(12);
    content->append(*controls);
    content->append(*times);
    content->append(*slides_);
    content->append(signInNote_);
    offlineCopy_.set_xalign(0);
    offlineCopy_.set_wrap(true);
    offlineCopy_.add_css_class("warning");
    content->append(offlineCopy_);
    copyConnection_ = deckWindow_.webCard().copyChanged().connect([this] { refreshOfflineCopy(); });
    picturesConnection_ = WebServices::shared().pictures().saved().connect([this](const Uuid&) { refreshSlides(); });
    auto* notesSection = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    notesSection->set_vexpand(true);
    notesSection->append(*sectionTitle(_("Notes")));
    notesSection->append(*notesScroller);
    content->append(*notesSection);
    content->append(actionsSection_);
    set_child(*content);

    // Keys pressed while the panel has the focus still drive the talk: the
    // deck window's key monitor first, then its shortcuts.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType modifiers) {
            if (handleNotesKey(keyval, modifiers)) return true;
            if (deckWindow_.handleKey(keyval, modifiers)) return true;
            auto app = deckWindow_.get_application();
            if (!app) return false;
            auto accelerator = Gtk::Accelerator::name(keyval, modifiers & Gtk::Accelerator::get_default_mod_mask());
            for (const auto& action : app->get_actions_for_accel(accelerator)) {
                if (action.raw().rfind("win.", 0) == 0 && deckWindow_.activate_action(action)) return true;
            }
            return false;
        },
        false);
    add_controller(keys);

    // Closing the panel is the same as toggling it off.
    signal_close_request().connect(
        [this] {
            if (state_.presenterPanelVisible()) state_.togglePresenterPanel();
            set_visible(false);
            return true;
        },
        false);

    runnerConnection_ = state_.autoRun().runner().changed().connect([this] { refreshRunStates(); });
    signInConnection_ = deckWindow.webCard().signInFormChanged().connect([this] { refreshSignInNote(); });
    refresh();
}

void PresenterPanel::refreshOfflineCopy() {
    const bool copy = deckWindow_.webCard().showingCopy();
    offlineCopy_.set_visible(copy);
    if (copy) {
        offlineCopy_.set_text(
            formatText(_("Offline copy shown on slide %lld"), static_cast<long long>(state_.current() + 1)));
    }
}

PresenterPanel::~PresenterPanel() { clockTimer_.disconnect(); }

void PresenterPanel::refreshTimes() {
    const double elapsed = state_.elapsed();
    const auto target = deckWindow_.deck().targetMinutes;
    // TRANSLATORS: the time since the timer started, as 12:34.
    elapsed_.set_text(formatText(_("Elapsed %s"), PresenterTimer::format(elapsed).c_str()));
    remaining_.set_visible(target.has_value());
    // TRANSLATORS: the time left of the talk, as 12:34, or +01:02 past its end.
    if (target) remaining_.set_text(formatText(_("Remaining %s"), PresenterTimer::text(elapsed, target).c_str()));
    auto now = Glib::DateTime::create_now_local();
    // TRANSLATORS: the time of day, as 14:05.
    clock_.set_text(formatText(_("Clock %s"), now.format("%H:%M").c_str()));
}

void PresenterPanel::applyNotesPoints(int points) {
    notesPoints_ = points;
    Pango::AttrList attributes;
    auto size = Pango::Attribute::create_attr_size(points * PANGO_SCALE);
    attributes.insert(size);
    notes_.set_attributes(attributes);
}

bool PresenterPanel::handleNotesKey(guint keyval, Gdk::ModifierType modifiers) {
    if ((modifiers & Gdk::ModifierType::CONTROL_MASK) != Gdk::ModifierType::CONTROL_MASK) return false;
    if ((modifiers & Gdk::ModifierType::ALT_MASK) == Gdk::ModifierType::ALT_MASK) return false;
    int steps = 0;
    switch (keyval) {
    case GDK_KEY_plus:
    case GDK_KEY_equal:
    case GDK_KEY_KP_Add: steps = 1; break;
    case GDK_KEY_minus:
    case GDK_KEY_underscore:
    case GDK_KEY_KP_Subtract: steps = -1; break;
    case GDK_KEY_0:
    case GDK_KEY_KP_0: steps = 0; break;
    default: return false;
    }
    applyNotesPoints(settings_.stepNotesPoints(steps));
    return true;
}

std::optional<std::int64_t> PresenterPanel::upcomingSlide(const std::vector<Slide>& slides, std::int64_t current,
                                                          bool editorOpen) {
    auto count = static_cast<std::int64_t>(slides.size());
    if (current >= 0 && current < count) {
        const Slide& slide = slides[static_cast<std::size_t>(current)];
        if (slide.nextSlideAction) {
            if (auto id = Uuid::parse(*slide.nextSlideAction)) {
                for (std::int64_t i = 0; i < count; ++i) {
                    if (slides[static_cast<std::size_t>(i)].id == *id) return i;
                }
            }
        }
    }
    for (std::int64_t i = std::max<std::int64_t>(current + 1, 0); i < count; ++i) {
        if (editorOpen || !slides[static_cast<std::size_t>(i)].isSkipped) return i;
    }
    return std::nullopt;
}

void PresenterPanel::refreshSlides() {
    const Deck& deck = deckWindow_.deck();
    const Slide* slide = state_.currentSlide(deck.slides);
    auto count = static_cast<std::int64_t>(deck.slides.size());
    // A web slide shows its page as it last looked, when there is a picture.
    auto options = [this](const Slide* shown) {
        SlidePaintOptions options = deckWindow_.paintOptions();
        if (shown) options.webPicture = WebServices::shared().pictures().pageOf(*shown);
        return options;
    };

    current_.setSlide(slide, options(slide));
    currentCaption_.set_text(slide ? slideTitle(*slide) : _("No slide selected"));
    counter_.set_text(count == 0 ? "" : std::to_string(state_.current() + 1) + " / " + std::to_string(count));

    auto upcoming = upcomingSlide(deck.slides, state_.current(), state_.editorOpen());
    const Slide* nextSlide = upcoming ? &deck.slides[static_cast<std::size_t>(*upcoming)] : nullptr;
    next_.setSlide(nextSlide, options(nextSlide));
    nextCaption_.set_text(nextSlide ? slideTitle(*nextSlide) : _("End of Deck"));
}

void PresenterPanel::refresh() {
    const Deck& deck = deckWindow_.deck();
    const Slide* slide = state_.currentSlide(deck.slides);
    refreshSlides();

    refreshOfflineCopy();
    refreshTimes();
    // Another display may have changed the size since.
    if (settings_.notesPoints() != notesPoints_) applyNotesPoints(settings_.notesPoints());
    bool noNotes = !slide || slide->notes.empty();
    notes_.set_text(noNotes ? _("No presenter notes for this slide.") : slide->notes);
    if (noNotes) notes_.add_css_class("dim-label"); else notes_.remove_css_class("dim-label");

    while (auto* row = actions_.get_row_at_index(0)) actions_.remove(*row);
    rows_.clear();
    if (slide) {
        for (const SlideAction& action : slide->actions) actions_.append(*actionRow(*slide, action));
    }
    actionsSection_.set_visible(!rows_.empty());
    refreshRunStates();
    refreshSignInNote();
}

Gtk::ListBoxRow* PresenterPanel::actionRow(const Slide& slide, const SlideAction& action) {
    std::string displayName = ActionRunner::displayName(action);
    auto* name = Gtk::make_managed<Gtk::Label>(displayName);
    name->set_xalign(0);
    name->set_ellipsize(Pango::EllipsizeMode::END);
    auto* outcome = Gtk::make_managed<Gtk::Label>();
    outcome->set_xalign(0);
    outcome->set_ellipsize(Pango::EllipsizeMode::END);
    outcome->add_css_class("caption");
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
    texts->append(*name);
    texts->append(*outcome);

    // The whole result below the line: wrapped, and selectable so that a
    // status or an excerpt can be copied.
    auto* details = Gtk::make_managed<Gtk::Label>();
    details->set_xalign(0);
    details->set_wrap(true);
    details->set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    details->set_selectable(true);
    details->set_max_width_chars(1);
    details->set_hexpand(true);
    details->set_margin_top(4);
    details->add_css_class("caption");
    details->add_css_class("monospace");
    auto* expander = Gtk::make_managed<Gtk::Expander>();
    expander->set_label_widget(*texts);
    expander->set_child(*details);
    expander->set_hexpand(true);
    expander->set_valign(Gtk::Align::CENTER);
    setAccessibleLabel(*expander, formatText(_("Result of %s"), displayName.c_str()));

    auto* spinner = Gtk::make_managed<Gtk::Spinner>();
    spinner->set_valign(Gtk::Align::START);
    auto* run = Gtk::make_managed<Gtk::Button>();
    run->set_icon_name("media-playback-start-symbolic");
    run->set_tooltip_text(_("Run"));
    setAccessibleLabel(*run, formatText(_("Run %s"), displayName.c_str()));
    run->set_valign(Gtk::Align::START);
    run->add_css_class("flat");
    run->add_css_class("circular");
    Uuid slideId = slide.id;
    Uuid actionId = action.id;
    run->signal_clicked().connect([this, slideId, actionId] {
        // Find the action again: the deck may have changed since.
        const Deck& deck = deckWindow_.deck();
        auto index = deck.indexOfSlide(slideId);
        if (!index) return;
        const Slide& owner = deck.slides[*index];
        for (const auto& candidate : owner.actions) {
            if (candidate.id == actionId) state_.runManually(candidate, owner, deck);
        }
    });
    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
    box->set_margin_start(12);
    box->set_margin_end(6);
    box->set_margin_top(6);
    box->set_margin_bottom(6);
    box->append(*expander);
    box->append(*spinner);
    box->append(*run);
    auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
    row->set_activatable(false);
    row->set_child(*box);
    rows_.push_back({action.id, outcome, spinner, expander, details});
    return row;
}

void PresenterPanel::refreshSignInNote() {
    const WebPaneController* pane = deckWindow_.webCard().pane();
    std::optional<std::size_t> index;
    if (pane && pane->showsSignInForm() && pane->inputs().slideId) {
        index = deckWindow_.deck().indexOfSlide(*pane->inputs().slideId);
    }
    signInNote_.set_visible(index.has_value());
    // TRANSLATORS: the number of the slide whose live page lost its sign-in.
    if (index) {
        signInNote_.set_text(
            formatText(_("Slide %s’s page shows a sign-in form"), std::to_string(*index + 1).c_str()));
    }
}

void PresenterPanel::refreshRunStates() {
    auto& runner = state_.autoRun().runner();
    for (const auto& row : rows_) {
        auto runState = runner.state(row.id);
        using Kind = ActionRunner::RunState::Kind;
        row.spinner->set_visible(runState.kind == Kind::running);
        row.spinner->set_spinning(runState.kind == Kind::running);
        switch (runState.kind) {
        case Kind::idle: row.outcome->set_text(_("Not run yet")); break;
        case Kind::running: row.outcome->set_text(_("Running…")); break;
        case Kind::success:
        case Kind::failure: row.outcome->set_text(runState.text); break;
        }
        // Running shows what the last run gave until the new one ends.
        auto details = runner.details(row.id);
        std::string full = details ? ActionRunner::describe(*details) : std::string(_("Not run yet"));
        row.details->set_text(full);
        row.outcome->set_tooltip_text(details ? full : "");
        for (const char* name : {"dim-label", "success", "error"}) row.outcome->remove_css_class(name);
        row.outcome->add_css_class(runState.kind == Kind::success   ? "success"
                                   : runState.kind == Kind::failure ? "error"
                                                                    : "dim-label");
    }
}

}  // namespace lectern
