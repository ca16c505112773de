#include "app/platform/renderer_choice.h"

#include <dlfcn.h>
#include <gtk/gtk.h>

#include <string>

namespace lectern {

namespace {

constexpr unsigned glRenderer = 0x1F01;  // GL_RENDERER

// The OpenGL renderer's name, as GTK's OpenGL would report it ("llvmpipe
// (LLVM 15.0.6, 256 bits)", "Mesa Intel(R) UHD Graphics 620"), or "" when
// there is no OpenGL. GTK reaches OpenGL through libepoxy, whose entry
// points are function pointers named epoxy_gl*.
std::string openGlRenderer() {
    GdkDisplay* display = gdk_display_get_default();
    if (!display) return {};
    GError* error = nullptr;
    GdkGLContext* context = gdk_display_create_gl_context(display, &error);
    if (!context) {
        g_clear_error(&error);
        return {};
    }
    std::string name;
    if (gdk_gl_context_realize(context, &error)) {
        gdk_gl_context_make_current(context);
        using GetString = const unsigned char* (*)(unsigned);
        if (auto* entry = reinterpret_cast<GetString*>(dlsym(RTLD_DEFAULT, "epoxy_glGetString")); entry && *entry) {
            if (const unsigned char* text = (*entry)(glRenderer)) name = reinterpret_cast<const char*>(text);
        }
        gdk_gl_context_clear_current();
    }
    g_clear_error(&error);
    g_object_unref(context);
    return name;
}

}  // namespace

bool chooseRenderer() {
    std::string renderer = openGlRenderer();
    bool software = false;
    for (const char* name : {"llvmpipe", "softpipe", "swrast", "Software Rasterizer"}) {
        software = software || renderer.find(name) != std::string::npos;
    }
    const char* chosen = g_getenv("GSK_RENDERER");
    if (software && !(chosen && *chosen)) g_setenv("GSK_RENDERER", "cairo", TRUE);
    return !software;
}

}  // namespace lectern
