#pragma once

#include <cairo.h>

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "model/slide.h"

namespace lectern {

// A drawn slide: an opaque image surface at 2 pixels per point, shared while
// in use (a 960 × 540 point slide is 1920 × 1080 pixels).
using SlideImage = std::shared_ptr<cairo_surface_t>;

// The process-wide cache of drawn slides, so that saving an unchanged deck
// again does not redraw its thumbnail. Bounded by cost (bytes of pixels), not
// by count; the least recently used entries go first. Safe to use from any
// thread.
class SlideRenderCache {
public:
    static constexpr std::size_t costLimit = 268435456;  // 256 MiB
    static constexpr double pixelsPerPoint = 2;

    // Everything that decides the picture.
    struct RenderKey {
        Slide slide;
        Theme theme = Theme::clinical;
        std::optional<std::string> accentHex;  // the deck's
        std::int64_t index = 0;                // the slide's place in the deck
        std::int64_t total = 0;                // the deck's slide count
        double width = 960;                    // points
        double height = 540;
        // Shown in the eyebrow of a slide without one, so it decides the
        // picture as much as the rest.
        std::string deckTitle;

        friend bool operator==(const RenderKey&, const RenderKey&) = default;
        // The slide's id, "-", width "x" height ("…-960.0x540.0"). Several keys
        // share one text; the stored key tells them apart.
        std::string text() const;
    };
    struct Entry {
        RenderKey key;
        SlideImage image;
    };

    // The one instance, created on first use.
    static SlideRenderCache& shared();

    // The stored image when the stored key equals `key` in full; otherwise
    // the slide is drawn, stored under the key text (replacing what was
    // there) and returned.
    SlideImage image(const RenderKey& key);

    // What drawing the key's image costs in the cache: its pixel bytes.
    static std::size_t costOf(const RenderKey& key);

    std::size_t drawCount() const;  // images drawn so far, for tests
    std::size_t totalCost() const;
    std::size_t count() const;
    void clear();

private:
    void evictTo(std::size_t limit);  // with mutex_ held

    mutable std::mutex mutex_;
    std::list<std::string> recency_;  // key texts, most recent first
    struct Slot {
        Entry entry;
        std::list<std::string>::iterator place;
    };
    std::unordered_map<std::string, Slot> entries_;
    std::size_t cost_ = 0;
    std::size_t draws_ = 0;
};

}  // namespace lectern
