// A talk that loses the network: pages that fail on stage show their last
// good picture with its mark, navigation and actions go on, and the live
// page comes back once the server does. Pages come from a web server on
// 127.0.0.1 in this process, which the test stops and starts.
#include <gtest/gtest.h>

#include <adwaita.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"
#include "gui_harness.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace lectern {
namespace {

using testing::LocalServer;
using testing::pressKeys;
using testing::pumpUntil;

Slide webSlide(const std::string& url) {
    Slide slide = Slide::make(SlideLayout::web);
    slide.url = url;
    return slide;
}

bool onStageLoaded(DeckWindow& window) {
    const WebPaneController* pane = window.webCard().pane();
    return pane && pane->status().kind == WebLoadStatus::Kind::loaded;
}

// How many of the card's pixels, as drawn now, differ from its first one:
// a blank stage has none.
int drawnDetail(Gtk::Widget& card) {
    const int width = card.get_width(), height = card.get_height();
    GdkPaintable* paintable = gtk_widget_paintable_new(card.gobj());
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, width, height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(paintable);
    if (!node) return 0;
    GskRenderer* renderer = gtk_native_get_renderer(gtk_widget_get_native(card.gobj()));
    GdkTexture* texture = gsk_renderer_render_texture(renderer, node, nullptr);
    gsk_render_node_unref(node);
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    gdk_texture_download(texture, reinterpret_cast<guchar*>(pixels.data()), static_cast<gsize>(width) * 4);
    g_object_unref(texture);
    int differing = 0;
    for (std::uint32_t pixel : pixels) differing += pixel != pixels[0];
    return differing;
}

class OfflineCopyTest : public testing::WindowTest {
protected:
    LocalServer server;
};

TEST_F(OfflineCopyTest, PagesThatFailMidTalkShowTheirLastPictureUntilTheServerIsBack) {
    server.page("/a", "Page a");
    server.page("/b", "Page b");
    server.route("/api", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.body = "ok";
        return answer;
    });
    Deck deck;
    deck.slides = {webSlide(server.url("/a")), webSlide(server.url("/b")), Slide::make(SlideLayout::regular)};
    SlideAction request;
    request.name = "Ping";
    request.request.urlString = server.url("/api");
    deck.slides[2].actions.push_back(request);

    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    PagePictures& pictures = WebServices::shared().pictures();
    const Slide a = deck.slides[0], b = deck.slides[1];
    state.toggleEditor();
    // The deck's demo request asks first; allowed, it may run later.
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }, 3));
    adw_message_dialog_response(window.trustReview(), "allow");
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() == nullptr; }));
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window); }, 10));
    ASSERT_TRUE(pumpUntil([&] { return pictures.find(a.id, *a.url).has_value(); }, 10)) << "the page on stage";
    pressKeys(window, {"Right"});
    ASSERT_TRUE(pumpUntil([&] { return state.current() == 1 && onStageLoaded(window); }, 10));
    ASSERT_TRUE(pumpUntil([&] { return pictures.find(b.id, *b.url).has_value(); }, 10));
    pressKeys(window, {"Left"});
    ASSERT_TRUE(pumpUntil([&] { return state.current() == 0 && onStageLoaded(window); }, 10));
    if (!window.presenterPanel()) state.togglePresenterPanel();
    ASSERT_NE(window.presenterPanel(), nullptr);

    // The network goes: the page on stage stays as it is until it fails.
    server.stop();
    testing::pumpFor(0.5);
    EXPECT_FALSE(window.webCard().showingCopy());
    pressKeys(window, {"ctrl+r"});
    WebCard& card = window.webCard();
    ASSERT_TRUE(pumpUntil([&] { return card.showingCopy(); }, 10));
    EXPECT_TRUE(card.copyMark().get_visible());
    EXPECT_EQ(card.copyMark().get_text().raw().rfind("Offline copy from ", 0), 0u) << card.copyMark().get_text().raw();
    EXPECT_TRUE(window.presenterPanel()->offlineCopy().get_visible());
    EXPECT_EQ(window.presenterPanel()->offlineCopy().get_text(), "Offline copy shown on slide 1");
    ASSERT_TRUE(pumpUntil([&] { return drawnDetail(card) > 500; }, 5)) << "the picture is on stage, not a blank";
    testing::screenshot("offline-copy");

    // Keys keep navigating; a slide whose page still stands shows it live.
    pressKeys(window, {"Right"});
    ASSERT_TRUE(pumpUntil([&] { return state.current() == 1; }, 2));
    EXPECT_FALSE(card.showingCopy());
    EXPECT_FALSE(window.presenterPanel()->offlineCopy().get_visible());
    pressKeys(window, {"Right"});
    ASSERT_TRUE(pumpUntil([&] { return state.current() == 2; }, 2));
    // A demo action fails with its one-line message.
    state.runManually(request, window.deck().slides[2], window.deck());
    ASSERT_TRUE(pumpUntil(
        [&] { return state.autoRun().runner().state(request.id).kind == ActionRunner::RunState::Kind::failure; }, 10));
    const std::string message = state.autoRun().runner().state(request.id).text;
    EXPECT_FALSE(message.empty());
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;

    pressKeys(window, {"Left", "Left"});
    ASSERT_TRUE(pumpUntil([&] { return state.current() == 0 && card.showingCopy(); }, 10))
        << "A failed again coming back, and shows its copy";

    // The server is back: Ctrl+R brings the live page back.
    server.restart();
    pressKeys(window, {"ctrl+r"});
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window) && !card.showingCopy(); }, 10));
    EXPECT_FALSE(card.copyMark().get_visible());
}

}  // namespace
}  // namespace lectern
