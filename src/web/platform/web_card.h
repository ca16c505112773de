#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <functional>
#include <memory>
#include <optional>

#include "model/deck_enums.h"
#include "base/platform/gobject_ref.h"
#include "base/signal.h"
#include "model/slide.h"
#include "web/live_web_view_registry.h"
#include "web/platform/web_address_field.h"
#include "web/web_pane_controller.h"

namespace lectern {

class PagePictures;
class WebKitPageFactory;
class WebPrefetcher;

// The frame of a web slide's live page on the stage: the page itself, or
// "No URL set" for a slide without an address, "Couldn’t load page" with
// the engine's message when loading failed, and a spinner while it loads.
// While presenting, a page that fails shows its last good picture instead,
// marked as an offline copy, until the live page loads again.
// While editing, the address field floats at the top over the page, and
// zoom buttons and the page-zoom badge (click for actual size) at the bottom.
// A page whose server certificate was rejected offers, while editing,
// "Trust This Certificate…": it asks, then trusts exactly that certificate
// for that host in the slide's store and loads the page again.
// The window places it over the slide's web area.
class WebCard : public Gtk::Overlay {
public:
    WebCard(WebKitPageFactory& pages, Scheduler& scheduler, WebPrefetcher* prefetcher,
            std::optional<Uuid> windowId, std::shared_ptr<LiveWebViewRegistry> registry);
    ~WebCard() override;

    // The web slide to show (null, or a slide of another layout: nothing).
    // The same slide again updates the page by the pane's rules.
    void show(const Slide* slide, bool editing);
    // Takes the page down at once (the window is closing).
    void clear();
    // The deck's theme: the card's messages are drawn in its colours, on
    // the web area's own background, readable in the editor and on stage.
    void setTheme(Theme theme);

    // Names a browser profile of the deck for the question before trusting a
    // certificate ("Untitled profile" for an empty name).
    void setProfileNames(std::function<std::string(const Uuid&)> name) { profileName_ = std::move(name); }

    const WebPaneController* pane() const { return pane_.get(); }
    // The question asked before trusting a certificate, while it is open.
    AdwMessageDialog* trustQuestion() const { return trustQuestion_.get(); }
    // Where good loads leave their pictures, and failed pages find them
    // (null: no pictures).
    void setPictures(PagePictures* pictures);
    // Whether the stage shows the page's offline copy now, and its mark.
    bool showingCopy() const { return showingCopy_; }
    const Gtk::Label& copyMark() const { return copyMark_; }
    Signal<>& copyChanged() { return copyChanged_; }
    // The presenter asked for another page zoom for the shown slide.
    Signal<double>& zoomRequested() { return zoomRequested_; }
    // The page on stage began or stopped showing a sign-in form.
    Signal<>& signInFormChanged() { return signInFormChanged_; }
    // An address was committed in the editor's field (none: cleared).
    Signal<std::optional<std::string>>& addressCommitted() { return addressCommitted_; }
    WebAddressField& addressField() { return addressField_; }

private:
    void attachPage();
    void detachPage();
    void refresh();
    void askToTrust();
    void closeTrustQuestion();
    // Decodes the current slide's picture, off the main thread, so that it
    // is ready the moment the page fails.
    void loadPicture();
    void setShowingCopy(bool showing);

    WebKitPageFactory& pages_;
    Scheduler& scheduler_;
    WebPrefetcher* prefetcher_;
    std::optional<Uuid> windowId_;
    std::shared_ptr<LiveWebViewRegistry> registry_;

    std::unique_ptr<WebPaneController> pane_;
    std::optional<Uuid> slideId_;
    double zoom_ = 1.0;
    bool editing_ = false;
    bool hasAddress_ = false;
    std::optional<Theme> theme_;
    Glib::RefPtr<Gtk::CssProvider> messageStyle_ = Gtk::CssProvider::create();
    Signal<>::Connection statusConnection_;
    Signal<>::Connection signInConnection_;
    Signal<> signInFormChanged_;

    PagePictures* pictures_ = nullptr;
    Signal<const Uuid&>::Connection picturesConnection_;
    std::string pictureKey_;  // slide id and address of the picture held or on its way
    Glib::RefPtr<Gdk::Texture> picture_;
    std::int64_t pictureTakenAt_ = 0;
    std::shared_ptr<std::uint64_t> pictureLoads_ = std::make_shared<std::uint64_t>(0);
    bool showingCopy_ = false;
    sigc::connection retryTimer_;
    Signal<> copyChanged_;
    Gtk::Picture copy_;
    Gtk::Label copyMark_;

    Gtk::Box host_;
    Gtk::Box message_{Gtk::Orientation::VERTICAL, 6};
    Gtk::Image messageIcon_;
    Gtk::Label messageTitle_;
    Gtk::Label messageDetail_;
    Gtk::Button trust_;
    std::function<std::string(const Uuid&)> profileName_;
    GObjectRef<AdwMessageDialog> trustQuestion_;
    SignalConnection trustResponse_;
    Gtk::Box corner_{Gtk::Orientation::HORIZONTAL, 4};
    Gtk::Spinner spinner_;
    Gtk::Button zoomOut_;
    Gtk::Button zoomBadge_;
    Gtk::Button zoomIn_;
    Signal<double> zoomRequested_;
    WebAddressField addressField_;
    Signal<std::optional<std::string>> addressCommitted_;
    Signal<std::optional<std::string>>::Connection addressConnection_;
};

}  // namespace lectern
