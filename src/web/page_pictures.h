#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/scheduler.h"
#include "base/signal.h"
#include "base/worker.h"
#include "model/shared_bytes.h"
#include "model/slide.h"
#include "model/uuid.h"
#include "web/web_page.h"

namespace lectern {

// The last good picture of a slide's live page: what the stage shows when
// the page fails while presenting.
struct PagePicture {
    std::filesystem::path file;  // the PNG
    std::string url;             // the address the page showed
    std::int64_t takenAt = 0;    // seconds since the epoch (UTC)
};

// Pictures of live pages that loaded well, one per slide, kept in a folder
// of the user's cache (never in the deck) across restarts:
// `<folder>/<slide UUID>.png` and a sidecar `<slide UUID>.json` with the
// address and the time. Both are replaced atomically, the sidecar last, and
// read leniently: anything missing or damaged is no picture. Main thread
// only; files are written on the worker.
class PagePictures {
public:
    // How long after a load finished the page is pictured (it has painted).
    static constexpr double settleSeconds = 0.8;

    PagePictures(std::filesystem::path folder, Worker& worker);
    PagePictures(const PagePictures&) = delete;
    PagePictures& operator=(const PagePictures&) = delete;

    const std::filesystem::path& folder() const { return folder_; }

    // Stores `png` as the picture of `slideId` showing `url`; `saved` is
    // emitted once it is on disk.
    void save(const Uuid& slideId, const std::string& url, std::string png, std::int64_t takenAt);
    // The picture of `slideId`, when there is one of `url` (a picture of
    // another address is none: the slide has moved on).
    std::optional<PagePicture> find(const Uuid& slideId, const std::string& url) const;
    // The PNG bytes of that picture, read from disk once per picture saved.
    std::optional<SharedBytes> bytes(const Uuid& slideId, const std::string& url);
    // Those of a web slide's page; none for other slides.
    std::optional<SharedBytes> pageOf(const Slide& slide);

    // Pictures `page` (which loaded the slide's `url`) a moment from now, if
    // it still shows the same page and is not loading then. The page is held
    // until then: a check's page lives on for its picture.
    void takeSoon(std::shared_ptr<WebPage> page, const Uuid& slideId, const std::string& url, Scheduler& scheduler);

    // "Offline copy from 14:32 — Ctrl+R to try again", in local time, with
    // the day when the picture is not from the day of `now`.
    static std::string markText(std::int64_t takenAt, std::int64_t now);
    static std::int64_t currentTime();

    Signal<const Uuid&>& saved() { return saved_; }
    // Pictures asked for and not yet on disk or given up: a program that
    // ends after a check waits for none to be left.
    int pending() const { return *pending_; }

private:
    struct Pending;
    void save(const Uuid& slideId, const std::string& url, std::string png, std::int64_t takenAt,
              std::shared_ptr<Pending> pending);

    std::filesystem::path folder_;
    Worker& worker_;
    Signal<const Uuid&> saved_;
    struct Read {
        std::string url;
        SharedBytes png;
    };
    std::unordered_map<Uuid, Read> read_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::shared_ptr<int> pending_ = std::make_shared<int>(0);
};

}  // namespace lectern
