#include "present/deck_outline.h"

#include <glib/gi18n.h>

#include <cstdio>
#include <sstream>

#include "base/translation.h"
#include "present/action_trust.h"
#include "present/auto_run_coordinator.h"
#include "slides/body_layout.h"
#include "slides/reveal_plan.h"

namespace lectern {

using nlohmann::json;

namespace {

std::string number(std::size_t index) {
    char text[24];
    std::snprintf(text, sizeof text, "%02zu", index + 1);
    return text;
}

std::string titleOf(const Slide& slide) { return slide.title.empty() ? _(DeckOutline::untitledSlide) : slide.title; }

// "4 s", "1.5 s"
std::string seconds(double value) {
    std::ostringstream out;
    out << value << _(" s");
    return out.str();
}

std::optional<std::size_t> slideIndex(const Deck& deck, const std::string& idText) {
    auto id = Uuid::parse(idText);
    return id ? deck.indexOfSlide(*id) : std::nullopt;
}

std::optional<std::string> sectionTitle(const Deck& deck, const Slide& slide) {
    auto key = slide.sectionKey();
    if (!key) return std::nullopt;
    auto opener = deck.indexOfSlide(*key);
    if (!opener || !deck.slides[*opener].isSection) return std::nullopt;
    const auto& title = deck.slides[*opener].sectionTitle;
    return title && !title->empty() ? *title : _("Untitled section");
}

// Where "Next" goes from a slide whose nextSlideAction is set.
struct Route {
    std::string kind;  // back, overview, home, slide, missing, unknown
    std::optional<std::size_t> target;
    std::string describe(const Deck& deck) const {
        if (kind == "back") return _("back to where the presenter came from");
        if (kind == "overview") return _("the overview");
        if (kind == "home") return _("the first slide");
        if (kind == "slide") return number(*target) + " " + titleOf(deck.slides[*target]);
        if (kind == "missing") return _("a slide that no longer exists, so on to the next slide");
        return _("an unknown route, so on to the next slide");
    }
};

std::optional<Route> routeOf(const Deck& deck, const Slide& slide) {
    if (!slide.nextSlideAction) return std::nullopt;
    const std::string& target = *slide.nextSlideAction;
    if (target == "$back" || target == "back") return Route{"back", {}};
    if (target == "$overview") return Route{"overview", {}};
    if (target == "$home" || target == "home") return Route{"home", {}};
    if (Uuid::parse(target)) {
        auto index = slideIndex(deck, target);
        return index ? Route{"slide", index} : Route{"missing", {}};
    }
    return Route{"unknown", {}};
}

std::string profileName(const Deck& deck, const Slide& slide) {
    const BrowserProfile* profile = deck.profile(slide.browserProfileId);
    if (!profile) return _("shared session");
    return profile->name.empty() ? _(DeckOutline::untitledProfile) : profile->name;
}

// When an automatic action runs, in words, following the coordinator's rules:
// no negative delay, a quarter-second floor between runs, and a run limit
// that counts the first run.
std::optional<std::string> scheduleOf(const SlideAction& action) {
    if (!action.autoRun) return std::nullopt;
    double delay = std::max(action.autoRunDelaySeconds, 0.0);
    std::string text = formatText(_("Runs by itself %s"),
                                  delay == 0 ? _("as soon as the slide is shown")
                                             : formatText(_("%s after the slide is shown"), seconds(delay).c_str()).c_str());
    if (!action.repeats || action.repeatMaxRuns == 1 || action.repeatMaxRuns < 0) return text + _(", once");
    text += formatText(_(", then every %s"),
                       seconds(std::max(action.repeatIntervalSeconds, AutoRunCoordinator::minimumRepeatInterval)).c_str());
    if (action.repeatMaxRuns == 0) return text + _(" while the slide is shown");
    // TRANSLATORS: never fewer than two runs.
    return text + formatText(ngettext(", %s runs in all", ", %s runs in all", static_cast<unsigned long>(action.repeatMaxRuns)),
                             std::to_string(action.repeatMaxRuns).c_str());
}

std::string indented(const std::string& text, const std::string& firstPrefix, std::size_t width) {
    std::string out;
    std::string pad(width, ' ');
    std::size_t start = 0;
    bool first = true;
    for (;;) {
        std::size_t end = text.find('\n', start);
        std::string line = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        out += (first ? firstPrefix : pad) + line + "\n";
        first = false;
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return out;
}

}  // namespace

std::string DeckOutline::text(const Deck& deck) {
    std::ostringstream out;
    if (deck.title) out << *deck.title << "\n";
    out << formatText(ngettext("%zu slide", "%zu slides", deck.slides.size()), deck.slides.size());
    if (deck.targetMinutes) {
        out << formatText(ngettext(", %s minutes", ", %s minutes", static_cast<unsigned long>(*deck.targetMinutes)),
                          std::to_string(*deck.targetMinutes).c_str());
    }
    out << "\n";
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        const Slide& slide = deck.slides[i];
        out << "\n" << number(i) << "  " << titleOf(slide) << "  [" << enumName(slide.layout);
        std::size_t steps = RevealPlan::stepCount(slide);
        if (slide.reveal == RevealMode::reveal) {
            bool cards = slide.layout == SlideLayout::decisions;
            out << formatText(cards ? ngettext(", reveals %zu card", ", reveals %zu cards", steps)
                                    : ngettext(", reveals %zu step", ", reveals %zu steps", steps),
                              steps);
        }
        if (slide.isSkipped) out << _(", skipped");
        out << "]\n";
        if (auto section = sectionTitle(deck, slide)) {
            out << "    " << (slide.isSection ? _("Opens section: ") : _("Section: ")) << *section << "\n";
        }
        if (slide.reveal == RevealMode::reveal && slide.layout != SlideLayout::decisions) {
            auto texts = RevealPlan::stepTexts(slide);
            for (std::size_t s = 0; s < texts.size(); ++s) {
                std::string prefix = "    " + formatText(_("Step %zu: "), s + 1);
                out << indented(texts[s].string(), prefix, prefix.size());
            }
        }
        for (std::size_t c = 0; c < slide.links.size(); ++c) {
            const SlideLink& link = slide.links[c];
            out << "    " << formatText(_("Card %zu: "), c + 1) << (link.label.empty() ? _("Untitled option") : link.label)
                << " -> ";
            if (link.targetId.empty()) {
                out << _("no target");
            } else if (auto target = slideIndex(deck, link.targetId)) {
                out << number(*target) << " " << titleOf(deck.slides[*target]);
            } else {
                out << _("missing slide");
            }
            out << "\n";
        }
        if (slide.layout == SlideLayout::web) {
            out << "    " << _("Page: ") << slide.url.value_or(_("no address")) << " (" << profileName(deck, slide) << ")\n";
        }
        for (const auto& action : slide.actions) {
            out << "    " << _("Action: ") << ActionTrust::summary(action, slide) << "\n";
            if (auto schedule = scheduleOf(action)) out << "            " << *schedule << "\n";
        }
        if (auto route = routeOf(deck, slide)) out << "    " << _("Next: ") << route->describe(deck) << "\n";
    }
    return out.str();
}

json DeckOutline::json(const Deck& deck) {
    nlohmann::json slides = nlohmann::json::array();
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        const Slide& slide = deck.slides[i];
        auto units = revealUnits(slide.body);
        nlohmann::json unitTexts = nlohmann::json::array();
        for (const auto& unit : units) unitTexts.push_back(unit.text.string());
        nlohmann::json stepTexts = nlohmann::json::array();
        for (const auto& text : RevealPlan::stepTexts(slide)) stepTexts.push_back(text.string());
        nlohmann::json items = nlohmann::json::array();
        for (const auto& item : renderItems(slide.body)) {
            nlohmann::json lines = nlohmann::json::array();
            for (const auto& line : item.lines) lines.push_back(line.text.string());
            items.push_back({{"kind", item.kind == BodyRenderItem::Kind::paragraph ? "paragraph" : "commandBlock"},
                             {"lines", std::move(lines)}});
        }
        nlohmann::json cards = nlohmann::json::array();
        for (const auto& link : slide.links) {
            auto target = slideIndex(deck, link.targetId);
            cards.push_back({{"label", link.label},
                             {"targetId", link.targetId},
                             {"targetNumber", target ? nlohmann::json(*target + 1) : nlohmann::json(nullptr)}});
        }
        nlohmann::json actions = nlohmann::json::array();
        for (const auto& action : slide.actions) {
            auto schedule = scheduleOf(action);
            actions.push_back({{"id", action.id.string()},
                               {"name", action.name.empty() ? untitledAction : action.name},
                               {"kind", enumName(action.kindCase)},
                               {"autoRun", action.autoRun},
                               {"summary", ActionTrust::summary(action, slide)},
                               {"schedule", schedule ? nlohmann::json(*schedule) : nlohmann::json(nullptr)}});
        }
        nlohmann::json entry = {{"number", i + 1},
                                {"id", slide.id.string()},
                                {"title", slide.title},
                                {"layout", enumName(slide.layout)},
                                {"isSkipped", slide.isSkipped},
                                {"revealMode", enumName(slide.reveal)},
                                {"units", std::move(unitTexts)},
                                {"plan", RevealPlan::normalized(units.size(), slide.revealPlan)},
                                {"stepCount", RevealPlan::stepCount(slide)},
                                {"stepTexts", std::move(stepTexts)},
                                {"renderItems", std::move(items)},
                                {"cards", std::move(cards)},
                                {"actions", std::move(actions)},
                                {"section", sectionTitle(deck, slide) ? nlohmann::json(*sectionTitle(deck, slide))
                                                                      : nlohmann::json(nullptr)}};
        if (auto route = routeOf(deck, slide)) {
            entry["next"] = {{"kind", route->kind},
                             {"target", *slide.nextSlideAction},
                             {"number", route->target ? nlohmann::json(*route->target + 1) : nlohmann::json(nullptr)}};
        } else {
            entry["next"] = nullptr;
        }
        if (slide.layout == SlideLayout::web) {
            entry["url"] = slide.url ? nlohmann::json(*slide.url) : nlohmann::json(nullptr);
            entry["profile"] = profileName(deck, slide);
        }
        slides.push_back(std::move(entry));
    }
    return {{"slides", std::move(slides)}};
}

}  // namespace lectern
