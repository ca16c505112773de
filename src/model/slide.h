#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/attributed_text.h"
#include "model/deck_enums.h"
#include "model/shared_bytes.h"
#include "model/slide_action.h"
#include "model/slide_link.h"
#include "model/uuid.h"

namespace lectern {

struct Slide {
    static constexpr double minWebZoom = 0.5;
    static constexpr double maxWebZoom = 3.0;

    Uuid id = Uuid::random();
    SlideLayout layout = SlideLayout::regular;
    SlidePosition position = SlidePosition::full;
    std::optional<std::string> url;  // http or https only
    std::optional<Uuid> browserProfileId;
    std::optional<SharedBytes> imageData;  // encoded PNG or JPEG bytes
    std::optional<std::string> imageFile;  // media file name in the package
    std::optional<std::string> imageName;  // user-visible name of the image
    bool imageFill = false;
    std::string eyebrow;
    std::string title;
    std::string subtitle;
    AttributedText body;
    std::vector<SlideLink> links;
    RevealMode reveal = RevealMode::all;
    RevealGranularity revealGranularity = RevealGranularity::paragraph;
    std::optional<std::vector<std::vector<std::int64_t>>> revealPlan;
    std::optional<std::string> accentHex;
    bool showLinkSubtitles = false;
    std::string notes;
    bool isSection = false;
    std::optional<Uuid> sectionId;
    std::optional<std::string> sectionTitle;
    std::optional<std::string> nextSlideAction;
    bool isSkipped = false;
    double webZoom = 1.0;
    std::vector<SlideAction> actions;

    // A new slide of the given layout: new id, everything else at its default.
    static Slide make(SlideLayout layout) {
        Slide slide;
        slide.layout = layout;
        return slide;
    }

    // Shows new image bytes. The stored file name is cleared, so a save never
    // files the new picture under the old picture's name.
    void setImage(SharedBytes bytes, std::optional<std::string> name) {
        imageData = std::move(bytes);
        imageFile.reset();
        imageName = std::move(name);
    }
    void removeImage() {
        imageData.reset();
        imageFile.reset();
        imageName.reset();
    }

    // The section this slide belongs to: its own id when it opens one.
    std::optional<Uuid> sectionKey() const { return isSection ? std::optional(id) : sectionId; }

    friend bool operator==(const Slide&, const Slide&) = default;
};

}  // namespace lectern
