#pragma once

#include <cairo.h>

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "model/slide.h"

namespace lectern {

// A drawn slide: a 2-pixels-per-point image surface, shared while in use.
using SlideImage = std::shared_ptr<cairo_surface_t>;

// The process-wide cache of drawn slides, so that saving an unchanged deck
// again does not redraw its thumbnail. Bounded by cost (bytes of pixels), not
// by count; entries may go at any time.
class SlideRenderCache {
public:
    static constexpr std::size_t costLimit = 268435456;  // 256 MiB
    static constexpr double pixelsPerPoint = 2;

    // Everything that decides the picture.
    struct RenderKey {
        Slide slide;
        Theme theme = Theme::clinical;
        std::optional<std::string> accentHex;  // the deck's
        std::int64_t index = 0;
        std::int64_t total = 0;
        double width = 960;
        double height = 540;
        friend bool operator==(const RenderKey&, const RenderKey&) = default;
        // The slide's id, "-", width "x" height: several keys may share it.
        std::string text() const;
    };
    struct Entry {
        RenderKey key;
        SlideImage image;
    };

    static SlideRenderCache& shared();

    // The stored image when its full key matches; otherwise drawn and stored.
    SlideImage image(const RenderKey& key, const std::string& deckTitle = {});

    std::size_t drawCount() const { return draws_; }
    std::size_t totalCost() const { return cost_; }
    void clear();

private:
    void evictTo(std::size_t limit);

    std::list<std::string> recency_;  // most recent first
    std::unordered_map<std::string, std::pair<Entry, std::list<std::string>::iterator>> entries_;
    std::size_t cost_ = 0;
    std::size_t draws_ = 0;
};

}  // namespace lectern
