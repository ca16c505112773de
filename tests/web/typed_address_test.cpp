#include "web/typed_address.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

std::optional<std::string> accepted(std::string_view typed) {
    auto result = typedAddress(typed);
    EXPECT_TRUE(result.ok()) << typed;
    return result.ok() ? *result : std::nullopt;
}

TEST(TypedAddressTest, WebAddressesAreKeptAndSchemelessOnesBecomeHttps) {
    EXPECT_EQ(accepted("  https://example.com/a b\t"), "https://example.com/a b") << "trimmed at the ends only";
    EXPECT_EQ(accepted("HTTP://Example.com"), "HTTP://Example.com") << "the scheme test ignores case";
    EXPECT_EQ(accepted("example.com/app"), "https://example.com/app");
    EXPECT_EQ(accepted("127.0.0.1:3000"), "https://127.0.0.1:3000");
    // A host and a port are not a scheme and its text.
    EXPECT_EQ(accepted("localhost:3000"), "https://localhost:3000");
    EXPECT_EQ(accepted("localhost:8080/x?q=1"), "https://localhost:8080/x?q=1");
    EXPECT_EQ(accepted("//example.com"), "https://example.com");
}

TEST(TypedAddressTest, AnEmptyFieldClearsTheAddress) {
    EXPECT_EQ(accepted(""), std::nullopt);
    EXPECT_EQ(accepted(" \n "), std::nullopt);
}

TEST(TypedAddressTest, OtherSchemesAreRefusedWithOneMessage) {
    for (std::string_view typed : {"ftp://x", "file:///etc/passwd", "javascript:alert(1)", "mailto:a@b.c",
                                   "data:text/html,hi", "localhost:80a", "Javascript:x"}) {
        auto result = typedAddress(typed);
        ASSERT_FALSE(result.ok()) << typed;
        EXPECT_EQ(result.error().message, "Only web addresses (http or https) can be shown.");
    }
}

}  // namespace
}  // namespace lectern
