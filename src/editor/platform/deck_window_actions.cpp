// The deck window's commands: the "Slide" and "Presentation" menus and the
// window's own shortcuts, and the one place that decides which are enabled.

#include <algorithm>

#include "editor/platform/deck_window.h"
#include "web/platform/web_services.h"
#include "web/web_zoom.h"

namespace lectern {

void DeckWindow::buildActions() {
    auto add = [this](const char* name, std::function<void()> activate) {
        actions_[name] = add_action(name, std::move(activate));
    };
    add("previous-slide", [this] { state_->previousSlideDirect(deck_.slides); });
    add("next-slide", [this] { state_->nextSlideDirect(deck_.slides); });
    add("advance", [this] { state_->next(deck_.slides); });
    add("overview", [this] { state_->toggleOverview(); });
    add("toggle-notes", [this] { state_->toggleNotes(); });
    add("toggle-hud", [this] { state_->toggleHud(); });
    add("toggle-presenter-display", [this] { state_->togglePresenterPanel(); });
    add("toggle-editor", [this] { state_->toggleEditor(); });
    add("present", [this] { state_->togglePresenting(); });
    add("toggle-timer", [this] { state_->toggleTimer(); });
    add("reset-web-page", [this] {
        if (const Slide* slide = state_->currentSlide(deck_.slides)) {
            if (auto view = state_->liveWebViews()->lookup(slide->id)) view->reload();
        }
    });
    add("zoom-in", [this] {
        if (const Slide* slide = state_->currentSlide(deck_.slides)) setCurrentWebZoom(WebZoom::zoomIn(slide->webZoom));
    });
    add("zoom-out", [this] {
        if (const Slide* slide = state_->currentSlide(deck_.slides)) setCurrentWebZoom(WebZoom::zoomOut(slide->webZoom));
    });
    add("actual-size", [this] { setCurrentWebZoom(1.0); });
    add("clear-shared-web-session", [this] {
        WebServices::shared().profileStores(preferences_).clearSharedSession();
        showToast("Shared web session cleared");
        // Pages loaded ahead were discarded: load the wanted ones again.
        refreshWebPages();
    });
    add("check-web-slides", [this] { state_->setWebCheckPresented(true); });
    add("browser-profiles", [this] { showBrowserProfiles(); });
    add("close", [this] { close(); });

    // Commands whose parts are not in this build yet: editing slides. They
    // stay in the menus, greyed out.
    for (const char* name : {"new-slide", "delete-slide"}) {
        add(name, [] {});
        actions_[name]->set_enabled(false);
    }
}

void DeckWindow::updateActions() {
    const auto& slides = deck_.slides;
    auto count = static_cast<std::int64_t>(slides.size());
    std::int64_t current = state_->current();
    // While presenting, skipped slides are passed over, so they do not count
    // as somewhere to go.
    auto reachable = [&](std::int64_t index) {
        return state_->editorOpen() || !slides[static_cast<std::size_t>(index)].isSkipped;
    };
    bool canGoBack = !state_->history().empty();
    for (std::int64_t i = std::min(current, count) - 1; !canGoBack && i >= 0; --i) canGoBack = reachable(i);
    bool canGoForward = false;
    for (std::int64_t i = std::max<std::int64_t>(current + 1, 0); !canGoForward && i < count; ++i) {
        canGoForward = reachable(i);
    }
    actions_["previous-slide"]->set_enabled(canGoBack);
    actions_["next-slide"]->set_enabled(canGoForward);
    actions_["advance"]->set_enabled(count > 0);

    // Reloading needs the live page of the slide on the stage.
    const Slide* slide = state_->currentSlide(slides);
    bool hasLivePage = slide && slide->layout == SlideLayout::web && state_->liveWebViews()->lookup(slide->id);
    actions_["reset-web-page"]->set_enabled(hasLivePage);
    bool isWebPage = slide && slide->layout == SlideLayout::web && slide->url;
    actions_["zoom-in"]->set_enabled(isWebPage && WebZoom::zoomIn(slide->webZoom) != slide->webZoom);
    actions_["zoom-out"]->set_enabled(isWebPage && WebZoom::zoomOut(slide->webZoom) != slide->webZoom);
    actions_["actual-size"]->set_enabled(isWebPage && !WebZoom::isActualSize(slide->webZoom));
}

}  // namespace lectern
