#pragma once

#include <gtkmm.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "model/deck.h"
#include "slides/platform/slide_thumbnail.h"
#include "slides/slide_painter.h"

namespace lectern {

// One row of the slide navigator, recycled by the list for whichever slide
// scrolls into view: the section's title above a section's first slide, then
// the number, a thumbnail, the title (or the field that renames it) and the
// mark of a skipped slide; section members are indented, and a line ends a
// section after its last member.
class NavigatorRow : public Gtk::Box {
public:
    static constexpr int thumbnailWidth = 96;
    static constexpr int memberIndent = 16;

    // `commit` receives the slide and the typed title when renaming ends with
    // Enter or by leaving the field; `cancel` when it ends with Escape.
    NavigatorRow(std::function<void(const Uuid&, const std::string&)> commit, std::function<void()> cancel);

    // Shows the slide at `index` of `deck`. The thumbnail is drawn again only
    // when the slide or its look changed.
    void show(const Deck& deck, std::size_t index, const SlidePaintOptions& options);
    // Shows nothing (a row whose slide is gone).
    void clear();

    const std::optional<Uuid>& slideId() const { return slideId_; }
    std::size_t index() const { return index_; }
    SlideThumbnail& thumbnail() { return thumbnail_; }
    // The list's own widget around the row, which takes the focus and the
    // selection's highlight; the row itself when it is not in a list yet.
    Gtk::Widget& cell();

    // Replaces the title by a field holding `title`, focused and selected.
    void beginRename(const std::string& title);
    // Back to the title without committing anything.
    void endRename();
    bool renaming() const { return renaming_; }
    Gtk::Entry& renameField() { return entry_; }

    // Highlights the row as the target of a drop that groups onto it.
    void setGroupTarget(bool target);

private:
    void finishRename(bool commit);

    std::function<void(const Uuid&, const std::string&)> commit_;
    std::function<void()> cancel_;
    std::optional<Uuid> slideId_;
    std::size_t index_ = 0;
    std::optional<Slide> drawn_;
    SlidePaintOptions drawnOptions_;
    bool renaming_ = false;

    Gtk::Label sectionTitle_;
    Gtk::Box line_{Gtk::Orientation::HORIZONTAL, 8};
    Gtk::Label number_;
    SlideThumbnail thumbnail_{thumbnailWidth};
    Gtk::Label title_;
    Gtk::Entry entry_;
    Gtk::Image skipped_;
    Gtk::Separator sectionEnd_;
};

}  // namespace lectern
