#include "model/attributed_text.h"

#include <algorithm>
#include <cassert>

namespace lectern {

AttributedText::AttributedText(std::string text, SlideBodyAttributes attributes) : text_(std::move(text)) {
    if (!text_.empty()) spans_.push_back({text_.size(), std::move(attributes)});
}

AttributedText AttributedText::fromRuns(const std::vector<AttributedRun>& runs) {
    AttributedText out;
    for (const auto& run : runs) out.append(run.text, run.attributes);
    return out;
}

std::vector<AttributedRun> AttributedText::runs() const {
    std::vector<AttributedRun> out;
    out.reserve(spans_.size());
    forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& attributes) {
        out.push_back({text_.substr(begin, end - begin), attributes});
    });
    return out;
}

void AttributedText::forEachRun(
    const std::function<void(std::size_t, std::size_t, const SlideBodyAttributes&)>& visit) const {
    std::size_t at = 0;
    for (const auto& span : spans_) {
        visit(at, at + span.length, span.attributes);
        at += span.length;
    }
}

const SlideBodyAttributes& AttributedText::attributesAt(std::size_t offset) const {
    assert(offset < text_.size());
    std::size_t at = 0;
    for (const auto& span : spans_) {
        if (offset < at + span.length) return span.attributes;
        at += span.length;
    }
    return spans_.back().attributes;
}

void AttributedText::append(std::string_view text, SlideBodyAttributes attributes) {
    if (text.empty()) return;
    text_.append(text);
    if (!spans_.empty() && spans_.back().attributes == attributes) {
        spans_.back().length += text.size();
    } else {
        spans_.push_back({text.size(), std::move(attributes)});
    }
}

void AttributedText::append(const AttributedText& other) {
    other.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& attributes) {
        append(std::string_view(other.text_).substr(begin, end - begin), attributes);
    });
}

std::size_t AttributedText::splitAt(std::size_t offset) {
    std::size_t at = 0;
    for (std::size_t i = 0; i < spans_.size(); ++i) {
        if (offset == at) return i;
        if (offset < at + spans_[i].length) {
            Span tail{at + spans_[i].length - offset, spans_[i].attributes};
            spans_[i].length = offset - at;
            spans_.insert(spans_.begin() + static_cast<std::ptrdiff_t>(i) + 1, std::move(tail));
            return i + 1;
        }
        at += spans_[i].length;
    }
    return spans_.size();
}

void AttributedText::normalize() {
    std::vector<Span> merged;
    merged.reserve(spans_.size());
    for (auto& span : spans_) {
        if (span.length == 0) continue;
        if (!merged.empty() && merged.back().attributes == span.attributes) {
            merged.back().length += span.length;
        } else {
            merged.push_back(std::move(span));
        }
    }
    spans_ = std::move(merged);
}

void AttributedText::replace(std::size_t begin, std::size_t end, std::string_view text,
                             SlideBodyAttributes attributes) {
    end = std::min(end, text_.size());
    begin = std::min(begin, end);
    std::size_t first = splitAt(begin);
    std::size_t last = splitAt(end);
    spans_.erase(spans_.begin() + static_cast<std::ptrdiff_t>(first),
                 spans_.begin() + static_cast<std::ptrdiff_t>(last));
    if (!text.empty()) {
        spans_.insert(spans_.begin() + static_cast<std::ptrdiff_t>(first), {text.size(), std::move(attributes)});
    }
    text_.replace(begin, end - begin, text);
    normalize();
}

void AttributedText::modifyAttributes(std::size_t begin, std::size_t end,
                                      const std::function<void(SlideBodyAttributes&)>& change) {
    end = std::min(end, text_.size());
    if (begin >= end) return;
    std::size_t first = splitAt(begin);
    std::size_t last = splitAt(end);
    for (std::size_t i = first; i < last; ++i) change(spans_[i].attributes);
    normalize();
}

AttributedText AttributedText::slice(std::size_t begin, std::size_t end) const {
    end = std::min(end, text_.size());
    AttributedText out;
    forEachRun([&](std::size_t runBegin, std::size_t runEnd, const SlideBodyAttributes& attributes) {
        std::size_t from = std::max(runBegin, begin);
        std::size_t to = std::min(runEnd, end);
        if (from < to) out.append(std::string_view(text_).substr(from, to - from), attributes);
    });
    return out;
}

}  // namespace lectern
