#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "model/attributed_text.h"

namespace lectern {

// Stored names of the body attributes.
namespace body_keys {
inline constexpr const char* alignment = "com.corvane.lectern.SlideBodyAlignmentAttribute";
inline constexpr const char* block = "com.corvane.lectern.SlideBodyBlockAttribute";
inline constexpr const char* inlineIntent = "NSInlinePresentationIntent";
inline constexpr const char* underline = "NSUnderline";
inline constexpr const char* strikethrough = "NSStrikethrough";
inline constexpr const char* color = "NSColor";
}  // namespace body_keys

// The body's JSON: the alternating array ["text", {attributes}, ...].
nlohmann::json attributedTextToJson(const AttributedText& text);

// Reads the alternating array, a plain string, or the table form
// {"runs": ["text", 0, ...], "attributeTable": [{...}, ...]}. Attribute keys
// other than the body's own (links and fonts included) are dropped, and so is
// an unknown value of a known key. Throws JsonReadFailure naming `path` when
// the shape is wrong.
AttributedText attributedTextFromJson(const nlohmann::json& value, const std::string& path);

}  // namespace lectern
