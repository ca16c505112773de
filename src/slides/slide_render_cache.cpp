#include "slides/slide_render_cache.h"

#include <cstdio>

#include "slides/slide_painter.h"

namespace lectern {

namespace {

// A double's decimal text with at least one fractional digit: 960.0.
std::string decimal(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", value);
    std::string result = text;
    if (result.find_first_of(".eEn") == std::string::npos) result += ".0";
    return result;
}

int pixels(double points) { return static_cast<int>(points * SlideRenderCache::pixelsPerPoint + 0.5); }

}  // namespace

std::string SlideRenderCache::RenderKey::text() const {
    return slide.id.string() + "-" + decimal(width) + "x" + decimal(height);
}

SlideRenderCache& SlideRenderCache::shared() {
    static SlideRenderCache cache;
    return cache;
}

std::size_t SlideRenderCache::costOf(const RenderKey& key) {
    return static_cast<std::size_t>(pixels(key.width)) * static_cast<std::size_t>(pixels(key.height)) * 4;
}

SlideImage SlideRenderCache::image(const RenderKey& key) {
    const std::string text = key.text();
    {
        std::lock_guard lock(mutex_);
        if (auto it = entries_.find(text); it != entries_.end() && it->second.entry.key == key) {
            recency_.splice(recency_.begin(), recency_, it->second.place);
            return it->second.entry.image;
        }
    }

    // Drawn without the lock: drawing takes milliseconds, lookups none.
    const int w = std::max(1, pixels(key.width)), h = std::max(1, pixels(key.height));
    SlideImage image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h), cairo_surface_destroy);
    cairo_t* cr = cairo_create(image.get());
    SlidePaintOptions options;
    options.theme = key.theme;
    options.deckAccentHex = key.accentHex;
    options.deckTitle = key.deckTitle;
    SlidePainter::paint(cr, key.slide, options, w, h);
    cairo_destroy(cr);
    cairo_surface_flush(image.get());

    std::lock_guard lock(mutex_);
    ++draws_;
    if (auto it = entries_.find(text); it != entries_.end()) {
        cost_ -= costOf(it->second.entry.key);
        recency_.erase(it->second.place);
        entries_.erase(it);
    }
    const std::size_t cost = costOf(key);
    evictTo(costLimit > cost ? costLimit - cost : 0);
    recency_.push_front(text);
    entries_.emplace(text, Slot{Entry{key, image}, recency_.begin()});
    cost_ += cost;
    return image;
}

void SlideRenderCache::evictTo(std::size_t limit) {
    while (cost_ > limit && !recency_.empty()) {
        auto it = entries_.find(recency_.back());
        cost_ -= costOf(it->second.entry.key);
        entries_.erase(it);
        recency_.pop_back();
    }
}

std::size_t SlideRenderCache::drawCount() const {
    std::lock_guard lock(mutex_);
    return draws_;
}

std::size_t SlideRenderCache::totalCost() const {
    std::lock_guard lock(mutex_);
    return cost_;
}

std::size_t SlideRenderCache::count() const {
    std::lock_guard lock(mutex_);
    return entries_.size();
}

void SlideRenderCache::clear() {
    std::lock_guard lock(mutex_);
    entries_.clear();
    recency_.clear();
    cost_ = 0;
}

}  // namespace lectern
