#pragma once

#include <glib/gi18n.h>

#include <adwaita.h>
#include <gtkmm.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "model/deck.h"
#include "base/scheduler.h"
#include "web/web_page.h"
#include "web/web_slide_checker.h"

namespace lectern {

class PagePictures;

// The sheet of "Check Web Slides…": a modal window over the deck window that
// loads every web slide off-screen and lists how each went, with a button
// to go to each slide, the summary once done, "Check Again" and "Done".
// It starts checking when made; closing it (Done, Escape, the window's own
// close) stops the check.
class WebCheckSheet : public Gtk::Window {
public:
    static constexpr const char* title = N_("Check Web Slides");
    static constexpr const char* subtitle = N_("Loads each page off-screen in the slide’s own browser profile.");

    // `goToSlide` gets a slide's index in the deck. `closed` is called once,
    // on a later turn of the main loop after the sheet closed by itself, so
    // the owner may destroy the sheet there; destroying the sheet first
    // closes it without a call.
    WebCheckSheet(Gtk::Window& parent, WebPageFactory& pages, Scheduler& scheduler, Deck deck,
                  std::function<void(std::size_t)> goToSlide, std::function<void()> closed,
                  PagePictures* pictures = nullptr);
    ~WebCheckSheet() override;

    // The deck that "Check Again" checks, after an edit.
    void setDeck(Deck deck) { deck_ = std::move(deck); }
    // Checks every web slide again from the start ("Check Again").
    void checkAgain();

    WebSlideChecker& checker() { return checker_; }
    // For tests: what the sheet shows.
    const Gtk::Label& summaryLabel() const { return summary_; }
    Gtk::ListBox& rows() { return list_; }
    Gtk::Button& checkAgainButton() { return checkAgain_; }
    Gtk::Button& doneButton() { return done_; }
    // The row at `position`, its outcome icon and its "Go to slide N" button.
    AdwActionRow* row(std::size_t position) const;
    Gtk::Image* outcomeIcon(std::size_t position) const;
    Gtk::Button* goToButton(std::size_t position) const;

private:
    struct Row {
        Uuid id;
        AdwActionRow* row = nullptr;
        Gtk::Image* icon = nullptr;
        Gtk::Spinner* spinner = nullptr;
        Gtk::Button* goTo = nullptr;
    };

    void refresh();
    void rebuildRows();
    void updateRow(std::size_t position);
    bool onCloseRequest();

    Deck deck_;
    std::function<void(std::size_t)> goToSlide_;
    std::function<void()> closed_;
    WebSlideChecker checker_;
    Signal<>::Connection checkerConnection_;
    sigc::connection closedCall_;

    Gtk::Box content_{Gtk::Orientation::VERTICAL, 12};
    Gtk::Label intro_;
    Gtk::ScrolledWindow scroller_;
    Gtk::ListBox list_;
    Gtk::Box progress_{Gtk::Orientation::HORIZONTAL, 8};
    Gtk::Spinner spinner_;
    Gtk::Label summary_;
    Gtk::Button checkAgain_{_("Check Again")};
    Gtk::Button done_{_("Done")};
    std::vector<Row> rows_;
};

}  // namespace lectern
