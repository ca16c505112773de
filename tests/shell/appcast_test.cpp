#include "app/appcast.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

TEST(Appcast, ReadsVersionsAndPagesFromAttributesAndElements) {
    // The prefix is the feed's choice; only the namespace it stands for counts.
    auto items = parseAppcast(R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:up="http://www.andymatuschak.org/xml-namespaces/sparkle"
     xmlns:atom="http://www.w3.org/2005/Atom">
  <channel>
    <title>Lectern</title>
    <link>https://example.org/</link>
    <item>
      <title>Lectern 0.2</title>
      <link> https://example.org/0.2 </link>
      <atom:link href="https://example.org/feed.xml" rel="self">https://example.org/feed.xml</atom:link>
      <enclosure url="https://example.org/lectern-0.2.tar.xz" up:version="0.2.0" up:shortVersionString="0.2"/>
    </item>
    <item>
      <title><![CDATA[Lectern 0.3 & more]]></title>
      <up:version>0.3.0</up:version>
      <up:releaseNotesLink>https://example.org/notes/0.3</up:releaseNotesLink>
      <enclosure url="https://example.org/lectern-0.3.tar.xz" up:version="9"/>
    </item>
    <item>
      <up:shortVersionString>0.4 beta</up:shortVersionString>
      <up:channel>beta</up:channel>
      <enclosure url="https://example.org/lectern-0.4b.tar.xz"/>
    </item>
  </channel>
</rss>)");
    ASSERT_TRUE(items) << items.error().message;
    ASSERT_EQ(items->size(), 3u);

    const auto& first = (*items)[0];
    EXPECT_EQ(first.version, "0.2.0");
    EXPECT_EQ(first.displayVersion(), "0.2");
    EXPECT_EQ(first.downloadPage(), "https://example.org/0.2");
    EXPECT_EQ(first.enclosureUrl, "https://example.org/lectern-0.2.tar.xz");

    const auto& second = (*items)[1];
    EXPECT_EQ(second.title, "Lectern 0.3 & more");
    EXPECT_EQ(second.version, "0.3.0");  // the element wins over the attribute
    EXPECT_EQ(second.displayVersion(), "0.3.0");
    EXPECT_EQ(second.downloadPage(), "https://example.org/notes/0.3");

    const auto& third = (*items)[2];
    EXPECT_EQ(third.version, "0.4 beta");
    EXPECT_EQ(third.channel, "beta");
    EXPECT_EQ(third.downloadPage(), "https://example.org/lectern-0.4b.tar.xz");
}

TEST(Appcast, RefusesMalformedFeeds) {
    auto reason = [](std::string_view xml) {
        auto items = parseAppcast(xml);
        return items ? std::string("parsed") : items.error().message;
    };
    EXPECT_EQ(reason(""), "The feed isn’t valid XML");
    EXPECT_EQ(reason("<rss><channel><item></channel></rss>"), "The feed isn’t valid XML");
    EXPECT_EQ(reason("<html><body>Sign in to this network</body></html>"), "The feed isn’t an RSS document");
    EXPECT_EQ(reason("<rss version=\"2.0\"/>"), "The feed has no channel");
    // A version in an undeclared or foreign namespace is no version.
    EXPECT_EQ(reason("<rss xmlns:s=\"urn:other\"><channel><item><s:version>1</s:version>"
                     "<enclosure url=\"https://e.org/x\"/></item></channel></rss>"),
              "An item in the feed has no version");
    EXPECT_EQ(reason("<rss><channel/></rss>"), "parsed");  // nothing offered is not an error
}

TEST(Appcast, ComparesVersionsNumberByNumber) {
    EXPECT_GT(compareVersions("0.10.0", "0.9.1"), 0);
    EXPECT_LT(compareVersions("0.9.1", "0.10.0"), 0);
    EXPECT_EQ(compareVersions("1.0", "1.0.0"), 0);
    EXPECT_EQ(compareVersions("1.0.0", "1.0"), 0);
    EXPECT_EQ(compareVersions("1.02", "1.2"), 0);
    EXPECT_GT(compareVersions("1.0.1", "1.0"), 0);
    EXPECT_LT(compareVersions("1.0b1", "1.0"), 0);
    EXPECT_GT(compareVersions("1.0", "1.0b1"), 0);
    EXPECT_LT(compareVersions("1.0.0b1", "1.0"), 0);
    EXPECT_LT(compareVersions("1.0b1", "1.0b2"), 0);
    EXPECT_LT(compareVersions("1.0a5", "1.0B1"), 0);
    EXPECT_LT(compareVersions("1.0beta", "1.0rc1"), 0);
    EXPECT_LT(compareVersions("1.0-rc.2", "1.0"), 0);
    EXPECT_GT(compareVersions("1.0.1", "1.0rc1"), 0);
    EXPECT_GT(compareVersions("2", "1.99.99"), 0);
    EXPECT_GT(compareVersions("1.0.123456789012345678901234567890", "1.0.9"), 0);  // past any integer type
}

}  // namespace
}  // namespace lectern
