#include "web/platform/web_check_sheet.h"

#include <glib/gi18n.h>

#include <string>
#include <utility>

#include "base/translation.h"

namespace lectern {

namespace {

struct OutcomeLook {
    const char* icon;
    const char* style;
};

OutcomeLook lookOf(WebCheckOutcome::Kind kind) {
    switch (kind) {
        case WebCheckOutcome::Kind::ok: return {"emblem-ok-symbolic", "success"};
        case WebCheckOutcome::Kind::redirected: return {"dialog-warning-symbolic", "warning"};
        case WebCheckOutcome::Kind::failed: break;
    }
    return {"dialog-error-symbolic", "error"};
}

// The row's second line: the outcome's own text, "Loaded" for a page that
// simply loaded, or where it stands while the check runs.
std::string statusText(const WebSlideChecker::Entry& entry, bool loading) {
    if (entry.outcome) return entry.outcome->kind == WebCheckOutcome::Kind::ok ? _("Loaded") : entry.outcome->text;
    return loading ? _("Loading…") : _("Waiting");
}

}  // namespace

WebCheckSheet::WebCheckSheet(Gtk::Window& parent, WebPageFactory& pages, Scheduler& scheduler, Deck deck,
                             std::function<void(std::size_t)> goToSlide, std::function<void()> closed,
                             PagePictures* pictures)
    : deck_(std::move(deck)),
      goToSlide_(std::move(goToSlide)),
      closed_(std::move(closed)),
      checker_(pages, scheduler) {
    checker_.setPictures(pictures);
    set_title(_(title));
    set_transient_for(parent);
    set_modal(true);
    set_destroy_with_parent(true);
    set_hide_on_close(true);  // the owner destroys the sheet when told it closed
    set_default_size(560, 520);

    GtkWidget* header = adw_header_bar_new();
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), adw_window_title_new(_(title), ""));
    adw_header_bar_set_show_start_title_buttons(ADW_HEADER_BAR(header), FALSE);
    adw_header_bar_set_show_end_title_buttons(ADW_HEADER_BAR(header), FALSE);
    adw_header_bar_pack_start(ADW_HEADER_BAR(header), GTK_WIDGET(checkAgain_.gobj()));
    done_.add_css_class("suggested-action");
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(done_.gobj()));
    set_titlebar(*Glib::wrap(header));

    intro_.set_text(_(subtitle));
    intro_.set_wrap(true);
    intro_.set_xalign(0);
    intro_.add_css_class("dim-label");

    list_.add_css_class("boxed-list");
    list_.set_selection_mode(Gtk::SelectionMode::NONE);
    list_.set_valign(Gtk::Align::START);
    scroller_.set_child(list_);
    scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller_.set_vexpand(true);

    summary_.set_xalign(0);
    summary_.set_wrap(true);
    summary_.set_hexpand(true);
    progress_.append(spinner_);
    progress_.append(summary_);

    content_.set_margin(18);
    content_.append(intro_);
    content_.append(scroller_);
    content_.append(progress_);
    set_child(content_);

    checkAgain_.signal_clicked().connect([this] { checkAgain(); });
    done_.signal_clicked().connect([this] { close(); });
    signal_close_request().connect(sigc::mem_fun(*this, &WebCheckSheet::onCloseRequest), false);

    auto shortcuts = Gtk::ShortcutController::create();
    shortcuts->set_scope(Gtk::ShortcutScope::MANAGED);
    shortcuts->add_shortcut(Gtk::Shortcut::create(Gtk::KeyvalTrigger::create(GDK_KEY_Escape),
                                                  Gtk::NamedAction::create("window.close")));
    add_controller(shortcuts);

    checkerConnection_ = checker_.changed.connect([this] { refresh(); });
    checker_.run(deck_);
    refresh();
    done_.grab_focus();
}

WebCheckSheet::~WebCheckSheet() {
    closedCall_.disconnect();
    checkerConnection_.disconnect();
    checker_.cancel();
}

void WebCheckSheet::checkAgain() { checker_.run(deck_); }

bool WebCheckSheet::onCloseRequest() {
    checker_.cancel();
    if (!closedCall_.connected()) {
        // Told later: the owner may destroy the sheet, which is on the stack now.
        closedCall_ = Glib::signal_idle().connect([this] {
            if (closed_) closed_();
            return false;
        });
    }
    return false;  // hides the sheet
}

AdwActionRow* WebCheckSheet::row(std::size_t position) const {
    return position < rows_.size() ? rows_[position].row : nullptr;
}

Gtk::Image* WebCheckSheet::outcomeIcon(std::size_t position) const {
    return position < rows_.size() ? rows_[position].icon : nullptr;
}

Gtk::Button* WebCheckSheet::goToButton(std::size_t position) const {
    return position < rows_.size() ? rows_[position].goTo : nullptr;
}

void WebCheckSheet::refresh() {
    const auto& entries = checker_.entries();
    bool sameRows = rows_.size() == entries.size();
    for (std::size_t n = 0; sameRows && n < entries.size(); ++n) sameRows = rows_[n].id == entries[n].id;
    if (!sameRows) rebuildRows();
    for (std::size_t n = 0; n < rows_.size(); ++n) updateRow(n);

    bool running = checker_.isRunning();
    spinner_.set_visible(running);
    spinner_.set_spinning(running);
    summary_.set_text(checker_.summary());
    if (running) summary_.remove_css_class("heading");
    else summary_.add_css_class("heading");
    checkAgain_.set_sensitive(!entries.empty());
    list_.set_visible(!entries.empty());
}

void WebCheckSheet::rebuildRows() {
    while (auto* row = list_.get_row_at_index(0)) list_.remove(*row);
    rows_.clear();
    for (const auto& entry : checker_.entries()) {
        Row row;
        row.id = entry.id;
        row.row = ADW_ACTION_ROW(adw_action_row_new());
        // Titles are the deck's text, never markup.
        adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row.row), FALSE);
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row.row), WebSlideChecker::rowTitle(entry).c_str());
        adw_action_row_set_subtitle_lines(row.row, 0);

        row.icon = Gtk::make_managed<Gtk::Image>();
        row.spinner = Gtk::make_managed<Gtk::Spinner>();
        row.spinner->set_size_request(16, 16);
        auto* status = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
        status->set_size_request(16, -1);
        status->set_valign(Gtk::Align::CENTER);
        status->append(*row.icon);
        status->append(*row.spinner);
        adw_action_row_add_prefix(row.row, GTK_WIDGET(status->gobj()));

        std::size_t index = entry.index;
        std::string label = formatText(_("Go to slide %zu"), index + 1);
        row.goTo = Gtk::make_managed<Gtk::Button>(label);
        row.goTo->set_valign(Gtk::Align::CENTER);
        row.goTo->signal_clicked().connect([this, index] {
            if (goToSlide_) goToSlide_(index);
        });
        adw_action_row_add_suffix(row.row, GTK_WIDGET(row.goTo->gobj()));

        gtk_list_box_append(list_.gobj(), GTK_WIDGET(row.row));
        rows_.push_back(row);
    }
}

void WebCheckSheet::updateRow(std::size_t position) {
    const auto& entry = checker_.entries()[position];
    Row& row = rows_[position];
    bool loading = checker_.isLoading(position);
    adw_action_row_set_subtitle(row.row, statusText(entry, loading).c_str());

    row.spinner->set_visible(loading);
    row.spinner->set_spinning(loading);
    for (const char* style : {"success", "warning", "error"}) row.icon->remove_css_class(style);
    if (entry.outcome) {
        OutcomeLook look = lookOf(entry.outcome->kind);
        row.icon->set_from_icon_name(look.icon);
        row.icon->add_css_class(look.style);
        row.icon->set_visible(true);
    } else {
        row.icon->set_visible(false);
    }
}

}  // namespace lectern
