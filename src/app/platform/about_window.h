#pragma once

#include <gtk/gtk.h>

namespace lectern {

// The about window: what Lectern is, its version ("Alpha"), who made it and
// what it is built on, its licence, website and where to report a problem.
// Shown over `parent` (may be null); it closes itself.
GtkWindow* showAboutWindow(GtkWindow* parent);

}  // namespace lectern
