#include "web/platform/web_card.h"

#include <glib/gi18n.h>

#include <string_view>

#include "base/platform/accessible.h"
#include "base/translation.h"
#include "slides/quick_look_theme.h"
#include "web/platform/web_sessions.h"
#include "web/page_pictures.h"
#include "web/platform/webkit_page.h"
#include "web/web_prefetcher.h"
#include "web/web_zoom.h"

namespace lectern {

namespace {

// While the offline copy is up, the live page is tried again this often.
constexpr unsigned retrySeconds = 15;

struct PictureLoad {
    std::string file;
    GdkTexture* texture = nullptr;
};

}  // namespace

WebCard::WebCard(WebKitPageFactory& pages, Scheduler& scheduler, WebPrefetcher* prefetcher,
                 std::optional<Uuid> windowId, std::shared_ptr<LiveWebViewRegistry> registry)
    : pages_(pages),
      scheduler_(scheduler),
      prefetcher_(prefetcher),
      windowId_(std::move(windowId)),
      registry_(std::move(registry)) {
    add_css_class("web-card");
    // The page is clipped to the card's rounded corners.
    set_overflow(Gtk::Overflow::HIDDEN);
    host_.set_hexpand(true);
    host_.set_vexpand(true);
    set_child(host_);

    messageIcon_.set_pixel_size(40);
    messageTitle_.add_css_class("title-3");
    // Colours come from the deck's theme (setTheme), never from the window
    // around the card: the stage-only window's white text would vanish on a
    // light web area.
    message_.add_css_class("web-card-message");
    messageDetail_.add_css_class("web-card-detail");
    for (Gtk::Widget* widget : {static_cast<Gtk::Widget*>(this), static_cast<Gtk::Widget*>(&messageIcon_),
                                static_cast<Gtk::Widget*>(&messageTitle_), static_cast<Gtk::Widget*>(&messageDetail_),
                                static_cast<Gtk::Widget*>(&spinner_)}) {
        widget->get_style_context()->add_provider(messageStyle_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
    }
    messageDetail_.set_wrap(true);
    messageDetail_.set_justify(Gtk::Justification::CENTER);
    messageDetail_.set_max_width_chars(60);
    message_.append(messageIcon_);
    message_.append(messageTitle_);
    message_.append(messageDetail_);
    trust_.set_label(_("Trust This Certificate…"));
    setAccessibleLabel(trust_, _("Trust This Certificate…"));
    trust_.set_tooltip_text(_("Let this slide’s browser session accept this server’s certificate"));
    trust_.set_halign(Gtk::Align::CENTER);
    trust_.set_margin_top(6);
    trust_.add_css_class("pill");
    trust_.signal_clicked().connect([this] { askToTrust(); });
    message_.append(trust_);
    message_.set_halign(Gtk::Align::CENTER);
    message_.set_valign(Gtk::Align::CENTER);
    message_.set_can_target(false);
    add_overlay(message_);

    // The offline copy lies over the page (which may be loading again
    // underneath), with its mark in a pill at the bottom left.
    // A page laid out at another size (a check from the command line) is
    // cropped, never distorted.
    copy_.set_content_fit(Gtk::ContentFit::COVER);
    copy_.set_can_shrink(true);
    copy_.set_can_target(false);
    copy_.set_visible(false);
    add_overlay(copy_);
    copyMark_.add_css_class("osd");
    copyMark_.add_css_class("web-card-copy-mark");
    copyMark_.set_halign(Gtk::Align::START);
    copyMark_.set_valign(Gtk::Align::END);
    copyMark_.set_margin(12);
    copyMark_.set_can_target(false);
    copyMark_.set_visible(false);
    auto pill = Gtk::CssProvider::create();
    pill->load_from_data("label.web-card-copy-mark { border-radius: 999px; padding: 4px 12px; }");
    copyMark_.get_style_context()->add_provider(pill, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    add_overlay(copyMark_);

    zoomOut_.set_icon_name("zoom-out-symbolic");
    zoomOut_.set_tooltip_text(_("Zoom Out (Ctrl+-)"));
    setAccessibleLabel(zoomOut_, _("Zoom Out"));
    zoomOut_.signal_clicked().connect([this] { zoomRequested_.emit(WebZoom::zoomOut(zoom_)); });
    zoomIn_.set_icon_name("zoom-in-symbolic");
    zoomIn_.set_tooltip_text(_("Zoom In (Ctrl+=)"));
    setAccessibleLabel(zoomIn_, _("Zoom In"));
    zoomIn_.signal_clicked().connect([this] { zoomRequested_.emit(WebZoom::zoomIn(zoom_)); });
    zoomBadge_.set_tooltip_text(_("Page zoom — click for Actual Size (Ctrl+0)"));
    zoomBadge_.add_css_class("numeric");
    zoomBadge_.signal_clicked().connect([this] { zoomRequested_.emit(1.0); });
    for (Gtk::Widget* button : {static_cast<Gtk::Widget*>(&zoomOut_), static_cast<Gtk::Widget*>(&zoomBadge_),
                                static_cast<Gtk::Widget*>(&zoomIn_)}) {
        button->add_css_class("osd");
        button->set_focus_on_click(false);
    }
    // Zoom controls sit at the bottom right, where pages keep the least;
    // the audience never sees them (editor only).
    corner_.add_css_class("web-card-corner");
    corner_.append(zoomOut_);
    corner_.append(zoomBadge_);
    corner_.append(zoomIn_);
    corner_.set_halign(Gtk::Align::END);
    corner_.set_valign(Gtk::Align::END);
    corner_.set_margin(10);
    add_overlay(corner_);
    spinner_.set_halign(Gtk::Align::END);
    spinner_.set_valign(Gtk::Align::START);
    spinner_.set_margin(12);
    spinner_.set_can_target(false);
    add_overlay(spinner_);
    // The address field lies over the top of the page, which keeps its size.
    addressField_.set_valign(Gtk::Align::START);
    addressField_.set_margin(10);
    addressConnection_ = addressField_.committed().connect(
        [this](std::optional<std::string> url) { addressCommitted_.emit(std::move(url)); });
    add_overlay(addressField_);
    setTheme(Theme::clinical);
    refresh();
}

WebCard::~WebCard() {
    closeTrustQuestion();
    ++*pictureLoads_;
    clear();
}

void WebCard::setPictures(PagePictures* pictures) {
    pictures_ = pictures;
    picturesConnection_.disconnect();
    if (!pictures_) return;
    picturesConnection_ = pictures_->saved().connect([this](const Uuid& slideId) {
        // A newer picture of the slide on stage replaces the one held.
        if (slideId_ == slideId && !editing_) {
            pictureKey_.clear();
            loadPicture();
        }
    });
}

void WebCard::loadPicture() {
    const std::string url = pane_ ? pane_->inputs().url : std::string();
    std::string key = slideId_ && !url.empty() ? slideId_->string() + " " + url : std::string();
    if (key == pictureKey_) return;
    pictureKey_ = key;
    const std::uint64_t load = ++*pictureLoads_;
    std::optional<PagePicture> found = pictures_ && !key.empty() ? pictures_->find(*slideId_, url) : std::nullopt;
    if (!found) {
        picture_.reset();
        refresh();
        return;
    }
    pictureTakenAt_ = found->takenAt;
    // Reading and decoding a screenful takes a few frames' time: done on
    // another thread (textures are made safely there) as the slide comes on.
    auto* job = new PictureLoad{found->file.string(), nullptr};
    struct Done {
        WebCard* card;
        std::shared_ptr<std::uint64_t> loads;
        std::uint64_t load;
        PictureLoad* job;
    };
    GTask* task = g_task_new(nullptr, nullptr,
                             [](GObject*, GAsyncResult* result, gpointer data) {
                                 std::unique_ptr<Done> done(static_cast<Done*>(data));
                                 std::unique_ptr<PictureLoad> job(done->job);
                                 g_task_propagate_boolean(G_TASK(result), nullptr);
                                 Glib::RefPtr<Gdk::Texture> texture;
                                 if (job->texture) texture = Glib::wrap(job->texture);  // takes the reference
                                 if (*done->loads != done->load) return;  // another slide, or the card is gone
                                 done->card->picture_ = texture;
                                 done->card->refresh();
                             },
                             new Done{this, pictureLoads_, load, job});
    g_task_set_task_data(task, job, nullptr);
    g_task_run_in_thread(task, [](GTask* task, gpointer, gpointer data, GCancellable*) {
        auto* job = static_cast<PictureLoad*>(data);
        GFile* file = g_file_new_for_path(job->file.c_str());
        job->texture = gdk_texture_new_from_file(file, nullptr);
        g_object_unref(file);
        g_task_return_boolean(task, TRUE);
    });
    g_object_unref(task);
}

void WebCard::setShowingCopy(bool showing) {
    if (showingCopy_ == showing) return;
    showingCopy_ = showing;
    retryTimer_.disconnect();
    if (showing) {
        retryTimer_ = Glib::signal_timeout().connect_seconds(
            [this] {
                if (pane_ && pane_->status().kind == WebLoadStatus::Kind::failed) pane_->retry();
                return true;
            },
            retrySeconds);
    }
    copyChanged_.emit();
}

void WebCard::setTheme(Theme theme) {
    if (theme_ == theme) return;
    theme_ = theme;
    const QuickLookTheme colours = QuickLookTheme::of(theme);
    messageStyle_->load_from_data(".web-card.showing-message { background-color: " + colours.mediaBackground.hex() +
                                  "; }\nimage, label, spinner { color: " + colours.webMessage.hex() +
                                  "; }\nlabel.web-card-detail { color: " + colours.webMessageDetail.hex() + "; }");
}

void WebCard::clear() {
    closeTrustQuestion();
    statusConnection_.disconnect();
    signInConnection_.disconnect();
    setShowingCopy(false);
    ++*pictureLoads_;
    pictureKey_.clear();
    picture_.reset();
    detachPage();
    pane_.reset();
    slideId_.reset();
}

void WebCard::show(const Slide* slide, bool editing) {
    editing_ = editing;
    bool isWeb = slide && slide->layout == SlideLayout::web;
    hasAddress_ = isWeb && slide->url && !slide->url->empty();
    bool sameStore = pane_ && isWeb && pane_->inputs().profileId == slide->browserProfileId;
    if (!isWeb || !hasAddress_ || slide->id != slideId_ || (pane_ && !sameStore)) {
        // Another slide or another profile: the old page goes first (back to
        // the prefetcher if it is still wanted), then the new one comes.
        clear();
    }
    if (!isWeb) {
        refresh();
        return;
    }
    slideId_ = slide->id;
    zoom_ = slide->webZoom;
    addressField_.setAddress(slide->url);
    if (hasAddress_) {
        WebPaneController::Inputs inputs{*slide->url, slide->browserProfileId, slide->id, slide->webZoom};
        if (pane_) {
            pane_->update(inputs);
        } else {
            pane_ = std::make_unique<WebPaneController>(inputs, pages_, scheduler_, prefetcher_, windowId_, registry_);
            pane_->setPictures(pictures_);
            statusConnection_ = pane_->statusChanged().connect([this] { refresh(); });
            signInConnection_ = pane_->signInFormChanged().connect([this] { signInFormChanged_.emit(); });
            attachPage();
        }
        if (!editing) loadPicture();  // the editor shows no copies
    }
    refresh();
}

void WebCard::attachPage() {
    auto page = std::dynamic_pointer_cast<WebKitPage>(pane_->page());
    if (!page) return;
    GtkWidget* view = page->widget();
    if (GtkWidget* parent = gtk_widget_get_parent(view); parent && parent != GTK_WIDGET(host_.gobj())) {
        gtk_widget_unparent(view);
    }
    if (!gtk_widget_get_parent(view)) gtk_box_append(host_.gobj(), view);
}

void WebCard::detachPage() {
    if (!pane_) return;
    if (auto page = std::dynamic_pointer_cast<WebKitPage>(pane_->page())) {
        // A page going back to the prefetcher lives on, off screen.
        if (gtk_widget_get_parent(page->widget()) == GTK_WIDGET(host_.gobj())) gtk_box_remove(host_.gobj(), page->widget());
    }
}

void WebCard::refresh() {
    using Kind = WebLoadStatus::Kind;
    const bool isWeb = slideId_.has_value();
    const WebLoadStatus status = pane_ ? pane_->status() : WebLoadStatus::idle();
    // While presenting, a failed page shows its picture, and keeps it up
    // while it is tried again, until the live page is back.
    if (editing_ || !picture_ || status.kind == Kind::loaded || status.kind == Kind::idle) {
        setShowingCopy(false);
    } else if (status.kind == Kind::failed) {
        setShowingCopy(true);
    }
    const bool failed = status.kind == Kind::failed && !showingCopy_;

    if (isWeb && !hasAddress_) {
        messageIcon_.set_from_icon_name("web-browser-symbolic");
        messageTitle_.set_text(_("No URL set"));
        messageDetail_.set_text(_("Set a URL above to load the page"));
        messageDetail_.set_visible(editing_);
    } else if (failed) {
        messageIcon_.set_from_icon_name("dialog-warning-symbolic");
        messageTitle_.set_text(_("Couldn’t load page"));
        messageDetail_.set_text(status.message);
        messageDetail_.set_visible(true);
    }
    // Only the presenter preparing a talk is asked: on stage nothing asks.
    const bool canTrust = failed && editing_ && status.untrustedCertificate.has_value();
    trust_.set_visible(canTrust);
    message_.set_can_target(canTrust);
    if (!canTrust) closeTrustQuestion();
    if (showingCopy_) {
        copy_.set_paintable(picture_);
        copyMark_.set_text(PagePictures::markText(pictureTakenAt_, PagePictures::currentTime()));
    }
    copy_.set_visible(showingCopy_);
    copyMark_.set_visible(showingCopy_);
    message_.set_visible(isWeb && (!hasAddress_ || failed));
    if (message_.get_visible()) add_css_class("showing-message"); else remove_css_class("showing-message");
    host_.set_visible(hasAddress_ && !failed);

    addressField_.set_visible(isWeb && editing_);
    spinner_.set_margin_top(editing_ ? 60 : 12);  // under the address field
    spinner_.set_visible(status.kind == Kind::loading && !showingCopy_);
    spinner_.set_spinning(status.kind == Kind::loading);
    const bool zoomed = !WebZoom::isActualSize(zoom_);
    zoomBadge_.set_label(WebZoom::percentText(zoom_));
    zoomBadge_.set_visible(zoomed);
    corner_.set_visible(hasAddress_ && editing_ && !failed && !showingCopy_);
    set_visible(isWeb);
}

void WebCard::askToTrust() {
    if (!pane_ || !pane_->status().untrustedCertificate || trustQuestion_) return;
    const HostCertificate certificate = *pane_->status().untrustedCertificate;
    const std::optional<Uuid> profileId = pane_->inputs().profileId;
    std::string store = _("the shared session");
    if (profileId) {
        std::string name = profileName_ ? profileName_(*profileId) : std::string();
        store = formatText(_("the browser profile “%s”"), name.empty() ? _("Untitled profile") : name.c_str());
    }
    std::string heading = formatText(_("Trust the Certificate of %s?"), certificate.place().c_str());
    std::string body = formatText(_("Pages from %s in %s will accept this certificate, which the web engine could not "
                                    "verify. Trust it only for a server you know, such as a demo on this computer."),
                                  certificate.host.c_str(), store.c_str());
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    auto* dialog = ADW_MESSAGE_DIALOG(
        adw_message_dialog_new(window ? window->gobj() : nullptr, heading.c_str(), body.c_str()));
    adw_message_dialog_add_responses(dialog, "cancel", _("Cancel"), "trust", _("Trust Certificate"), nullptr);
    adw_message_dialog_set_response_appearance(dialog, "trust", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "cancel");
    adw_message_dialog_set_close_response(dialog, "cancel");
    trustQuestion_ = GObjectRef<AdwMessageDialog>::retain(dialog);
    trustResponse_ = SignalConnection::connect<const char*>(
        dialog, "response", [this, certificate, profileId](const char* response) {
            trustQuestion_.reset();  // the dialog closes itself
            if (std::string_view(response) != "trust") return;
            Status trusted = pages_.sessions().trustCertificate(profileId, certificate.host, certificate.pem);
            // The page loads again if it is still the one that asked.
            if (trusted && pane_ && pane_->inputs().profileId == profileId) pane_->retry();
            if (!trusted) messageDetail_.set_text(trusted.error().message);
        });
    gtk_window_present(GTK_WINDOW(dialog));
}

void WebCard::closeTrustQuestion() {
    if (!trustQuestion_) return;
    GObjectRef<AdwMessageDialog> dialog = std::move(trustQuestion_);
    trustResponse_.disconnect();
    gtk_window_destroy(GTK_WINDOW(dialog.get()));
}

}  // namespace lectern
