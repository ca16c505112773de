#pragma once

#include <gtk/gtk.h>

namespace lectern {

// Keeps the application's keys working around its secondary windows
// (sheets, dialogs, the about and shortcuts windows, the browser
// profiles): each new top-level window joins the application, so that the
// application's shortcuts (Ctrl+Q) work from there too, and when a window
// that was opened over another one closes, that one comes back to the
// front with the keyboard focus, so that every shortcut works at once.
// One per application, from start-up to shutdown.
class WindowKeeper {
public:
    explicit WindowKeeper(GtkApplication* application);
    ~WindowKeeper();
    WindowKeeper(const WindowKeeper&) = delete;
    WindowKeeper& operator=(const WindowKeeper&) = delete;

private:
    static void toplevelsChanged(GListModel* toplevels, guint position, guint removed, guint added, gpointer app);
    // A window came on screen, or left it (hidden or destroyed).
    static void shown(GtkWindow* window, gpointer app);
    static void gone(GtkWindow* window, gpointer app);

    GtkApplication* application_;
    GListModel* toplevels_;
    gulong handler_ = 0;
};

}  // namespace lectern
