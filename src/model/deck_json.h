#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "model/deck.h"
#include "base/result.h"

namespace lectern {

// The JSON form of a deck (the package's deck.json). Reading is lenient and
// understands older spellings; writing always produces the current form,
// pretty-printed with keys sorted and absent optional fields left out.
class DeckJson {
public:
    // A failed read says where and what, e.g. "slides[3].id: not a UUID".
    static Result<Deck> decode(std::string_view bytes);
    static Result<Deck> fromJson(const nlohmann::json& document);
    // Pretty-printed, sorted keys, ending with a newline.
    static std::string encode(const Deck& deck);

    static nlohmann::json toJson(const Deck& deck);
    static nlohmann::json toJson(const Slide& slide);
    // Also the basis of an action's trust fingerprint.
    static nlohmann::json toJson(const SlideAction& action);

    // Whether a stored address may be a slide's web page: its scheme,
    // ignoring case, is http or https.
    static bool isWebAddress(std::string_view url);
};

}  // namespace lectern
