#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace lectern {

// An immutable byte buffer shared between copies. Copying a deck (undo keeps
// whole copies) copies only the pointer, never the image bytes. Equality
// compares contents, with a fast path for the same buffer.
class SharedBytes {
public:
    SharedBytes() : data_(emptyBuffer()) {}
    explicit SharedBytes(std::vector<std::uint8_t> bytes)
        : data_(std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes))) {}
    static SharedBytes fromString(std::string_view text) {
        return SharedBytes(std::vector<std::uint8_t>(text.begin(), text.end()));
    }

    const std::uint8_t* data() const { return data_->data(); }
    std::size_t size() const { return data_->size(); }
    bool empty() const { return data_->empty(); }
    std::span<const std::uint8_t> span() const { return {data_->data(), data_->size()}; }
    std::string_view view() const {
        return {reinterpret_cast<const char*>(data_->data()), data_->size()};
    }
    // True when both share one buffer (no bytes were copied between them).
    bool sharesBufferWith(const SharedBytes& other) const { return data_ == other.data_; }

    friend bool operator==(const SharedBytes& a, const SharedBytes& b) {
        return a.data_ == b.data_ || *a.data_ == *b.data_;
    }

private:
    static const std::shared_ptr<const std::vector<std::uint8_t>>& emptyBuffer() {
        static const auto none = std::make_shared<const std::vector<std::uint8_t>>();
        return none;
    }
    std::shared_ptr<const std::vector<std::uint8_t>> data_;
};

}  // namespace lectern
