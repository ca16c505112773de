#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "model/deck.h"

namespace lectern::testing {

// Bytes that start with the PNG signature (enough for media naming), followed
// by `size` bytes derived from salt.
SharedBytes fakePng(std::uint32_t salt, std::size_t size = 64);
// Bytes without the PNG signature, named as JPEG.
SharedBytes fakeJpeg(std::uint32_t salt, std::size_t size = 64);

// A slide showing the given image.
Slide imageSlide(const SharedBytes& bytes, std::string title = "Picture");

void writeText(const std::filesystem::path& path, std::string_view text);
std::string readText(const std::filesystem::path& path);
// Names of the entries of a folder, sorted.
std::vector<std::string> listFolder(const std::filesystem::path& folder);

}  // namespace lectern::testing
