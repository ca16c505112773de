#pragma once

#include <optional>

#include "model/preferences_store.h"

namespace lectern {

// What the presenter display remembers app-wide: its window size and the
// size of the notes' text. Values read back are clamped to a usable range,
// so a hand-edited or damaged preferences file never yields an unreadable
// or unreachable display.
class PresenterDisplaySettings {
public:
    static constexpr const char* notesSizeKey = "presenterDisplay.notesPoints.v1";
    static constexpr const char* windowSizeKey = "presenterDisplay.windowSize.v1";
    static constexpr int defaultNotesPoints = 14;
    static constexpr int minNotesPoints = 9;
    static constexpr int maxNotesPoints = 48;
    static constexpr int notesStep = 2;
    static constexpr int minWidth = 340;
    static constexpr int minHeight = 400;
    static constexpr int maxSide = 16384;

    struct Size {
        int width = 0;
        int height = 0;
        bool operator==(const Size&) const = default;
    };

    explicit PresenterDisplaySettings(PreferencesStore& preferences) : preferences_(preferences) {}

    int notesPoints() const;
    // Stores the size clamped to the range; returns what was stored.
    int setNotesPoints(int points);
    // One step larger or smaller (`steps` may be negative); 0 steps back to the default.
    int stepNotesPoints(int steps);

    std::optional<Size> windowSize() const;
    void setWindowSize(Size size);

private:
    PreferencesStore& preferences_;
};

}  // namespace lectern
