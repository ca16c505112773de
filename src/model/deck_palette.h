#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lectern {

// The deck's colour swatches: always exactly eight, an absent entry being an
// empty swatch.
class DeckPalette {
public:
    static constexpr std::size_t swatchCount = 8;

    DeckPalette() : swatches_(swatchCount) {}
    explicit DeckPalette(std::vector<std::optional<std::string>> swatches) : swatches_(std::move(swatches)) {
        swatches_.resize(swatchCount);  // keeps the first eight, pads with empty ones
    }

    const std::vector<std::optional<std::string>>& swatches() const { return swatches_; }
    void setSwatch(std::size_t index, std::optional<std::string> hex) {
        if (index < swatches_.size()) swatches_[index] = std::move(hex);
    }

    friend bool operator==(const DeckPalette&, const DeckPalette&) = default;

private:
    std::vector<std::optional<std::string>> swatches_;
};

}  // namespace lectern
