#include "web/page_pictures.h"

#include <glib.h>
#include <glib/gi18n.h>

#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "model/file_io.h"

namespace lectern {

namespace {

using nlohmann::json;

// A sidecar is a few lines of JSON, and a page picture a screen's worth of
// pixels: anything much larger is not one of ours.
constexpr std::uint64_t sidecarLimit = 64 * 1024;
constexpr std::uint64_t pictureLimit = 64 * 1024 * 1024;

std::string localText(std::int64_t time, const char* format) {
    GDateTime* moment = g_date_time_new_from_unix_local(time);
    if (!moment) return {};
    char* text = g_date_time_format(moment, format);
    std::string result = text ? text : "";
    g_free(text);
    g_date_time_unref(moment);
    return result;
}

}  // namespace

PagePictures::PagePictures(std::filesystem::path folder, Worker& worker)
    : folder_(std::move(folder)), worker_(worker) {}

// Counts one picture on its way for as long as any step of it holds this.
struct PagePictures::Pending {
    explicit Pending(std::shared_ptr<int> count) : count(std::move(count)) { ++*this->count; }
    ~Pending() { --*count; }
    std::shared_ptr<int> count;
};

void PagePictures::save(const Uuid& slideId, const std::string& url, std::string png, std::int64_t takenAt) {
    save(slideId, url, std::move(png), takenAt, std::make_shared<Pending>(pending_));
}

void PagePictures::save(const Uuid& slideId, const std::string& url, std::string png, std::int64_t takenAt,
                        std::shared_ptr<Pending> pending) {
    const std::string name = slideId.string();
    auto picture = folder_ / (name + ".png");
    auto sidecar = folder_ / (name + ".json");
    std::string about = json{{"url", url}, {"takenAt", takenAt}}.dump();
    auto written = std::make_shared<bool>(false);
    worker_.run(
        [folder = folder_, picture, sidecar, png = std::move(png), about = std::move(about), written] {
            std::error_code error;
            std::filesystem::create_directories(folder, error);
            // The sidecar goes last: a picture is only found once both are
            // whole and agree.
            // Readable by the user only: pictures of signed-in pages are private.
            *written = replaceFileAtomically(picture, png, 0600).ok() && replaceFileAtomically(sidecar, about, 0600).ok();
        },
        [this, alive = alive_, slideId, written, pending = std::move(pending)] {
            if (!*alive || !*written) return;
            read_.erase(slideId);
            saved_.emit(slideId);
        });
}

std::optional<PagePicture> PagePictures::find(const Uuid& slideId, const std::string& url) const {
    const std::string name = slideId.string();
    auto bytes = readRegularFile(folder_ / (name + ".json"), sidecarLimit);
    if (!bytes.ok()) return std::nullopt;
    json about = json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (!about.is_object()) return std::nullopt;
    auto address = about.find("url");
    auto taken = about.find("takenAt");
    if (address == about.end() || !address->is_string() || taken == about.end() || !taken->is_number_integer()) {
        return std::nullopt;
    }
    if (address->get<std::string>() != url) return std::nullopt;
    PagePicture picture{folder_ / (name + ".png"), url, taken->get<std::int64_t>()};
    std::error_code error;
    if (!std::filesystem::is_regular_file(picture.file, error) || std::filesystem::file_size(picture.file, error) == 0) {
        return std::nullopt;
    }
    return picture;
}

std::optional<SharedBytes> PagePictures::bytes(const Uuid& slideId, const std::string& url) {
    // Read from disk once: a picture saved here since replaces the entry.
    auto known = read_.find(slideId);
    if (known != read_.end() && known->second.url == url) return known->second.png;
    auto picture = find(slideId, url);
    if (!picture) return std::nullopt;
    auto png = readRegularFile(picture->file, pictureLimit);
    if (!png.ok()) return std::nullopt;
    SharedBytes shared(std::move(*png));
    // Kept for the few slides on show; a long deck's overview starts over.
    if (read_.size() >= 32) read_.clear();
    read_[slideId] = {url, shared};
    return shared;
}

std::optional<SharedBytes> PagePictures::pageOf(const Slide& slide) {
    if (slide.layout != SlideLayout::web || !slide.url) return std::nullopt;
    return bytes(slide.id, *slide.url);
}

void PagePictures::takeSoon(std::shared_ptr<WebPage> page, const Uuid& slideId, const std::string& url,
                            Scheduler& scheduler) {
    // The page may have gone on (a redirect): what it shows now is what counts.
    std::string shown = page->currentUrl();
    auto pending = std::make_shared<Pending>(pending_);
    scheduler.after(settleSeconds, [this, alive = alive_, page = std::move(page), slideId, url, shown, pending] {
        if (!*alive || page->isLoading() || page->lastLoadFailed() || page->currentUrl() != shown) return;
        // The page is held until its picture is back: a page going away
        // cancels its snapshot (the check lets go of its pages at once).
        page->snapshot([this, alive, slideId, url, page, pending](std::optional<std::string> png) {
            if (*alive && png && !png->empty()) save(slideId, url, std::move(*png), currentTime(), pending);
        });
    });
}

std::string PagePictures::markText(std::int64_t takenAt, std::int64_t now) {
    const bool sameDay = localText(takenAt, "%Y-%m-%d") == localText(now, "%Y-%m-%d");
    // The time alone on the day it was taken; "23 Nov, 14:32" on another.
    std::string when = sameDay ? localText(takenAt, _("%H:%M")) : localText(takenAt, _("%-d %b, %H:%M"));
    return formatText(_("Offline copy from %s — Ctrl+R to try again"), when.c_str());
}

std::int64_t PagePictures::currentTime() { return g_get_real_time() / G_USEC_PER_SEC; }

}  // namespace lectern
