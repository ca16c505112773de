#pragma once

#include <glib/gi18n.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/deck.h"
#include "base/signal.h"
#include "model/uuid.h"
#include "base/scheduler.h"
#include "web/page_probe.h"
#include "web/web_check_outcome.h"
#include "web/web_page.h"

namespace lectern {

class PagePictures;

// Checks that every web slide of a deck still loads: each page in a hidden
// page of the slide's own browser profile, at most three at a time, started
// in deck order. One per open check (the sheet, a command-line run).
class WebSlideChecker {
public:
    static constexpr std::size_t maxInFlight = 3;
    static constexpr const char* noUrlMessage = N_("No URL set");

    struct Entry {
        Uuid id;                          // the slide's
        std::size_t index = 0;            // the slide's place in the deck
        std::string title;
        std::optional<std::string> url;   // none: listed, never loaded
        std::optional<Uuid> profileId;    // none: the shared browser session
        std::optional<WebCheckOutcome> outcome;  // none: not checked yet

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    WebSlideChecker(WebPageFactory& pages, Scheduler& scheduler,
                    double timeLimitSeconds = PageProbe::defaultTimeLimitSeconds);
    ~WebSlideChecker();
    WebSlideChecker(const WebSlideChecker&) = delete;
    WebSlideChecker& operator=(const WebSlideChecker&) = delete;

    // Lists the deck's web slides and checks them, after cancelling a check
    // still running. Slides without an address fail at once with
    // "No URL set".
    void run(const Deck& deck);
    // Stops every page still loading; entries keep the outcomes they have.
    void cancel();
    // Where each page that loaded well leaves its slide's picture (null:
    // nowhere), so that a talk without network still shows it.
    void setPictures(PagePictures* pictures) { pictures_ = pictures; }

    const std::vector<Entry>& entries() const { return entries_; }
    bool isRunning() const { return running_; }
    // Whether the page of the entry at `position` is loading now.
    bool isLoading(std::size_t position) const { return position < probes_.size() && probes_[position]; }
    // Entries checked so far, and those whose outcome needs attention.
    std::size_t checkedCount() const;
    std::size_t attentionCount() const;

    // "04  Pricing": the slide's number and title ("Untitled" when empty).
    static std::string rowTitle(const Entry& entry);
    // The line under the rows: progress while running, the result after.
    std::string summary() const;

    // After every change of entries or isRunning.
    Signal<> changed;

private:
    void startMore();
    void probeDone(std::size_t position, std::uint64_t generation, WebCheckOutcome outcome);
    void stopProbes();

    WebPageFactory& pages_;
    Scheduler& scheduler_;
    double timeLimitSeconds_;
    PagePictures* pictures_ = nullptr;
    std::vector<Entry> entries_;
    std::vector<std::shared_ptr<PageProbe>> probes_;  // by entry; null when none loads
    bool running_ = false;
    std::size_t next_ = 0;      // the next entry to start
    std::size_t inFlight_ = 0;
    bool starting_ = false;
    std::uint64_t generation_ = 0;  // which run a probe's outcome belongs to
};

}  // namespace lectern
