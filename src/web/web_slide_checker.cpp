#include "web/web_slide_checker.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "base/translation.h"
#include "web/page_pictures.h"

namespace lectern {

WebSlideChecker::WebSlideChecker(WebPageFactory& pages, Scheduler& scheduler, double timeLimitSeconds)
    : pages_(pages), scheduler_(scheduler), timeLimitSeconds_(timeLimitSeconds) {}

WebSlideChecker::~WebSlideChecker() { stopProbes(); }

void WebSlideChecker::run(const Deck& deck) {
    stopProbes();
    ++generation_;
    entries_.clear();
    for (std::size_t index = 0; index < deck.slides.size(); ++index) {
        const Slide& slide = deck.slides[index];
        if (slide.layout != SlideLayout::web) continue;
        Entry entry{slide.id, index, slide.title, slide.url, std::nullopt, std::nullopt};
        if (entry.url && entry.url->empty()) entry.url.reset();
        // A profile the deck no longer has counts as none: its store is gone.
        if (const BrowserProfile* profile = deck.profile(slide.browserProfileId)) entry.profileId = profile->id;
        if (!entry.url) entry.outcome = WebCheckOutcome::failed(_(noUrlMessage));
        entries_.push_back(std::move(entry));
    }
    probes_.assign(entries_.size(), nullptr);
    next_ = 0;
    inFlight_ = 0;
    running_ = true;
    startMore();
    changed.emit();
}

void WebSlideChecker::cancel() {
    if (!running_) return;
    stopProbes();
    ++generation_;
    running_ = false;
    changed.emit();
}

void WebSlideChecker::stopProbes() {
    for (auto& probe : probes_) {
        if (probe) std::exchange(probe, nullptr)->cancel();
    }
    inFlight_ = 0;
}

void WebSlideChecker::startMore() {
    if (starting_) return;  // a probe that ended while starting: the loop below goes on
    starting_ = true;
    std::uint64_t generation = generation_;
    while (inFlight_ < maxInFlight && next_ < entries_.size() && generation == generation_) {
        std::size_t position = next_++;
        const Entry& entry = entries_[position];
        if (!entry.url) continue;
        ++inFlight_;
        auto probe = PageProbe::start(
            pages_, scheduler_, *entry.url, entry.profileId,
            [this, position, generation](WebCheckOutcome outcome) {
                probeDone(position, generation, std::move(outcome));
            },
            timeLimitSeconds_);
        if (pictures_) {
            probe->whenLoadedWell([this, id = entry.id, url = *entry.url](const std::shared_ptr<WebPage>& page) {
                pictures_->takeSoon(page, id, url, scheduler_);
            });
        }
        if (!probe->isFinished() && generation == generation_) probes_[position] = std::move(probe);
    }
    starting_ = false;
    if (generation == generation_ && inFlight_ == 0 && next_ >= entries_.size()) running_ = false;
}

void WebSlideChecker::probeDone(std::size_t position, std::uint64_t generation, WebCheckOutcome outcome) {
    if (generation != generation_) return;
    entries_[position].outcome = std::move(outcome);
    probes_[position] = nullptr;
    --inFlight_;
    if (starting_) return;  // startMore is on the stack and carries on
    startMore();
    changed.emit();
}

std::size_t WebSlideChecker::checkedCount() const {
    return static_cast<std::size_t>(
        std::count_if(entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.outcome.has_value(); }));
}

std::size_t WebSlideChecker::attentionCount() const {
    return static_cast<std::size_t>(std::count_if(entries_.begin(), entries_.end(), [](const Entry& entry) {
        return entry.outcome && entry.outcome->needsAttention();
    }));
}

std::string WebSlideChecker::rowTitle(const Entry& entry) {
    char number[24];
    std::snprintf(number, sizeof number, "%02zu", entry.index + 1);
    std::string title = number;
    title += "  ";
    title += entry.title.empty() ? _("Untitled") : entry.title;
    return title;
}

std::string WebSlideChecker::summary() const {
    std::size_t total = entries_.size();
    if (total == 0) return _("This deck has no web slides");
    if (running_) return formatText(_("Checking… %zu of %zu done"), checkedCount(), total);
    std::size_t checked = checkedCount();
    if (checked < total) return formatText(_("Stopped after %zu of %zu"), checked, total);
    std::size_t attention = attentionCount();
    if (attention == 0) {
        return formatText(ngettext("All %zu web slide loaded", "All %zu web slides loaded", total), total);
    }
    return formatText(ngettext("%zu of %zu need attention", "%zu of %zu need attention", attention), attention, total);
}

}  // namespace lectern
