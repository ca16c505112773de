#include "editor/platform/image_editing.h"

#include <glib/gi18n.h>
#include "editor/platform/stage_field.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>

#include "base/platform/accessible.h"
#include "base/platform/file_chooser.h"
#include "editor/deck_edits.h"
#include "slides/platform/stage_view.h"
#include "slides/slide_pictures.h"

namespace lectern {

namespace {

constexpr const char* emptyHint = N_("Drop an image here or click to import");
constexpr const char* replaceHint = N_("Double-click to replace");

bool isPng(const std::vector<std::uint8_t>& b) {
    static const std::uint8_t signature[] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    return b.size() >= 8 && std::equal(std::begin(signature), std::end(signature), b.begin());
}
bool isJpeg(const std::vector<std::uint8_t>& b) { return b.size() >= 3 && b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF; }

// Another format gdk-pixbuf reads (GIF, WebP, BMP...), stored as PNG: a
// slide keeps PNG or JPEG bytes only.
std::optional<std::vector<std::uint8_t>> asPng(const std::vector<std::uint8_t>& bytes) {
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
    bool ok = gdk_pixbuf_loader_write(loader, bytes.data(), bytes.size(), nullptr);
    ok = gdk_pixbuf_loader_close(loader, nullptr) && ok;
    GdkPixbuf* pixbuf = ok ? gdk_pixbuf_loader_get_pixbuf(loader) : nullptr;
    gchar* png = nullptr;
    gsize size = 0;
    std::optional<std::vector<std::uint8_t>> out;
    if (pixbuf && gdk_pixbuf_save_to_buffer(pixbuf, &png, &size, "png", nullptr, nullptr)) {
        out.emplace(reinterpret_cast<std::uint8_t*>(png), reinterpret_cast<std::uint8_t*>(png) + size);
    }
    g_free(png);
    g_object_unref(loader);
    return out;
}

// On the worker: the bytes to store, once they are known to decode. The
// painter's picture cache is warmed on the way (decoded, and its smaller
// copies made), so the first frames after the edit draw at once.
std::optional<SharedBytes> importable(std::vector<std::uint8_t> raw) {
    if (!isPng(raw) && !isJpeg(raw)) {
        auto png = asPng(raw);
        if (!png) return std::nullopt;
        raw = std::move(*png);
    }
    SharedBytes bytes(std::move(raw));
    auto picture = paint::decodedPicture(bytes);
    if (!picture || !picture->full()) return std::nullopt;
    picture->forScale(1.0 / 64);
    return bytes;
}

}  // namespace

ImageEditing::ImageEditing(DeckEditor& editor, Gtk::Overlay& overlay, StageView& stage, Worker& worker,
                           std::function<SlidePaintOptions()> paintOptions)
    : editor_(editor), overlay_(overlay), stage_(stage), worker_(worker), paintOptions_(std::move(paintOptions)) {
    style_->load_from_data(
        ".image-drop-area { border-radius: 8px; }\n"
        ".image-drop-area.drop-hover { outline: 3px solid @accent_color; outline-offset: -3px; "
        "background-color: alpha(@accent_color, 0.08); }\n"
        ".image-drop-hint { background-color: alpha(@window_bg_color, 0.88); color: @window_fg_color; "
        "border-radius: 6px; padding: 4px 10px; }\n"
        ".image-drop-hint.error { color: @error_color; }");
    area_.add_css_class("image-drop-area");
    for (Gtk::Widget* widget : {static_cast<Gtk::Widget*>(&area_), static_cast<Gtk::Widget*>(&hint_),
                                static_cast<Gtk::Widget*>(&refusal_)}) {
        widget->get_style_context()->add_provider(style_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    }
    hint_.set_text(_(emptyHint));
    hint_.add_css_class("image-drop-hint");
    refusal_.set_text(_("Couldn’t read this image"));
    refusal_.add_css_class("image-drop-hint");
    refusal_.add_css_class("error");
    refusal_.set_visible(false);
    spinner_.set_size_request(24, 24);
    spinner_.set_visible(false);
    content_.set_halign(Gtk::Align::CENTER);
    content_.set_valign(Gtk::Align::CENTER);
    content_.set_hexpand(true);
    content_.set_vexpand(true);
    content_.set_can_target(false);
    content_.append(hint_);
    content_.append(spinner_);
    content_.append(refusal_);
    area_.append(content_);
    setAccessibleLabel(area_, _("Image"));

    auto click = Gtk::GestureClick::create();
    click->set_button(GDK_BUTTON_PRIMARY);
    click->signal_pressed().connect([this](int presses, double, double) {
        const Slide* slide = editor_.currentSlide();
        if (!editing_ || !slide) return;
        // An empty slide imports on a click; a picture is replaced on a
        // double-click only, so that a stray click keeps it.
        const bool hasImage = slide->imageData.has_value();
        if ((!hasImage && presses == 1) || (hasImage && presses == 2)) chooseFile();
    });
    area_.add_controller(click);

    GdkContentFormatsBuilder* builder = gdk_content_formats_builder_new();
    gdk_content_formats_builder_add_gtype(builder, GDK_TYPE_FILE_LIST);
    gdk_content_formats_builder_add_gtype(builder, GDK_TYPE_TEXTURE);
    gdk_content_formats_builder_add_mime_type(builder, "image/png");
    gdk_content_formats_builder_add_mime_type(builder, "image/jpeg");
    // With the types other programs offer them as (text/uri-list, image/*...).
    GdkContentFormats* formats =
        gdk_content_formats_union_deserialize_mime_types(gdk_content_formats_builder_free_to_formats(builder));
    auto drops = Gtk::DropTargetAsync::create(Glib::wrap(formats), Gdk::DragAction::COPY);
    drops->signal_drag_enter().connect(
        [this](const Glib::RefPtr<Gdk::Drop>&, double, double) {
            setHovered(true);
            return Gdk::DragAction::COPY;
        },
        false);
    drops->signal_drag_motion().connect([](const Glib::RefPtr<Gdk::Drop>&, double, double) { return Gdk::DragAction::COPY; },
                                        false);
    drops->signal_drag_leave().connect([this](const Glib::RefPtr<Gdk::Drop>&) { setHovered(false); });
    drops->signal_drop().connect([this](const Glib::RefPtr<Gdk::Drop>& drop, double, double) {
        setHovered(false);
        return dropped(drop);
    }, false);
    area_.add_controller(drops);

    overlay_.add_overlay(area_);
    placeConnection_ = overlay_.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& allocation) {
            if (child != &area_) return false;
            allocation = placement().value_or(Gdk::Rectangle(0, 0, 1, 1));
            return true;
        },
        false);
    update(false);
}

ImageEditing::~ImageEditing() {
    *alive_ = false;
    placeConnection_.disconnect();
    if (chooser_) chooser_->hide();
    if (area_.get_parent() == &overlay_) overlay_.remove_overlay(area_);
}

std::optional<Gdk::Rectangle> ImageEditing::placement() const {
    const Slide* slide = editor_.currentSlide();
    if (!editing_ || !slide || slide->layout != SlideLayout::image) return std::nullopt;
    auto media = SlidePainter::geometry(*slide, paintOptions_()).mediaArea;
    if (!media) return std::nullopt;
    return toView(*media, stage_.slideArea());
}

void ImageEditing::update(bool editing) {
    editing_ = editing;
    const Slide* slide = editor_.currentSlide();
    const auto place = placement();
    area_.set_visible(place.has_value());
    if (!place) return;
    const bool hasImage = slide->imageData.has_value();
    if (refusedSlide_ != slide->id) refusedSlide_.reset();
    refusal_.set_visible(refusedSlide_.has_value());
    hint_.set_visible(!hasImage && !importing());
    spinner_.set_visible(importing());
    spinner_.set_spinning(importing());
    area_.set_tooltip_text(hasImage ? _(replaceHint) : "");
    area_.set_has_tooltip(hasImage);
    gtk_accessible_update_property(GTK_ACCESSIBLE(area_.gobj()), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                   hasImage ? _(replaceHint) : _(emptyHint), -1);
    // The hint sits under the placeholder's picture glyph (as large as the
    // painter draws it), not over it.
    const double scale = stage_.slideArea().width / 960;
    const double glyph = std::clamp(std::min(place->get_width(), place->get_height()) / std::max(scale, 0.01) * 0.18,
                                    20.0, 80.0) * scale;
    content_.set_margin_top(static_cast<int>(glyph * 0.76 + 40));
    area_.queue_resize();
}

void ImageEditing::chooseFile() {
    auto* window = dynamic_cast<Gtk::Window*>(overlay_.get_root());
    if (chooser_ || !window) return;
    chooser_ = Gtk::FileChooserNative::create(_("Import Image"), *window, Gtk::FileChooser::Action::OPEN, _("_Import"),
                                              _("_Cancel"));
    chooser_->set_modal(true);
    auto filter = Gtk::FileFilter::create();
    filter->set_name(_("PNG and JPEG images"));
    filter->add_mime_type("image/png");
    filter->add_mime_type("image/jpeg");
    for (const char* suffix : {"png", "jpg", "jpeg"}) filter->add_suffix(suffix);
    chooser_->add_filter(filter);
    chooser_->signal_response().connect([this](int response) {
        auto dialog = heldPastResponse(std::exchange(chooser_, {}));
        if (response == Gtk::ResponseType::ACCEPT) {
            if (auto file = dialog->get_file()) importFile(file);
        }
    });
    chooser_->show();
}

void ImageEditing::importFile(const Glib::RefPtr<Gio::File>& file) {
    std::shared_ptr<GFile> source(G_FILE(g_object_ref(file->gobj())), g_object_unref);
    importWith(
        [source]() -> std::optional<std::vector<std::uint8_t>> {
            char* contents = nullptr;
            gsize size = 0;
            if (!g_file_load_contents(source.get(), nullptr, &contents, &size, nullptr, nullptr)) return std::nullopt;
            std::vector<std::uint8_t> bytes(contents, contents + size);
            g_free(contents);
            return bytes;
        },
        file->get_basename());
}

void ImageEditing::importWith(std::function<std::optional<std::vector<std::uint8_t>>()> read,
                              std::optional<std::string> name) {
    const Slide* slide = editor_.currentSlide();
    if (!slide || slide->layout != SlideLayout::image) return;
    const Uuid slideId = slide->id;
    auto result = std::make_shared<std::optional<SharedBytes>>();
    ++pending_;
    refusedSlide_.reset();
    update(editing_);
    worker_.run(
        [read = std::move(read), result] {
            if (auto raw = read()) *result = importable(std::move(*raw));
        },
        [this, alive = std::weak_ptr<bool>(alive_), slideId, result, name = std::move(name)] {
            if (alive.expired()) return;
            imported(slideId, std::move(*result), name);
        });
}

void ImageEditing::imported(const Uuid& slideId, std::optional<SharedBytes> bytes, std::optional<std::string> name) {
    --pending_;
    if (!bytes) {
        // Nothing is stored; the slide keeps what it had.
        refusedSlide_ = slideId;
    } else {
        editor_.edit(
            _("Set Image"),
            [&](Deck deck) {
                return edits::updateSlide(std::move(deck), slideId, [&](Slide& slide) {
                    if (slide.layout == SlideLayout::image) slide.setImage(*bytes, name);
                });
            },
            {}, slideId);
    }
    update(editing_);
}

bool ImageEditing::dropped(const Glib::RefPtr<Gdk::Drop>& drop) {
    const Slide* slide = editor_.currentSlide();
    if (!editing_ || !slide || slide->layout != SlideLayout::image) return false;
    GdkContentFormats* offered = gdk_content_formats_union_deserialize_gtypes(gdk_content_formats_ref(drop->get_formats()->gobj()));
    const bool files = gdk_content_formats_contain_gtype(offered, GDK_TYPE_FILE_LIST);
    const bool raw = gdk_content_formats_contain_mime_type(offered, "image/png") ||
                     gdk_content_formats_contain_mime_type(offered, "image/jpeg");
    const bool texture = gdk_content_formats_contain_gtype(offered, GDK_TYPE_TEXTURE);
    gdk_content_formats_unref(offered);
    std::weak_ptr<bool> alive = alive_;

    if (files) {
        drop->read_value_async(GDK_TYPE_FILE_LIST, G_PRIORITY_DEFAULT, [this, alive, drop](Glib::RefPtr<Gio::AsyncResult>& r) {
            GFile* first = nullptr;
            try {
                const Glib::ValueBase& value = drop->read_value_finish(r);
                if (auto* list = static_cast<GdkFileList*>(g_value_get_boxed(value.gobj()))) {
                    GSList* all = gdk_file_list_get_files(list);
                    if (all) first = G_FILE(g_object_ref(all->data));
                    g_slist_free(all);
                }
            } catch (const Glib::Error&) {
            }
            drop->finish(first ? Gdk::DragAction::COPY : Gdk::DragAction(0));
            if (first && !alive.expired()) importFile(Glib::wrap(first, true));
            if (first) g_object_unref(first);
        });
    } else if (raw) {
        // The encoded bytes as the other program offers them: a JPEG stays one.
        drop->read_async({"image/png", "image/jpeg"}, G_PRIORITY_DEFAULT, [this, alive, drop](Glib::RefPtr<Gio::AsyncResult>& r) {
            Glib::ustring mime;
            Glib::RefPtr<Gio::InputStream> stream;
            try {
                stream = drop->read_finish(r, mime);
            } catch (const Glib::Error&) {
            }
            if (!stream) {
                drop->finish(Gdk::DragAction(0));
                return;
            }
            auto memory = Gio::MemoryOutputStream::create();
            memory->splice_async(
                stream,
                [this, alive, drop, memory](Glib::RefPtr<Gio::AsyncResult>& spliced) {
                    bool ok = true;
                    try {
                        memory->splice_finish(spliced);
                    } catch (const Glib::Error&) {
                        ok = false;
                    }
                    drop->finish(ok ? Gdk::DragAction::COPY : Gdk::DragAction(0));
                    if (!ok || alive.expired()) return;
                    auto bytes = memory->steal_as_bytes();
                    gsize size = 0;
                    auto* data = static_cast<const std::uint8_t*>(bytes->get_data(size));
                    std::vector<std::uint8_t> copy(data, data + size);
                    importWith([copy = std::move(copy)]() mutable { return std::optional(std::move(copy)); }, std::nullopt);
                },
                Gio::OutputStream::SpliceFlags::CLOSE_SOURCE | Gio::OutputStream::SpliceFlags::CLOSE_TARGET);
        });
    } else if (texture) {
        drop->read_value_async(GDK_TYPE_TEXTURE, G_PRIORITY_DEFAULT, [this, alive, drop](Glib::RefPtr<Gio::AsyncResult>& r) {
            std::shared_ptr<GdkTexture> image;
            try {
                const Glib::ValueBase& value = drop->read_value_finish(r);
                if (auto* object = g_value_get_object(value.gobj())) {
                    image.reset(GDK_TEXTURE(g_object_ref(object)), g_object_unref);
                }
            } catch (const Glib::Error&) {
            }
            drop->finish(image ? Gdk::DragAction::COPY : Gdk::DragAction(0));
            if (!image || alive.expired()) return;
            // A picture with no file behind it is stored as PNG, encoded on the worker.
            importWith(
                [image]() -> std::optional<std::vector<std::uint8_t>> {
                    GBytes* png = gdk_texture_save_to_png_bytes(image.get());
                    gsize size = 0;
                    auto* data = static_cast<const std::uint8_t*>(g_bytes_get_data(png, &size));
                    std::vector<std::uint8_t> bytes(data, data + size);
                    g_bytes_unref(png);
                    return bytes;
                },
                std::nullopt);
        });
    } else {
        return false;
    }
    return true;
}

void ImageEditing::setHovered(bool hovered) {
    if (hovered) area_.add_css_class("drop-hover");
    else area_.remove_css_class("drop-hover");
}

}  // namespace lectern
