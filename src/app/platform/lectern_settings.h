#pragma once

#include <adwaita.h>
#include <gtk/gtk.h>

#include <optional>

#include "app/about_statements.h"
#include "app/app_updater.h"
#include "base/platform/gobject_ref.h"

namespace lectern {

// The settings window: General (update checks), Privacy and Disclaimer (what
// Lectern says about itself) and About, in that order. One per application;
// closing it hides it, so it opens again on the area last shown.
class LecternSettings {
public:
    // `updater` may be null: a run that has no updater says so like a build
    // without a feed.
    explicit LecternSettings(AppUpdater* updater);
    ~LecternSettings();
    LecternSettings(const LecternSettings&) = delete;
    LecternSettings& operator=(const LecternSettings&) = delete;

    // Shows the window over `parent` (may be null), on `area` when given.
    void present(GtkWindow* parent, std::optional<SettingsArea> area = {});
    SettingsArea selectedArea() const;
    GtkWindow* window() const { return GTK_WINDOW(window_.get()); }

private:
    GtkWidget* generalPage();
    GtkWidget* statementsPage(SettingsArea area, const std::vector<AboutStatement>& statements, const char* icon);
    GtkWidget* aboutPage();
    void showUpdaterState();

    AppUpdater* updater_;
    GObjectRef<AdwPreferencesWindow> window_;
    GtkWidget* pages_[4] = {};
    // General's update rows (null in a build without update checks).
    GtkWidget* automatic_ = nullptr;
    GtkWidget* lastChecked_ = nullptr;
    GtkWidget* checkNow_ = nullptr;
    GtkWidget* spinner_ = nullptr;
    GtkWidget* result_ = nullptr;
    GtkWidget* download_ = nullptr;
    Signal<bool>::Connection canCheck_;
    Signal<const UpdateResult&>::Connection finished_;
};

}  // namespace lectern
