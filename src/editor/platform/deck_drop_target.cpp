#include "editor/platform/deck_drop_target.h"

#include <algorithm>

#include "model/package_location.h"

namespace lectern {

namespace fs = std::filesystem;

std::vector<fs::path> deckPackagesIn(const GValue* files) {
    std::vector<fs::path> packages;
    if (!files || !G_VALUE_HOLDS(files, GDK_TYPE_FILE_LIST)) return packages;
    auto* list = static_cast<GSList*>(g_value_get_boxed(files));
    for (GSList* item = list; item; item = item->next) {
        // Only files on this computer have a path; others are no deck.
        char* path = g_file_get_path(G_FILE(item->data));
        if (!path) continue;
        auto package = deckPackageFor(path);
        g_free(path);
        if (package && std::find(packages.begin(), packages.end(), *package) == packages.end()) {
            packages.push_back(*package);
        }
    }
    return packages;
}

Glib::RefPtr<Gtk::DropTarget> makeDeckDropTarget(DecksDropped dropped) {
    auto target = Gtk::DropTarget::create(GDK_TYPE_FILE_LIST, Gdk::DragAction::COPY);
    target->set_preload(true);
    GtkDropTarget* raw = target->gobj();
    // Until the files have been read, the drag may still be a deck's.
    target->signal_motion().connect(
        [raw](double, double) {
            const GValue* files = gtk_drop_target_get_value(raw);
            if (!files || !deckPackagesIn(files).empty()) return Gdk::DragAction::COPY;
            return Gdk::DragAction(0);
        },
        false);
    target->property_value().signal_changed().connect([raw] {
        const GValue* files = gtk_drop_target_get_value(raw);
        if (files && deckPackagesIn(files).empty()) gtk_drop_target_reject(raw);
    });
    target->signal_drop().connect(
        [dropped = std::move(dropped)](const Glib::ValueBase& files, double, double) {
            auto packages = deckPackagesIn(files.gobj());
            if (packages.empty()) return false;
            Glib::signal_idle().connect_once([dropped, packages] { dropped(packages); });
            return true;
        },
        false);
    return target;
}

}  // namespace lectern
