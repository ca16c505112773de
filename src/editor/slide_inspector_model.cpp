#include "editor/slide_inspector_model.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "editor/card_routes.h"
#include "editor/navigator_rules.h"
#include "model/color.h"
#include "web/browser_profile_edits.h"

namespace lectern {

namespace {

constexpr SlidePosition allPositions[] = {SlidePosition::full, SlidePosition::left, SlidePosition::right,
                                          SlidePosition::topBottom, SlidePosition::inText};

}  // namespace

void applyLayoutChange(Slide& slide, const LayoutChange& change) {
    slide.layout = change.layout;
    if (change.position) slide.position = *change.position;
}

bool hasPositions(SlideLayout layout) { return layout == SlideLayout::web || layout == SlideLayout::image; }

std::string positionName(SlidePosition position) {
    switch (position) {
        case SlidePosition::full: return _("Full");
        case SlidePosition::left: return _("Left");
        case SlidePosition::right: return _("Right");
        case SlidePosition::topBottom: return _("Top and bottom");
        case SlidePosition::inText: return _("In text");
    }
    return {};
}

void LayoutPickerState::showSlide(const Slide& slide) {
    if (slide_ == slide.id) return;
    slide_ = slide.id;
    expanded_.clear();
    if (hasPositions(slide.layout)) expanded_.insert(slide.layout);
}

void LayoutPickerState::chose(SlideLayout layout) {
    if (hasPositions(layout)) expanded_.insert(layout);
}

void LayoutPickerState::toggle(SlideLayout layout) {
    if (!hasPositions(layout)) return;
    if (!expanded_.erase(layout)) expanded_.insert(layout);
}

std::vector<LayoutPickerRow> LayoutPickerState::rows(const Slide& slide) const {
    std::vector<LayoutPickerRow> rows;
    for (const auto& choice : layoutChoices()) {
        LayoutPickerRow row;
        row.layout = choice.layout;
        row.isSelected = slide.layout == choice.layout;
        row.showsChevron = hasPositions(choice.layout);
        row.isExpanded = isExpanded(choice.layout);
        row.action = {choice.layout, std::nullopt};
        rows.push_back(row);
        if (!row.isExpanded) continue;
        for (SlidePosition position : allPositions) {
            LayoutPickerRow option;
            option.layout = choice.layout;
            option.position = position;
            option.isSelected = row.isSelected && slide.position == position;
            option.action = {choice.layout, position};
            rows.push_back(option);
        }
    }
    return rows;
}

std::vector<NextRouteChoice> nextRouteChoices(const Deck& deck, const Slide& slide) {
    std::vector<NextRouteChoice> choices{{_(linearRoute), std::nullopt}};
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        const Slide& other = deck.slides[i];
        if (other.id == slide.id) continue;  // "Next" to itself would never move on
        choices.push_back({navigatorRowNumber(i) + " " + navigatorRowTitle(other), other.id.string()});
    }
    if (slide.nextSlideAction) {
        const std::string& stored = *slide.nextSlideAction;
        bool listed = std::any_of(choices.begin(), choices.end(),
                                  [&](const NextRouteChoice& choice) { return choice.value == stored; });
        if (!listed) {
            auto status = CardRoutes::status(stored, deck.slides);
            std::string title = status == RouteStatus::missing || status == RouteStatus::none
                                    ? std::string(_(CardRoutes::deletedTarget))
                                    : CardRoutes::controlLabel(stored, deck.slides);
            choices.push_back({title, stored});
        }
    }
    return choices;
}

std::size_t selectedNextRoute(const std::vector<NextRouteChoice>& choices, const Slide& slide) {
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].value == slide.nextSlideAction) return i;
    }
    return 0;
}

std::vector<ProfileChoice> profileChoices(const Deck& deck) {
    std::vector<ProfileChoice> choices{{_(sharedSession), std::nullopt}};
    for (const auto& profile : deck.browserProfiles) {
        choices.push_back({BrowserProfileEdits::displayName(profile), profile.id});
    }
    return choices;
}

std::size_t selectedProfile(const std::vector<ProfileChoice>& choices, const Slide& slide) {
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].value == slide.browserProfileId) return i;
    }
    return 0;
}

AccentSwatches accentSwatches(const Deck& deck, const std::vector<std::string>& appHexes) {
    AccentSwatches swatches;
    for (const auto& swatch : deck.palette.swatches()) {
        if (!swatch) continue;
        if (auto hex = canonicalHex(*swatch)) swatches.deck.push_back(*hex);
    }
    for (const auto& text : appHexes) {
        if (auto hex = canonicalHex(text)) swatches.app.push_back(*hex);
    }
    return swatches;
}

std::optional<std::string> slideAccent(const Slide& slide) {
    return slide.accentHex ? canonicalHex(*slide.accentHex) : std::nullopt;
}

}  // namespace lectern
