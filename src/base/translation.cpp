#include "base/translation.h"

#include <glib/gi18n.h>

#include <clocale>
#include <cstdarg>

#include "base/install_layout.h"

namespace lectern {

void initTranslations() {
    std::setlocale(LC_ALL, "");
    bindtextdomain(GETTEXT_PACKAGE, localeDir().c_str());
    bind_textdomain_codeset(GETTEXT_PACKAGE, "UTF-8");
    textdomain(GETTEXT_PACKAGE);
}

std::string formatText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    // GLib's printf understands the positional "%1$s" that translations use.
    char* text = g_strdup_vprintf(format, arguments);
    va_end(arguments);
    std::string result = text ? text : "";
    g_free(text);
    return result;
}

}  // namespace lectern
