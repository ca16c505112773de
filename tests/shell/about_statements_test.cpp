#include "app/about_statements.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

std::vector<std::string> titles(const std::vector<AboutStatement>& statements) {
    std::vector<std::string> result;
    for (const auto& statement : statements) result.push_back(statement.title);
    return result;
}

TEST(AboutStatements, AreTrueOfThisBuild) {
    auto withFeed = privacyStatements("updates.example.org");
    EXPECT_EQ(titles(withFeed), (std::vector<std::string>{"Nothing goes to the developer", "Decks are files you keep",
                                                          "Web slides load directly", "Demo actions run only when asked",
                                                          "One update check a day"}));
    EXPECT_NE(withFeed.back().detail.find("Asks updates.example.org for a new version"), std::string::npos);

    // Without a feed nothing is checked, and the statement says so.
    auto withoutFeed = privacyStatements("");
    ASSERT_EQ(withoutFeed.size(), 5u);
    EXPECT_EQ(withoutFeed.back().title, "No update checks");
    EXPECT_NE(withoutFeed.back().detail.find("never checks"), std::string::npos);

    EXPECT_EQ(titles(disclaimerStatements()),
              (std::vector<std::string>{"Present decks only from people you trust", "Websites belong to their owners",
                                        "Free, and provided as is", "An alpha by one developer"}));

    // Nothing names another platform, or a delivery network this build does not use.
    auto all = withFeed;
    all.insert(all.end(), withoutFeed.begin(), withoutFeed.end());
    for (const auto& statement : disclaimerStatements()) all.push_back(statement);
    for (const auto& statement : all) {
        for (const char* foreign : {"Mac", "CloudFront", "Amazon"}) {
            EXPECT_EQ(statement.detail.find(foreign), std::string::npos) << statement.title;
        }
    }
    EXPECT_NE(withFeed[2].detail.find("on this computer until you clear them"), std::string::npos);
}

TEST(AboutStatements, LastCheckedIsTheLocalDateOrNotYet) {
    EXPECT_EQ(lastCheckedText(0, false), "Not yet");
    EXPECT_EQ(lastCheckedText(1795509000, true), "24 November 2026, 08:30");  // tests run with TZ=UTC
}

}  // namespace
}  // namespace lectern
