#include "slides/slide_render_cache.h"

#include <cstdio>

#include "slides/slide_painter.h"

namespace lectern {

namespace {

std::string decimal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);  // 960.0, as a double's text
    return text;
}

std::size_t costOf(const SlideRenderCache::RenderKey& key) {
    return static_cast<std::size_t>(key.width * SlideRenderCache::pixelsPerPoint) *
           static_cast<std::size_t>(key.height * SlideRenderCache::pixelsPerPoint) * 4;
}

}  // namespace

std::string SlideRenderCache::RenderKey::text() const {
    return slide.id.string() + "-" + decimal(width) + "x" + decimal(height);
}

SlideRenderCache& SlideRenderCache::shared() {
    static SlideRenderCache cache;
    return cache;
}

SlideImage SlideRenderCache::image(const RenderKey& key, const std::string& deckTitle) {
    std::string text = key.text();
    if (auto it = entries_.find(text); it != entries_.end()) {
        if (it->second.first.key == key) {
            recency_.splice(recency_.begin(), recency_, it->second.second);
            return it->second.first.image;
        }
        cost_ -= costOf(it->second.first.key);
        recency_.erase(it->second.second);
        entries_.erase(it);
    }
    int w = static_cast<int>(key.width * pixelsPerPoint), h = static_cast<int>(key.height * pixelsPerPoint);
    SlideImage image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h), cairo_surface_destroy);
    cairo_t* cr = cairo_create(image.get());
    SlidePaintOptions options;
    options.theme = key.theme;
    options.deckAccentHex = key.accentHex;
    options.deckTitle = deckTitle;
    SlidePainter::paint(cr, key.slide, options, w, h);
    cairo_destroy(cr);
    cairo_surface_flush(image.get());
    ++draws_;

    std::size_t cost = costOf(key);
    evictTo(costLimit > cost ? costLimit - cost : 0);
    recency_.push_front(text);
    entries_.emplace(text, std::make_pair(Entry{key, image}, recency_.begin()));
    cost_ += cost;
    return image;
}

void SlideRenderCache::evictTo(std::size_t limit) {
    while (cost_ > limit && !recency_.empty()) {
        auto it = entries_.find(recency_.back());
        cost_ -= costOf(it->second.first.key);
        entries_.erase(it);
        recency_.pop_back();
    }
}

void SlideRenderCache::clear() {
    entries_.clear();
    recency_.clear();
    cost_ = 0;
}

}  // namespace lectern
