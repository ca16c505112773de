#include "editor/command_states.h"

#include <algorithm>

#include "web/web_zoom.h"

namespace lectern {

std::map<std::string, bool> enabledCommands(const DeckDocument& document, const PresentationState& state,
                                            const CommandFacts& facts) {
    const auto& slides = document.deck().slides;
    auto count = static_cast<std::int64_t>(slides.size());
    std::int64_t current = state.current();
    const Slide* slide = state.currentSlide(slides);
    bool editing = state.editorOpen() && !state.presenting();

    // While presenting, skipped slides are passed over, so they do not count
    // as somewhere to go.
    auto reachable = [&](std::int64_t index) {
        return state.editorOpen() || !slides[static_cast<std::size_t>(index)].isSkipped;
    };
    bool canGoBack = !state.history().empty();
    for (std::int64_t i = std::min(current, count) - 1; !canGoBack && i >= 0; --i) canGoBack = reachable(i);
    bool canGoForward = false;
    for (std::int64_t i = std::max<std::int64_t>(current + 1, 0); !canGoForward && i < count; ++i) {
        canGoForward = reachable(i);
    }

    bool isWebPage = slide && slide->layout == SlideLayout::web && slide->url;
    bool inSection = slide && slide->sectionId && !slide->isSection;
    std::map<std::string, bool> enabled{
        {"previous-slide", canGoBack && !facts.typing},
        {"next-slide", canGoForward && !facts.typing},
        {"overview", !facts.typing},
        {"advance", count > 0},
        // The cover is the talk's: only over the stage alone.
        {"black-out", !state.editorOpen()},
        {"white-out", !state.editorOpen()},
        {"go-to-slide", count > 0},
        {"export-pdf", count > 0},
        {"reset-web-page", facts.hasLivePage},
        {"zoom-in", isWebPage && WebZoom::zoomIn(slide->webZoom) != slide->webZoom},
        {"zoom-out", isWebPage && WebZoom::zoomOut(slide->webZoom) != slide->webZoom},
        {"actual-size", isWebPage && !WebZoom::isActualSize(slide->webZoom)},
        // Editing: the editor must be open, and most commands need a slide.
        {"undo", editing && document.canUndo()},
        {"redo", editing && document.canRedo()},
        {"new-slide", editing},
        {"add-slide", editing},
        {"delete-slide", editing && slide},
        {"duplicate-slide", editing && slide},
        {"rename-slide", editing && slide},
        {"set-layout", editing && slide},
        {"toggle-skip", editing && slide},
        {"move-slide-up", editing && slide && current > 0},
        {"move-slide-down", editing && slide && current + 1 < count},
        {"remove-section", editing && slide && slide->isSection},
        {"remove-from-section", editing && inSection},
        {"group-with-previous", editing && slide && current > 0 &&
                                    !(slide->sectionId && slide->sectionId == slides[static_cast<std::size_t>(current - 1)].sectionKey())},
        {"toggle-sidebar", state.editorOpen()},
    };
    return enabled;
}

}  // namespace lectern
