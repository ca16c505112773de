#include "slides/body_layout.h"

#include "model/body_lines.h"

namespace lectern {

namespace {

struct TextLine {
    BodyLine line;
    bool blank = false;
};

std::vector<TextLine> classify(const AttributedText& body) {
    std::vector<TextLine> lines;
    for (const auto& line : splitLines(body.string())) {
        lines.push_back({line, isBlankLine(std::string_view(body.string()).substr(line.begin, line.length()))});
    }
    return lines;
}

// Paragraph-wide attributes of a line: those of its first character, or of
// its newline when the line is empty.
SlideBodyAttributes paragraphAttributes(const AttributedText& body, const BodyLine& line) {
    if (line.begin < line.paragraphEnd()) return body.attributesAt(line.begin);
    return {};
}

}  // namespace

std::vector<RevealUnit> revealUnits(const AttributedText& body) {
    std::vector<RevealUnit> units;
    std::size_t blanks = 0;
    for (const auto& [line, blank] : classify(body)) {
        if (blank) {
            ++blanks;
            continue;
        }
        units.push_back({body.slice(line.begin, line.end), units.size(), blanks});
        blanks = 0;
    }
    return units;
}

std::vector<BodyRenderItem> renderItems(const AttributedText& body) {
    std::vector<BodyRenderItem> items;
    for (const auto& [line, blank] : classify(body)) {
        if (blank) continue;
        SlideBodyAttributes attributes = paragraphAttributes(body, line);
        AlignedParagraph paragraph{line.index, body.slice(line.begin, line.end),
                                   attributes.alignment.value_or(SlideBodyAlignment::leading), attributes.isCommand()};
        if (paragraph.isCommand && !items.empty() && items.back().kind == BodyRenderItem::Kind::commandBlock) {
            items.back().lines.push_back(std::move(paragraph));
        } else {
            auto kind = paragraph.isCommand ? BodyRenderItem::Kind::commandBlock : BodyRenderItem::Kind::paragraph;
            items.push_back({kind, {std::move(paragraph)}});
        }
    }
    return items;
}

}  // namespace lectern
