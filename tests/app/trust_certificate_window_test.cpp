// A local HTTPS demo in a deck window: the page's self-signed certificate
// is offered for trust on the card while editing, the question names the
// host and the slide's profile and defaults to Cancel, and trusting loads
// the page. Nothing asks on stage during a talk.
#include <gtest/gtest.h>

#include <adwaita.h>

#include <filesystem>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace lectern {
namespace {

using testing::LocalServer;
using testing::named;
using testing::pressKeys;
using testing::pumpUntil;
using Kind = WebLoadStatus::Kind;

class TrustCertificateWindowTest : public testing::WindowTest {};

TEST_F(TrustCertificateWindowTest, TheCardAsksAndTrustingLoadsThePage) {
    LocalServer server(std::filesystem::path(LECTERN_TEST_CERTIFICATES_DIR) / "local-first.pem");
    server.page("/", "Demo over HTTPS");
    Deck deck;
    BrowserProfile profile{Uuid::random(), "Demo account"};
    deck.browserProfiles = {profile};
    Slide slide = Slide::make(SlideLayout::web);
    slide.url = server.url("/");
    slide.browserProfileId = profile.id;
    deck.slides = {slide};
    DeckWindow& window = open(deck);
    WebCard& card = window.webCard();
    auto status = [&] { return card.pane() ? card.pane()->status() : WebLoadStatus::idle(); };
    ASSERT_TRUE(pumpUntil([&] { return status().kind == Kind::failed; }, 10));
    ASSERT_TRUE(status().untrustedCertificate);

    auto trustButtons = [&] { return named(card, "Trust This Certificate…"); };
    ASSERT_EQ(trustButtons().size(), 1u);
    Gtk::Widget& button = *trustButtons()[0];
    testing::click(button, button.get_width() / 2.0, button.get_height() / 2.0);
    ASSERT_TRUE(pumpUntil([&] { return card.trustQuestion() != nullptr; }));
    AdwMessageDialog* question = card.trustQuestion();
    std::string place = "127.0.0.1:" + std::to_string(server.port());
    EXPECT_NE(std::string(adw_message_dialog_get_heading(question)).find(place), std::string::npos);
    EXPECT_NE(std::string(adw_message_dialog_get_body(question)).find("the browser profile “Demo account”"),
              std::string::npos)
        << adw_message_dialog_get_body(question);
    testing::screenshot("trust-certificate-question");

    // Return answers the default, Cancel: nothing is trusted.
    Gtk::Window* dialog = Glib::wrap(GTK_WINDOW(question));
    pressKeys(*dialog, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return card.trustQuestion() == nullptr; }));
    const auto file = WebServices::shared().sessions().dataFolder(profile.id) / "trusted-certificates.json";
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(status().kind, Kind::failed);

    trustButtons()[0]->activate();
    ASSERT_TRUE(pumpUntil([&] { return card.trustQuestion() != nullptr; }));
    adw_message_dialog_response(card.trustQuestion(), "trust");
    ASSERT_TRUE(pumpUntil([&] { return status().kind == Kind::loaded; }, 10)) << status().message;
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_TRUE(trustButtons().empty());
}

TEST_F(TrustCertificateWindowTest, NothingAsksOnStage) {
    LocalServer server(std::filesystem::path(LECTERN_TEST_CERTIFICATES_DIR) / "local-second.pem");
    server.page("/", "Demo over HTTPS");
    Deck deck;
    Slide slide = Slide::make(SlideLayout::web);
    slide.url = server.url("/");
    deck.slides = {slide};
    DeckWindow& window = open(deck);
    window.state().togglePresenting();
    WebCard& card = window.webCard();
    ASSERT_TRUE(pumpUntil([&] { return card.pane() && card.pane()->status().kind == Kind::failed; }, 10));
    EXPECT_TRUE(card.pane()->status().untrustedCertificate);
    EXPECT_TRUE(named(card, "Trust This Certificate…").empty());
    window.state().togglePresenting();
}

}  // namespace
}  // namespace lectern
