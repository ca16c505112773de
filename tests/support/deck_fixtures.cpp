#include "support/deck_fixtures.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace lectern::testing {

namespace {

std::vector<std::uint8_t> noise(std::uint32_t salt, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::uint32_t state = salt * 2654435761u + 1;
    for (auto& b : bytes) {
        state = state * 1664525u + 1013904223u;
        b = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

}  // namespace

SharedBytes fakePng(std::uint32_t salt, std::size_t size) {
    std::vector<std::uint8_t> bytes{0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    auto rest = noise(salt, size);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return SharedBytes(std::move(bytes));
}

SharedBytes fakeJpeg(std::uint32_t salt, std::size_t size) {
    std::vector<std::uint8_t> bytes{0xFF, 0xD8, 0xFF, 0xE0};
    auto rest = noise(salt, size);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return SharedBytes(std::move(bytes));
}

Slide imageSlide(const SharedBytes& bytes, std::string title) {
    Slide slide = Slide::make(SlideLayout::image);
    slide.title = std::move(title);
    slide.setImage(bytes, "Picture.png");
    return slide;
}

void writeText(const std::filesystem::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::vector<std::string> listFolder(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace lectern::testing
