// Local HTTPS demos in the real web engine, against HTTPS servers on
// 127.0.0.1 in this process with self-signed certificates: a rejected
// certificate is offered for trust, trusting it lets exactly that
// certificate load in exactly that store, across a restart, until the
// store's data is erased; the check reports such a page with the way out.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "base/glib_scheduler.h"
#include "support/platform/local_server.h"
#include "web/page_probe.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/trusted_certificates.h"
#include "web/web_pane_controller.h"

namespace lectern {
namespace {

using testing::iterateUntil;
using testing::LocalServer;
using Kind = WebLoadStatus::Kind;

const std::filesystem::path certificates = LECTERN_TEST_CERTIFICATES_DIR;

class TrustedCertificatesTest : public ::testing::Test {
protected:
    TrustedCertificatesTest() {
        first.page("/", "First demo");
        second.page("/", "Second demo");
    }
    ~TrustedCertificatesTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    void restart() {
        sessions = std::make_unique<WebSessions>(root / "data", root / "cache");
        pages = std::make_unique<WebKitPageFactory>(*sessions);
    }

    // How a web pane in the store ends up showing `url`.
    WebLoadStatus paneStatus(const std::string& url, const std::optional<Uuid>& profile) {
        WebPaneController pane({url, profile, Uuid::random(), 1.0}, *pages, scheduler, nullptr, std::nullopt, nullptr);
        EXPECT_TRUE(iterateUntil([&] { return pane.status().kind == Kind::loaded || pane.status().kind == Kind::failed; }));
        return pane.status();
    }

    LocalServer first{certificates / "local-first.pem"};
    LocalServer second{certificates / "local-second.pem"};
    GLibScheduler scheduler;
    std::filesystem::path root = std::filesystem::temp_directory_path() / ("lectern-tls-" + Uuid::random().string());
    std::unique_ptr<WebSessions> sessions;
    std::unique_ptr<WebKitPageFactory> pages;
};

TEST_F(TrustedCertificatesTest, TrustingACertificateLetsExactlyItLoadInExactlyThatStoreUntilErased) {
    restart();
    Uuid alice = Uuid::random(), bob = Uuid::random();

    WebLoadStatus rejected = paneStatus(first.url("/"), alice);
    ASSERT_EQ(rejected.kind, Kind::failed);
    EXPECT_EQ(rejected.message, "The certificate is self-signed or from an unknown authority.");
    ASSERT_TRUE(rejected.untrustedCertificate);
    const HostCertificate offered = *rejected.untrustedCertificate;
    EXPECT_EQ(offered.host, "127.0.0.1");
    EXPECT_EQ(offered.place(), "127.0.0.1:" + std::to_string(first.port()));
    EXPECT_NE(offered.pem.find("BEGIN CERTIFICATE"), std::string::npos);

    // A pane whose page is then trusted loads it on its next try.
    WebPaneController pane({first.url("/"), alice, Uuid::random(), 1.0}, *pages, scheduler, nullptr, std::nullopt,
                           nullptr);
    ASSERT_TRUE(iterateUntil([&] { return pane.status().kind == Kind::failed; }));
    ASSERT_TRUE(sessions->trustCertificate(alice, offered.host, offered.pem));
    pane.retry();
    ASSERT_TRUE(iterateUntil([&] { return pane.status().kind == Kind::loaded; })) << pane.status().message;
    EXPECT_FALSE(pane.status().untrustedCertificate);

    const auto file = sessions->dataFolder(alice) / TrustedCertificates::fileName;
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    EXPECT_EQ(paneStatus(first.url("/"), bob).kind, Kind::failed) << "another profile does not trust it";
    EXPECT_TRUE(paneStatus(first.url("/"), std::nullopt).untrustedCertificate) << "nor does the shared session";
    EXPECT_TRUE(paneStatus(second.url("/"), alice).untrustedCertificate)
        << "another certificate for the same host is rejected";

    restart();
    EXPECT_EQ(paneStatus(first.url("/"), alice).kind, Kind::loaded) << "trusted again after a restart, unasked";

    bool erased = false;
    sessions->erase(alice, [&] { erased = true; });
    ASSERT_TRUE(iterateUntil([&] { return erased; }));
    EXPECT_FALSE(std::filesystem::exists(file));
    restart();
    EXPECT_TRUE(paneStatus(first.url("/"), alice).untrustedCertificate) << "erasing the store's data forgets it";
}

TEST_F(TrustedCertificatesTest, TheCheckFailsAnUntrustedPageWithTheWayToTrustIt) {
    restart();
    auto check = [&](const std::optional<Uuid>& profile) {
        std::optional<WebCheckOutcome> outcome;
        auto probe = PageProbe::start(*pages, scheduler, first.url("/"), profile,
                                      [&](WebCheckOutcome result) { outcome = std::move(result); });
        EXPECT_TRUE(iterateUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(WebCheckOutcome::failed("no outcome"));
    };
    std::string place = "127.0.0.1:" + std::to_string(first.port());
    WebCheckOutcome untrusted = check(std::nullopt);
    EXPECT_EQ(untrusted, WebCheckOutcome::failed("Untrusted certificate for " + place +
                                                 " \u2014 open the slide and choose Trust This Certificate\u2026"));

    auto trusted = TrustedCertificates::read(sessions->dataFolder(std::nullopt) / TrustedCertificates::fileName);
    EXPECT_TRUE(trusted.empty()) << "the check trusts nothing by itself";
    HostCertificate offered = *paneStatus(first.url("/"), std::nullopt).untrustedCertificate;
    ASSERT_TRUE(sessions->trustCertificate(std::nullopt, offered.host, offered.pem));
    EXPECT_EQ(check(std::nullopt), WebCheckOutcome::ok());
}

}  // namespace
}  // namespace lectern
