#pragma once

#include <gtkmm.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/worker.h"
#include "editor/deck_editor.h"
#include "model/shared_bytes.h"
#include "slides/slide_painter.h"

namespace lectern {

class StageView;

// The image of an image slide in the editor: a transparent area over the
// slide's media area that imports a picture on a click (an empty slide) or a
// double-click (to replace one), and takes image files and image data dropped
// on it, highlighted while a drop hovers. Files are read and decoded on the
// worker, which also warms the painter's picture cache, so that a large
// photograph never stalls the window; only bytes that decode are stored, in
// one undoable edit of the slide they were dropped on.
class ImageEditing {
public:
    // Adds its widgets as overlay children of `overlay`, whose main child
    // is `stage`.
    ImageEditing(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage, Worker& worker,
                 std::function<SlidePaintOptions()> paintOptions);
    ~ImageEditing();
    ImageEditing(const ImageEditing&) = delete;
    ImageEditing& operator=(const ImageEditing&) = delete;

    // After every change of the slide, the deck, the stage's size or editing
    // on/off.
    void update(bool editing);

    // Reads a picture file and makes it the current slide's image.
    void importFile(const Glib::RefPtr<Gio::File>& file);
    // Opens the file chooser for PNG and JPEG pictures.
    void chooseFile();

    Gtk::Widget& area() { return area_; }
    bool importing() const { return pending_ > 0; }
    bool showsRefusal() const { return refusal_.get_visible(); }

private:
    // Where the media area is in the overlay, if the area is shown.
    std::optional<Gdk::Rectangle> placement() const;
    // Turns what `read` gives (on the worker) into the image of the slide
    // `slideId`, if it is a picture.
    void importWith(std::function<std::optional<std::vector<std::uint8_t>>()> read,
                    std::optional<std::string> name);
    void imported(const Uuid& slideId, std::optional<SharedBytes> bytes, std::optional<std::string> name);
    bool dropped(const Glib::RefPtr<Gdk::Drop>& drop);
    void setHovered(bool hovered);

    DeckEditor& editor_;
    Gtk::Overlay& overlay_;
    StageView& stage_;
    Worker& worker_;
    std::function<SlidePaintOptions()> paintOptions_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);

    bool editing_ = false;
    int pending_ = 0;
    std::optional<Uuid> refusedSlide_;
    Gtk::Box area_;
    Gtk::Box content_{Gtk::Orientation::VERTICAL, 6};
    Gtk::Label hint_;
    Gtk::Label refusal_;
    Gtk::Spinner spinner_;
    Glib::RefPtr<Gtk::CssProvider> style_ = Gtk::CssProvider::create();
    Glib::RefPtr<Gtk::FileChooserNative> chooser_;
    sigc::connection placeConnection_;
};

}  // namespace lectern
