#include "model/attributed_text_json.h"

#include <glib/gi18n.h>

#include "model/color.h"
#include "model/json_reader.h"

namespace lectern {

using nlohmann::json;

namespace {

json attributesToJson(const SlideBodyAttributes& a) {
    json out = json::object();
    if (a.inlineIntent != 0) out[body_keys::inlineIntent] = a.inlineIntent;
    if (a.underline) out[body_keys::underline] = 1;
    if (a.strikethrough) out[body_keys::strikethrough] = 1;
    if (a.foregroundColor) out[body_keys::color] = *a.foregroundColor;
    if (a.alignment) out[body_keys::alignment] = enumName(*a.alignment);
    if (a.block) out[body_keys::block] = enumName(*a.block);
    return out;
}

template <class E>
std::optional<E> enumValue(const json& value) {
    if (!value.is_string()) return std::nullopt;
    return enumFromName<E>(value.get_ref<const std::string&>());
}

bool styleOn(const json& value) {
    auto style = jsonInteger(value);
    return style && *style != 0;
}

SlideBodyAttributes attributesFromJson(const json& value, const std::string& path) {
    if (!value.is_object()) throw JsonReadFailure(path, _("expected an object of attributes"));
    SlideBodyAttributes a;
    for (const auto& [key, v] : value.items()) {
        if (key == body_keys::inlineIntent) {
            if (auto bits = jsonInteger(v); bits && *bits > 0) {
                a.inlineIntent = static_cast<std::uint32_t>(*bits) & inline_intent::known;
            }
        } else if (key == body_keys::underline) {
            a.underline = styleOn(v);
        } else if (key == body_keys::strikethrough) {
            a.strikethrough = styleOn(v);
        } else if (key == body_keys::color) {
            if (v.is_string()) a.foregroundColor = canonicalHex(v.get_ref<const std::string&>());
        } else if (key == body_keys::alignment) {
            a.alignment = enumValue<SlideBodyAlignment>(v);
        } else if (key == body_keys::block) {
            a.block = enumValue<SlideBodyBlockKind>(v);
        }
        // Every other attribute (links, fonts, anything unknown) is dropped.
    }
    return a;
}

const std::string& runText(const json& value, const std::string& path) {
    if (!value.is_string()) throw JsonReadFailure(path, _("expected text"));
    return value.get_ref<const std::string&>();
}

}  // namespace

json attributedTextToJson(const AttributedText& text) {
    json out = json::array();
    text.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& attributes) {
        out.push_back(text.string().substr(begin, end - begin));
        out.push_back(attributesToJson(attributes));
    });
    return out;
}

AttributedText attributedTextFromJson(const json& value, const std::string& path) {
    AttributedText out;
    if (value.is_string()) return AttributedText(value.get<std::string>());
    if (value.is_array()) {
        if (value.size() % 2 != 0) throw JsonReadFailure(path, _("expected text and attributes in pairs"));
        for (std::size_t i = 0; i < value.size(); i += 2) {
            const auto& text = runText(value[i], indexedPath(path, i));
            out.append(text, attributesFromJson(value[i + 1], indexedPath(path, i + 1)));
        }
        return out;
    }
    if (value.is_object()) {
        JsonObjectReader reader(value, path);
        const json& runs = reader.requiredArray("runs");
        const json& table = reader.requiredArray("attributeTable");
        std::vector<SlideBodyAttributes> attributes;
        for (std::size_t i = 0; i < table.size(); ++i) {
            attributes.push_back(attributesFromJson(table[i], indexedPath(reader.pathOf("attributeTable"), i)));
        }
        if (runs.size() % 2 != 0) reader.fail("runs", _("expected text and attribute indices in pairs"));
        for (std::size_t i = 0; i < runs.size(); i += 2) {
            const auto& text = runText(runs[i], indexedPath(reader.pathOf("runs"), i));
            auto index = jsonInteger(runs[i + 1]);
            if (!index || *index < 0 || static_cast<std::size_t>(*index) >= attributes.size()) {
                throw JsonReadFailure(indexedPath(reader.pathOf("runs"), i + 1), _("not an index of the attribute table"));
            }
            out.append(text, attributes[static_cast<std::size_t>(*index)]);
        }
        return out;
    }
    throw JsonReadFailure(path, _("expected rich text"));
}

}  // namespace lectern
