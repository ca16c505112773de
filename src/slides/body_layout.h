#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "model/attributed_text.h"

namespace lectern {

// One non-blank line of a body, the unit that reveal steps are made of.
struct RevealUnit {
    AttributedText text;
    std::size_t index = 0;                // among the non-blank lines, from 0
    std::size_t precedingBlankLines = 0;  // blank lines directly before it
    friend bool operator==(const RevealUnit&, const RevealUnit&) = default;
};

// One renderable line.
struct AlignedParagraph {
    std::size_t id = 0;  // position of the line among all the body's lines
    AttributedText text;
    SlideBodyAlignment alignment = SlideBodyAlignment::leading;
    bool isCommand = false;
    friend bool operator==(const AlignedParagraph&, const AlignedParagraph&) = default;
};

// An ordinary line, or consecutive command lines drawn as one code block.
struct BodyRenderItem {
    enum class Kind { paragraph, commandBlock };
    Kind kind = Kind::paragraph;
    std::vector<AlignedParagraph> lines;  // exactly one for a paragraph
    friend bool operator==(const BodyRenderItem&, const BodyRenderItem&) = default;
};

// Reveal units: the non-blank lines, each with the count of blank lines
// (spaces and tabs only) directly before it.
std::vector<RevealUnit> revealUnits(const AttributedText& body);

// Render items of the non-blank lines, command lines gathered into blocks.
std::vector<BodyRenderItem> renderItems(const AttributedText& body);

}  // namespace lectern
