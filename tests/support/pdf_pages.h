#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lectern::testing {

// One page of a PDF as a reader sees it.
struct PdfPage {
    double width = 0;  // points
    double height = 0;
    std::string text;
    // ARGB pixels at one pixel per point, when asked for.
    std::vector<unsigned char> pixels;
};

// Reads a PDF back with poppler: every page's size and text, and with
// `render` its picture. Empty when the file is not a PDF.
std::vector<PdfPage> readPdf(const std::filesystem::path& path, bool render = false);

}  // namespace lectern::testing
