#pragma once

#include <string>

namespace lectern {

// Makes the program speak the user's language: takes the locale from the
// environment and reads the "lectern" message catalogue from localeDir()
// (see install_layout.h), in UTF-8. Called first thing in each main().
void initTranslations();

// printf for a translated text with placeholders, so that a translation can
// put them in its own order ("%2$s … %1$s"):
// formatText(_("The file %s couldn’t be opened."), name.c_str()).
std::string formatText(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace lectern
