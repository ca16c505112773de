#include "support/pdf_pages.h"

#include <cairo.h>
#include <poppler.h>

#include <cmath>

namespace lectern::testing {

std::vector<PdfPage> readPdf(const std::filesystem::path& path, bool render) {
    std::vector<PdfPage> pages;
    char* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
    PopplerDocument* document = uri ? poppler_document_new_from_file(uri, nullptr, nullptr) : nullptr;
    g_free(uri);
    if (!document) return pages;
    for (int i = 0; i < poppler_document_get_n_pages(document); ++i) {
        PopplerPage* page = poppler_document_get_page(document, i);
        PdfPage read;
        poppler_page_get_size(page, &read.width, &read.height);
        char* text = poppler_page_get_text(page);
        read.text = text ? text : "";
        g_free(text);
        if (render) {
            int width = static_cast<int>(std::ceil(read.width)), height = static_cast<int>(std::ceil(read.height));
            cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
            cairo_t* cr = cairo_create(surface);
            poppler_page_render(page, cr);
            cairo_destroy(cr);
            cairo_surface_flush(surface);
            const unsigned char* data = cairo_image_surface_get_data(surface);
            read.pixels.assign(data, data + cairo_image_surface_get_stride(surface) * height);
            cairo_surface_destroy(surface);
        }
        g_object_unref(page);
        pages.push_back(std::move(read));
    }
    g_object_unref(document);
    return pages;
}

}  // namespace lectern::testing
