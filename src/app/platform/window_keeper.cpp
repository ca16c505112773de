#include "app/platform/window_keeper.h"

namespace lectern {

namespace {

constexpr const char* keptKey = "lectern-window-kept";
constexpr const char* parentKey = "lectern-window-parent";

bool isListed(GtkWindow* window) {
    GListModel* toplevels = gtk_window_get_toplevels();
    for (guint n = 0, count = g_list_model_get_n_items(toplevels); n < count; ++n) {
        auto* listed = static_cast<GtkWindow*>(g_list_model_get_item(toplevels, n));
        g_object_unref(listed);
        if (listed == window) return true;
    }
    return false;
}

}  // namespace

WindowKeeper::WindowKeeper(GtkApplication* application)
    : application_(application), toplevels_(gtk_window_get_toplevels()) {
    handler_ = g_signal_connect(toplevels_, "items-changed", G_CALLBACK(toplevelsChanged), application_);
    toplevelsChanged(toplevels_, 0, 0, g_list_model_get_n_items(toplevels_), application_);
}

WindowKeeper::~WindowKeeper() { g_signal_handler_disconnect(toplevels_, handler_); }

void WindowKeeper::toplevelsChanged(GListModel* toplevels, guint position, guint, guint added, gpointer app) {
    for (guint n = position; n < position + added; ++n) {
        auto* window = GTK_WINDOW(g_list_model_get_item(toplevels, n));
        if (g_object_get_data(G_OBJECT(window), keptKey)) {
            g_object_unref(window);
            continue;
        }
        g_object_set_data(G_OBJECT(window), keptKey, GINT_TO_POINTER(1));
        // A window joins the list while it is being made: it is taken in on
        // the next turn, once whoever makes it is done.
        struct Adoption {
            GtkWindow* window;
            GtkApplication* application;
        };
        g_idle_add_once(
            [](gpointer data) {
                auto* adoption = static_cast<Adoption*>(data);
                GtkWindow* window = adoption->window;
                if (isListed(window)) {  // not destroyed meanwhile
                    g_signal_connect_object(window, "map", G_CALLBACK(shown), adoption->application,
                                            GConnectFlags(0));
                    g_signal_connect_object(window, "unmap", G_CALLBACK(gone), adoption->application,
                                            GConnectFlags(0));
                    if (gtk_widget_get_mapped(GTK_WIDGET(window))) shown(window, adoption->application);
                }
                g_object_unref(window);
                delete adoption;
            },
            new Adoption{window, GTK_APPLICATION(app)});  // holds the reference taken above
    }
}

void WindowKeeper::shown(GtkWindow* window, gpointer app) {
    // The application's shortcuts (Ctrl+Q) reach windows that belong to it
    // only. Windows made and never shown (a help overlay) stay out of it.
    if (!gtk_window_get_application(window)) gtk_window_set_application(window, GTK_APPLICATION(app));
    // The window it was opened over is noted while it shows: a window
    // closed for good has let go of it by the time it leaves the screen.
    {
        GtkWindow* parent = gtk_window_get_transient_for(window);
        // The window it belongs to may now close while it is open (Ctrl+Q
        // from a sheet); it lets go of it then, so that going later itself
        // it never reaches back to a window that is gone.
        if (parent && !g_object_get_data(G_OBJECT(window), parentKey)) {
            g_signal_connect_object(parent, "destroy", G_CALLBACK(+[](GtkWindow*, gpointer child) {
                                        gtk_window_set_transient_for(GTK_WINDOW(child), nullptr);
                                    }),
                                    window, GConnectFlags(0));
        }
        auto* noted = static_cast<GWeakRef*>(g_object_get_data(G_OBJECT(window), parentKey));
        if (!noted) {
            noted = g_new0(GWeakRef, 1);
            g_weak_ref_init(noted, nullptr);
            g_object_set_data_full(G_OBJECT(window), parentKey, noted, [](gpointer data) {
                g_weak_ref_clear(static_cast<GWeakRef*>(data));
                g_free(data);
            });
        }
        g_weak_ref_set(noted, parent);
    }
}

void WindowKeeper::gone(GtkWindow* window, gpointer) {
    auto* noted = static_cast<GWeakRef*>(g_object_get_data(G_OBJECT(window), parentKey));
    GtkWindow* parent = noted ? static_cast<GtkWindow*>(g_weak_ref_get(noted)) : nullptr;  // a reference
    if (!parent) return;
    // Once the closing window is off the screen, the window it was opened
    // over takes the keyboard focus back: without this, the window manager
    // may leave the focus nowhere and every shortcut goes unheard.
    g_idle_add_once(
        [](gpointer data) {
            auto* parent = static_cast<GtkWindow*>(data);
            if (gtk_widget_get_visible(GTK_WIDGET(parent))) gtk_window_present(parent);
            g_object_unref(parent);
        },
        parent);
}

}  // namespace lectern
