#include "present/action_trust.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <algorithm>

#include "base/translation.h"
#include "model/deck_json.h"
#include "model/digests.h"
#include "present/action_runner.h"

namespace lectern {

using nlohmann::json;

namespace {

std::string trimmed(const std::string& text) {
    const char* space = " \t\n\r\v\f";
    auto begin = text.find_first_not_of(space);
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

// The host of an address, lower-cased as parsed; nullopt without one.
std::optional<std::string> hostOf(const std::string& address) {
    GUri* uri = g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr);
    if (!uri) return std::nullopt;
    std::optional<std::string> host;
    if (const char* h = g_uri_get_host(uri); h && *h) host = h;
    g_uri_unref(uri);
    return host;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c); });
    return text;
}

}  // namespace

std::optional<std::string> ActionTrust::fingerprint(const SlideAction& action, const Slide& slide) {
    json subject = {{"action", DeckJson::toJson(action)}};
    if (slide.url) subject["url"] = *slide.url;
    if (slide.browserProfileId) subject["profileId"] = slide.browserProfileId->string();
    try {
        return sha256Hex(subject.dump());  // keys sorted, compact
    } catch (const json::exception&) {
        return std::nullopt;  // text that cannot be encoded is never trusted
    }
}

std::set<std::string> ActionTrust::trustedFingerprints(const PreferencesStore& store) {
    std::set<std::string> trusted;
    const json* stored = store.value(preferencesKey);
    if (!stored || !stored->is_array()) return trusted;
    for (const auto& entry : *stored) {
        if (!entry.is_string()) return {};  // not an array of strings: treated as empty
        trusted.insert(entry.get<std::string>());
    }
    return trusted;
}

void ActionTrust::trust(const std::vector<std::string>& fingerprints, PreferencesStore& store) {
    json stored = json::array();
    if (const json* current = store.value(preferencesKey); current && current->is_array() &&
                                                           std::all_of(current->begin(), current->end(),
                                                                       [](const json& e) { return e.is_string(); })) {
        stored = *current;
    }
    std::set<std::string> present;
    for (const auto& entry : stored) present.insert(entry.get<std::string>());
    bool added = false;
    for (const auto& fp : fingerprints) {
        if (present.insert(fp).second) {
            stored.push_back(fp);
            added = true;
        }
    }
    if (added) (void)store.setValue(preferencesKey, std::move(stored));
}

Slide ActionTrust::trustedSlide(const Slide& slide, const PreferencesStore& store) {
    auto trusted = trustedFingerprints(store);
    Slide copy = slide;
    std::erase_if(copy.actions, [&](const SlideAction& action) {
        auto fp = fingerprint(action, slide);
        return !fp || !trusted.contains(*fp);
    });
    return copy;
}

std::vector<ActionTrust::Request> ActionTrust::requests(const Deck& deck, const PreferencesStore& store) {
    auto trusted = trustedFingerprints(store);
    std::vector<Request> requests;
    for (const auto& slide : deck.slides) {
        for (const auto& action : slide.actions) {
            auto fp = fingerprint(action, slide);
            if (fp && trusted.contains(*fp)) continue;
            // An action without a fingerprint can never be allowed; it is
            // listed so the presenter sees it, under an id that trusts nothing.
            requests.push_back({fp.value_or(""), summary(action, slide)});
        }
    }
    return requests;
}

std::string ActionTrust::summary(const SlideAction& action, const Slide& slide) {
    const std::string name = ActionRunner::displayName(action);
    std::string text;
    if (action.kindCase == SlideActionKindCase::pageScript) {
        std::optional<std::string> host = slide.url ? hostOf(*slide.url) : std::nullopt;
        text = formatText(_("\u201C%s\u201D runs a script in %s"), name.c_str(),
                          host ? host->c_str() : _("the slide's page"));
    } else {
        std::string target = trimmed(action.request.urlString);
        text = formatText(_("\u201C%s\u201D sends %s to %s"), name.c_str(), upper(action.request.method).c_str(),
                          hostOf(target).value_or(target).c_str());
        if (action.request.useProfileCookies) text += _(" with the profile's cookies");
    }
    if (action.autoRun) text += _(" (runs by itself)");
    return text;
}

namespace {

// What an action does, apart from ids: equal for a moved, re-pointed or
// duplicated action, different after any edit of the action itself.
std::string contentKey(const SlideAction& action) {
    json content = DeckJson::toJson(action);
    content.erase("id");
    for (auto& header : content["request"]["headers"]) header.erase("id");
    try {
        return sha256Hex(content.dump());
    } catch (const json::exception&) {
        return {};  // such an action has no fingerprint either
    }
}

// Calls `visit(key, fingerprint)` for every action of the deck that has one.
template <class Visit>
void forEachAction(const Deck& deck, Visit visit) {
    for (const auto& slide : deck.slides) {
        for (const auto& action : slide.actions) {
            if (auto fp = ActionTrust::fingerprint(action, slide)) visit(contentKey(action), *fp);
        }
    }
}

}  // namespace

MadeElsewhereTracker::MadeElsewhereTracker(const Deck& opened) {
    forEachAction(opened, [&](std::string key, const std::string& fp) { received_[std::move(key)].insert(fp); });
}

void MadeElsewhereTracker::deckChanged(const Deck& deck, PreferencesStore& store) {
    auto trusted = ActionTrust::trustedFingerprints(store);
    auto allTrusted = [&](const std::set<std::string>& fps) {
        return std::all_of(fps.begin(), fps.end(), [&](const std::string& fp) { return trusted.contains(fp); });
    };
    std::vector<std::string> added;
    std::map<std::string, std::set<std::string>> seen;  // received content in this deck
    forEachAction(deck, [&](std::string key, const std::string& fp) {
        auto before = received_.find(key);
        if (before != received_.end()) seen[std::move(key)].insert(fp);
        if (trusted.contains(fp)) return;
        if (before == received_.end() || allTrusted(before->second)) added.push_back(fp);
    });
    for (auto& [key, fps] : seen) received_[key].merge(fps);
    if (!added.empty()) ActionTrust::trust(added, store);
}

}  // namespace lectern
