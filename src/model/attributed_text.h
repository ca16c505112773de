#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/enum_names.h"

namespace lectern {

enum class SlideBodyAlignment { leading, center, trailing };
enum class SlideBodyBlockKind { command };

template <>
struct EnumNames<SlideBodyAlignment> {
    static constexpr std::array<std::string_view, 3> names{"leading", "center", "trailing"};
};
template <>
struct EnumNames<SlideBodyBlockKind> {
    static constexpr std::array<std::string_view, 1> names{"command"};
};

// Bits of the inline presentation intent carried with body text.
namespace inline_intent {
constexpr std::uint32_t emphasized = 1;          // shown italic
constexpr std::uint32_t stronglyEmphasized = 2;  // shown bold
constexpr std::uint32_t code = 4;
constexpr std::uint32_t strikethrough = 32;
constexpr std::uint32_t known = emphasized | stronglyEmphasized | code | strikethrough;
}  // namespace inline_intent

// The only attributes a slide body may carry. Fonts are not stored: the theme
// decides typography, and bold and italic travel as inline intent bits.
struct SlideBodyAttributes {
    std::uint32_t inlineIntent = 0;             // bits of inline_intent::known
    bool underline = false;                     // single underline
    bool strikethrough = false;                 // single strikethrough
    std::optional<std::string> foregroundColor; // "#RRGGBB"
    // Paragraph-wide: a value covers whole paragraphs.
    std::optional<SlideBodyAlignment> alignment;  // absent: leading
    std::optional<SlideBodyBlockKind> block;      // absent: ordinary text

    bool isBold() const { return inlineIntent & inline_intent::stronglyEmphasized; }
    bool isItalic() const { return inlineIntent & inline_intent::emphasized; }
    bool isCommand() const { return block == SlideBodyBlockKind::command; }
    bool empty() const { return *this == SlideBodyAttributes{}; }

    friend bool operator==(const SlideBodyAttributes&, const SlideBodyAttributes&) = default;
};

struct AttributedRun {
    std::string text;
    SlideBodyAttributes attributes;
    friend bool operator==(const AttributedRun&, const AttributedRun&) = default;
};

// UTF-8 text with attribute runs. Offsets are byte offsets into the UTF-8
// string and must fall on character boundaries. The runs are kept maximal
// (no empty run, no two neighbours with equal attributes), so two texts that
// look the same compare equal.
class AttributedText {
public:
    AttributedText() = default;
    explicit AttributedText(std::string text, SlideBodyAttributes attributes = {});
    static AttributedText fromRuns(const std::vector<AttributedRun>& runs);

    const std::string& string() const { return text_; }
    std::size_t size() const { return text_.size(); }
    bool empty() const { return text_.empty(); }

    std::vector<AttributedRun> runs() const;
    // Calls visit(begin, end, attributes) for each maximal run, in order.
    void forEachRun(const std::function<void(std::size_t, std::size_t, const SlideBodyAttributes&)>& visit) const;
    // Attributes of the character at offset (offset < size()).
    const SlideBodyAttributes& attributesAt(std::size_t offset) const;

    // Attributes are taken by value: callers may pass attributes of this very
    // text (attributesAt), which the edit would otherwise invalidate.
    void append(std::string_view text, SlideBodyAttributes attributes = {});
    void append(const AttributedText& other);
    // Replaces [begin, end) by text carrying the given attributes.
    void replace(std::size_t begin, std::size_t end, std::string_view text, SlideBodyAttributes attributes = {});
    // Applies change to the attributes of every run within [begin, end).
    void modifyAttributes(std::size_t begin, std::size_t end,
                          const std::function<void(SlideBodyAttributes&)>& change);
    AttributedText slice(std::size_t begin, std::size_t end) const;

    friend bool operator==(const AttributedText&, const AttributedText&) = default;

private:
    struct Span {
        std::size_t length = 0;
        SlideBodyAttributes attributes;
        friend bool operator==(const Span&, const Span&) = default;
    };
    // Splits the span containing offset so that a span starts there; returns
    // the index of that span (spans_.size() when offset == size()).
    std::size_t splitAt(std::size_t offset);
    void normalize();

    std::string text_;
    std::vector<Span> spans_;
};

}  // namespace lectern
