#include "model/deck_json.h"

#include <glib/gi18n.h>

#include <cmath>

#include "base/translation.h"
#include "model/attributed_text_json.h"
#include "model/digests.h"
#include "model/json_reader.h"

namespace lectern {

using nlohmann::json;

namespace {

// ---------------------------------------------------------------- reading

// Where an element sits in the deck ("slides/2/actions/0/headers/1"). An
// action or header row stored without an id gets the name-based UUID of this
// place in the deck's id as namespace, so every read of the same file gives it
// the same id, and the action the same trust fingerprint.
struct Place {
    const Uuid& deck;
    std::string name;

    Place child(const char* key, std::size_t index) const {
        return {deck, name + "/" + key + "/" + std::to_string(index)};
    }
    Uuid id() const { return Uuid::nameBased(deck, name); }
};

APIRequestSpec readRequest(const json& value, const std::string& path, const Place& action) {
    JsonObjectReader r(value, path);
    APIRequestSpec request;
    request.method = r.string("method");
    request.urlString = r.string("urlString");
    if (const json* headers = r.optionalArray("headers")) {
        for (std::size_t i = 0; i < headers->size(); ++i) {
            JsonObjectReader h((*headers)[i], indexedPath(r.pathOf("headers"), i));
            HTTPHeaderField field;
            auto id = h.optionalUuid("id");
            field.id = id ? *id : action.child("headers", i).id();
            field.name = h.string("name");
            field.value = h.string("value");
            request.headers.push_back(std::move(field));
        }
    }
    request.body = r.string("body");
    request.useProfileCookies = r.boolean("useProfileCookies");
    return request;
}

// The older `kind` key: an object with exactly one key, apiRequest or
// pageScript, whose value holds the payload under "_0".
SlideActionKind readKind(const json& value, const std::string& path, const Place& action) {
    JsonObjectReader r(value, path);
    static const char* const invalidCount = N_("Invalid number of keys found, expected one.");
    if (value.size() != 1) throw JsonReadFailure(path, _(invalidCount));
    auto only = value.begin();
    const std::string& key = only.key();
    const json& payload = only.value();
    if (key == "apiRequest") {
        JsonObjectReader p(payload, r.pathOf(key));
        const json* request = p.find("_0");
        if (!request) p.fail("_0", _("missing"));
        return readRequest(*request, p.pathOf("_0"), action);
    }
    if (key == "pageScript") {
        JsonObjectReader p(payload, r.pathOf(key));
        auto script = p.optionalString("_0");
        if (!script) p.fail("_0", _("missing"));
        return *script;
    }
    throw JsonReadFailure(path, _(invalidCount));
}

SlideAction readAction(const json& value, const std::string& path, const Place& place) {
    JsonObjectReader r(value, path);
    SlideAction action;
    auto id = r.optionalUuid("id");
    action.id = id ? *id : place.id();
    action.name = r.string("name");
    if (auto kindCase = r.optionalString("kindCase")) {
        // An unknown kind from a newer version falls back to the first case.
        action.kindCase = enumFromName<SlideActionKindCase>(*kindCase).value_or(SlideActionKindCase::apiRequest);
        if (const json* request = r.find("request")) {
            action.request = readRequest(*request, r.pathOf("request"), place);
        }
        action.script = r.string("script");
    } else if (const json* kind = r.find("kind")) {
        auto payload = readKind(*kind, r.pathOf("kind"), place);
        if (auto* request = std::get_if<APIRequestSpec>(&payload)) {
            action.kindCase = SlideActionKindCase::apiRequest;
            action.request = std::move(*request);
        } else {
            action.kindCase = SlideActionKindCase::pageScript;
            action.script = std::get<std::string>(std::move(payload));
        }
    }
    action.reloadsLiveView = r.boolean("reloadsLiveView");
    action.autoRun = r.boolean("autoRun");
    action.autoRunDelaySeconds = r.number("autoRunDelaySeconds", 0);
    action.repeats = r.boolean("repeats");
    action.repeatIntervalSeconds = r.number("repeatIntervalSeconds", 5.0);
    action.repeatMaxRuns = r.integer("repeatMaxRuns", 0);
    return action;
}

SlideLink readLink(const json& value, const std::string& path) {
    JsonObjectReader r(value, path);
    SlideLink link;
    if (auto id = r.optionalUuid("id")) link.id = *id;
    link.label = r.string("label");
    link.subtitle = r.string("subtitle");
    link.fillHex = r.optionalString("fillHex");
    link.filled = r.boolean("filled");
    link.targetId = r.string("targetId");
    return link;
}

struct OldLayout {
    std::string_view name;
    SlideLayout layout;
    SlidePosition position;
};
constexpr OldLayout oldLayouts[] = {
    {"title", SlideLayout::regular, SlidePosition::full},
    {"webFull", SlideLayout::web, SlidePosition::full},
    {"webLeft", SlideLayout::web, SlidePosition::left},
    {"webRight", SlideLayout::web, SlidePosition::right},
    {"split", SlideLayout::web, SlidePosition::topBottom},
};

double clampedWebZoom(const json* value) {
    if (!value) return 1.0;
    auto zoom = jsonDouble(*value);
    if (!zoom || !std::isfinite(*zoom)) return 1.0;
    if (*zoom <= Slide::minWebZoom) return Slide::minWebZoom;
    if (*zoom > Slide::maxWebZoom) return Slide::maxWebZoom;
    return *zoom;
}

Slide readSlide(const json& value, const std::string& path, const Place& place) {
    JsonObjectReader r(value, path);
    Slide slide;
    slide.id = r.requiredUuid("id");

    std::string layout = r.string("layout", "regular");
    auto old = std::find_if(std::begin(oldLayouts), std::end(oldLayouts),
                            [&](const OldLayout& o) { return o.name == layout; });
    if (old != std::end(oldLayouts)) {
        slide.layout = old->layout;
        slide.position = old->position;
    } else {
        slide.layout = enumFromName<SlideLayout>(layout).value_or(SlideLayout::regular);
        auto position = r.optionalString("position");
        slide.position = position ? enumFromName<SlidePosition>(*position).value_or(SlidePosition::full)
                                  : SlidePosition::full;
    }

    if (auto url = r.optionalString("url"); url && DeckJson::isWebAddress(*url)) slide.url = std::move(url);
    slide.browserProfileId = r.optionalUuid("browserProfileId");

    if (auto data = r.optionalString("imageData")) {
        auto bytes = base64Decode(*data);
        if (!bytes) r.fail("imageData", _("not valid Base64"));
        slide.imageData = SharedBytes(std::move(*bytes));
    } else {
        slide.imageFile = r.optionalString("imageFile");
    }
    slide.imageName = r.optionalString("imageName");
    slide.imageFill = r.boolean("imageFill");
    slide.eyebrow = r.string("eyebrow");
    slide.title = r.string("title");
    slide.subtitle = r.string("subtitle");
    if (const json* body = r.find("body")) slide.body = attributedTextFromJson(*body, r.pathOf("body"));

    if (const json* links = r.optionalArray("links")) {
        for (std::size_t i = 0; i < links->size(); ++i) {
            slide.links.push_back(readLink((*links)[i], indexedPath(r.pathOf("links"), i)));
        }
    }

    auto reveal = r.optionalString("reveal");
    slide.reveal = (reveal == "reveal" || reveal == "auto" || reveal == "manualByParagraph") ? RevealMode::reveal
                                                                                             : RevealMode::all;
    auto granularity = r.optionalString("revealGranularity");
    slide.revealGranularity =
        granularity == "line"       ? RevealGranularity::line
        : granularity == "listItem" ? RevealGranularity::listItem
                                    : RevealGranularity::paragraph;

    if (const json* plan = r.optionalArray("revealPlan")) {
        std::vector<std::vector<std::int64_t>> steps;
        for (std::size_t i = 0; i < plan->size(); ++i) {
            const json& step = (*plan)[i];
            std::string stepPath = indexedPath(r.pathOf("revealPlan"), i);
            if (!step.is_array()) throw JsonReadFailure(stepPath, _("expected an array"));
            std::vector<std::int64_t> units;
            for (std::size_t j = 0; j < step.size(); ++j) {
                auto unit = jsonInteger(step[j]);
                if (!unit) throw JsonReadFailure(indexedPath(stepPath, j), _("expected a whole number"));
                units.push_back(*unit);
            }
            steps.push_back(std::move(units));
        }
        slide.revealPlan = std::move(steps);
    }
    slide.accentHex = r.optionalString("accentHex");
    slide.showLinkSubtitles = r.boolean("showLinkSubtitles");
    slide.notes = r.string("notes");

    slide.sectionTitle = r.optionalString("sectionTitle");
    slide.isSection = r.optionalBool("isSection").value_or(slide.sectionTitle && !slide.sectionTitle->empty());
    slide.sectionId = r.optionalUuid("sectionId");
    slide.nextSlideAction = r.optionalString("nextSlideAction");
    slide.isSkipped = r.boolean("isSkipped");
    slide.webZoom = clampedWebZoom(r.find("webZoom"));

    if (const json* actions = r.optionalArray("actions")) {
        for (std::size_t i = 0; i < actions->size(); ++i) {
            slide.actions.push_back(
                readAction((*actions)[i], indexedPath(r.pathOf("actions"), i), place.child("actions", i)));
        }
    }
    return slide;
}

Deck readDeck(const json& value) {
    if (!value.is_object()) throw JsonReadFailure("", _("The document is not a JSON object."));
    JsonObjectReader r(value, "");
    Deck deck;
    deck.schemaVersion = r.integer("schemaVersion", 1);
    deck.id = r.requiredUuid("id");
    deck.title = r.optionalString("title");
    deck.theme = enumFromName<Theme>(r.string("theme")).value_or(Theme::clinical);
    deck.accentHex = r.optionalString("accentHex");
    if (const json* palette = r.find("palette")) {
        JsonObjectReader p(*palette, r.pathOf("palette"));
        std::vector<std::optional<std::string>> swatches;
        if (const json* list = p.optionalArray("swatches")) {
            for (std::size_t i = 0; i < list->size(); ++i) {
                const json& swatch = (*list)[i];
                if (swatch.is_null()) {
                    swatches.emplace_back();
                } else if (swatch.is_string()) {
                    swatches.emplace_back(swatch.get<std::string>());
                } else {
                    throw JsonReadFailure(indexedPath(p.pathOf("swatches"), i), _("expected a string"));
                }
            }
        }
        deck.palette = DeckPalette(std::move(swatches));
    }
    if (const json* profiles = r.optionalArray("browserProfiles")) {
        for (std::size_t i = 0; i < profiles->size(); ++i) {
            JsonObjectReader p((*profiles)[i], indexedPath(r.pathOf("browserProfiles"), i));
            BrowserProfile profile;
            if (auto id = p.optionalUuid("id")) profile.id = *id;
            profile.name = p.string("name");
            deck.browserProfiles.push_back(std::move(profile));
        }
    }
    const json& slides = r.requiredArray("slides");
    for (std::size_t i = 0; i < slides.size(); ++i) {
        Place place{deck.id, "slides/" + std::to_string(i)};
        deck.slides.push_back(readSlide(slides[i], indexedPath("slides", i), place));
    }
    // Talk length is read leniently: a wrong type or a value below 1 is absent.
    if (const json* minutes = r.find("targetMinutes")) {
        if (auto value = jsonInteger(*minutes); value && *value >= 1) deck.targetMinutes = value;
    }
    deck.dropDanglingProfileReferences();
    return deck;
}

// ---------------------------------------------------------------- writing

template <class T>
void putOptional(json& out, const char* key, const std::optional<T>& value) {
    if (value) out[key] = *value;
}

json requestToJson(const APIRequestSpec& request) {
    json headers = json::array();
    for (const auto& h : request.headers) {
        headers.push_back({{"id", h.id.string()}, {"name", h.name}, {"value", h.value}});
    }
    return {{"method", request.method},
            {"urlString", request.urlString},
            {"headers", std::move(headers)},
            {"body", request.body},
            {"useProfileCookies", request.useProfileCookies}};
}

json linkToJson(const SlideLink& link) {
    json out = {{"id", link.id.string()},
                {"label", link.label},
                {"subtitle", link.subtitle},
                {"filled", link.filled},
                {"targetId", link.targetId}};
    putOptional(out, "fillHex", link.fillHex);
    return out;
}

}  // namespace

json DeckJson::toJson(const SlideAction& action) {
    return {{"id", action.id.string()},
            {"name", action.name},
            {"kindCase", enumName(action.kindCase)},
            {"request", requestToJson(action.request)},
            {"script", action.script},
            {"reloadsLiveView", action.reloadsLiveView},
            {"autoRun", action.autoRun},
            {"autoRunDelaySeconds", action.autoRunDelaySeconds},
            {"repeats", action.repeats},
            {"repeatIntervalSeconds", action.repeatIntervalSeconds},
            {"repeatMaxRuns", action.repeatMaxRuns}};
}

json DeckJson::toJson(const Slide& slide) {
    json out;
    out["id"] = slide.id.string();
    out["layout"] = enumName(slide.layout);
    out["position"] = enumName(slide.position);
    putOptional(out, "url", slide.url);
    if (slide.browserProfileId) out["browserProfileId"] = slide.browserProfileId->string();
    if (slide.imageData) out["imageData"] = base64Encode(slide.imageData->span());
    putOptional(out, "imageFile", slide.imageFile);
    putOptional(out, "imageName", slide.imageName);
    out["imageFill"] = slide.imageFill;
    out["eyebrow"] = slide.eyebrow;
    out["title"] = slide.title;
    out["subtitle"] = slide.subtitle;
    out["body"] = attributedTextToJson(slide.body);
    out["links"] = json::array();
    for (const auto& link : slide.links) out["links"].push_back(linkToJson(link));
    out["reveal"] = enumName(slide.reveal);
    out["revealGranularity"] = enumName(slide.revealGranularity);
    putOptional(out, "revealPlan", slide.revealPlan);
    putOptional(out, "accentHex", slide.accentHex);
    out["showLinkSubtitles"] = slide.showLinkSubtitles;
    out["notes"] = slide.notes;
    out["isSection"] = slide.isSection;
    if (slide.sectionId) out["sectionId"] = slide.sectionId->string();
    putOptional(out, "sectionTitle", slide.sectionTitle);
    putOptional(out, "nextSlideAction", slide.nextSlideAction);
    out["isSkipped"] = slide.isSkipped;
    out["webZoom"] = slide.webZoom;
    out["actions"] = json::array();
    for (const auto& action : slide.actions) out["actions"].push_back(toJson(action));
    return out;
}

json DeckJson::toJson(const Deck& deck) {
    json out;
    out["schemaVersion"] = deck.schemaVersion;
    out["id"] = deck.id.string();
    putOptional(out, "title", deck.title);
    out["theme"] = enumName(deck.theme);
    putOptional(out, "accentHex", deck.accentHex);
    json swatches = json::array();
    for (const auto& swatch : deck.palette.swatches()) swatches.push_back(swatch ? json(*swatch) : json(nullptr));
    out["palette"] = {{"swatches", std::move(swatches)}};
    out["browserProfiles"] = json::array();
    for (const auto& p : deck.browserProfiles) out["browserProfiles"].push_back({{"id", p.id.string()}, {"name", p.name}});
    out["slides"] = json::array();
    for (const auto& slide : deck.slides) out["slides"].push_back(toJson(slide));
    putOptional(out, "targetMinutes", deck.targetMinutes);
    return out;
}

std::string DeckJson::encode(const Deck& deck) {
    // nlohmann's object keeps its keys sorted; invalid UTF-8 (which a read
    // never produces) is replaced rather than failing the save.
    return toJson(deck).dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

Result<Deck> DeckJson::fromJson(const json& document) {
    try {
        return readDeck(document);
    } catch (const JsonReadFailure& failure) {
        return Error{failure.message(), ErrorKind::decoding};
    }
}

Result<Deck> DeckJson::decode(std::string_view bytes) {
    json document;
    try {
        document = json::parse(bytes);
    } catch (const json::exception& e) {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: ...",
        // or out_of_range for a number too large for a double.
        std::string what = e.what();
        if (auto end = what.find("] "); what.rfind("[json.exception", 0) == 0 && end != std::string::npos) {
            what.erase(0, end + 2);
        }
        return Error{formatText(_("Not valid JSON: %s"), what.c_str()), ErrorKind::decoding};
    }
    return fromJson(document);
}

bool DeckJson::isWebAddress(std::string_view url) {
    // scheme = ALPHA *( ALPHA / DIGIT / "+" / "-" / "." ) ":"
    auto colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0) return false;
    std::string scheme;
    for (std::size_t i = 0; i < colon; ++i) {
        char c = url[i];
        bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        bool other = (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
        if (!letter && (i == 0 || !other)) return false;
        scheme.push_back(static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c));
    }
    return scheme == "http" || scheme == "https";
}

}  // namespace lectern
