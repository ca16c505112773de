#include "present/presenter_display_settings.h"

#include <algorithm>

namespace lectern {

namespace {

std::optional<int> integer(const nlohmann::json* value) {
    if (!value || !value->is_number()) return std::nullopt;
    double number = value->get<double>();
    if (!(number > -1e9 && number < 1e9)) return std::nullopt;  // also rejects NaN
    return static_cast<int>(number);
}

}  // namespace

int PresenterDisplaySettings::notesPoints() const {
    auto points = integer(preferences_.value(notesSizeKey));
    return points ? std::clamp(*points, minNotesPoints, maxNotesPoints) : defaultNotesPoints;
}

int PresenterDisplaySettings::setNotesPoints(int points) {
    points = std::clamp(points, minNotesPoints, maxNotesPoints);
    if (points != notesPoints() || !preferences_.value(notesSizeKey)) (void)preferences_.setValue(notesSizeKey, points);
    return points;
}

int PresenterDisplaySettings::stepNotesPoints(int steps) {
    if (steps == 0) return setNotesPoints(defaultNotesPoints);
    return setNotesPoints(notesPoints() + steps * notesStep);
}

std::optional<PresenterDisplaySettings::Size> PresenterDisplaySettings::windowSize() const {
    const nlohmann::json* value = preferences_.value(windowSizeKey);
    if (!value || !value->is_object()) return std::nullopt;
    auto width = integer(value->contains("width") ? &(*value)["width"] : nullptr);
    auto height = integer(value->contains("height") ? &(*value)["height"] : nullptr);
    if (!width || !height) return std::nullopt;
    return Size{std::clamp(*width, minWidth, maxSide), std::clamp(*height, minHeight, maxSide)};
}

void PresenterDisplaySettings::setWindowSize(Size size) {
    if (size.width <= 0 || size.height <= 0) return;  // not laid out: nothing to remember
    Size clamped{std::clamp(size.width, minWidth, maxSide), std::clamp(size.height, minHeight, maxSide)};
    if (windowSize() == clamped) return;
    (void)preferences_.setValue(windowSizeKey, {{"width", clamped.width}, {"height", clamped.height}});
}

}  // namespace lectern
