#pragma once

#include "model/enum_names.h"

namespace lectern {

enum class Theme { clinical, editorial, monochrome, dark };
enum class SlideLayout { regular, callout, decisions, web, image };
enum class SlidePosition { full, left, right, topBottom, inText };
enum class RevealMode { all, reveal };
enum class RevealGranularity { paragraph, line, listItem };
enum class SlideActionKindCase { apiRequest, pageScript };

template <>
struct EnumNames<Theme> {
    static constexpr std::array<std::string_view, 4> names{"clinical", "editorial", "monochrome", "dark"};
};
template <>
struct EnumNames<SlideLayout> {
    static constexpr std::array<std::string_view, 5> names{"regular", "callout", "decisions", "web", "image"};
};
template <>
struct EnumNames<SlidePosition> {
    static constexpr std::array<std::string_view, 5> names{"full", "left", "right", "topBottom", "inText"};
};
template <>
struct EnumNames<RevealMode> {
    static constexpr std::array<std::string_view, 2> names{"all", "reveal"};
};
template <>
struct EnumNames<RevealGranularity> {
    static constexpr std::array<std::string_view, 3> names{"paragraph", "line", "listItem"};
};
template <>
struct EnumNames<SlideActionKindCase> {
    static constexpr std::array<std::string_view, 2> names{"apiRequest", "pageScript"};
};

}  // namespace lectern
