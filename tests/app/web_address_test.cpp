// The web slide's address field on the editor's stage, typed into with real
// keys.
#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "web/platform/web_card.h"

namespace lectern {
namespace {

using testing::pressKeys;
using testing::pumpUntil;

class WebAddressTest : public testing::WindowTest {};

TEST_F(WebAddressTest, ReturnSetsATypedAddressAndRefusesOtherSchemes) {
    Deck deck;
    Slide slide = Slide::make(SlideLayout::web);
    slide.title = "Demo";
    deck.slides = {slide};
    DeckWindow& window = open(deck);
    auto url = [&] { return window.deck().slides[0].url; };

    // The field a screen reader names "Web address".
    auto fields = testing::findWidgets(GTK_WIDGET(window.gobj()), [](GtkWidget* widget) {
        char* mismatch = GTK_IS_ENTRY(widget) ? gtk_test_accessible_check_property(
                                                    GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, "Web address")
                                              : g_strdup("not an entry");
        g_free(mismatch);
        return mismatch == nullptr;
    });
    ASSERT_EQ(fields.size(), 1u);
    auto* entry = Glib::wrap(GTK_ENTRY(fields.front()));
    ASSERT_TRUE(pumpUntil([&] { return entry->get_mapped() && entry->get_width() > 20; }));
    EXPECT_EQ(entry->get_placeholder_text(), "https://example.com");
    auto focused = [&] { return gtk_widget_get_focus_child(GTK_WIDGET(entry->gobj())) != nullptr; };

    testing::click(*entry, 20, entry->get_height() / 2.0);
    ASSERT_TRUE(pumpUntil(focused));
    testing::typeText(window, "127.0.0.1:8123/x");
    pressKeys(window, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return url() == "https://127.0.0.1:8123/x"; })) << url().value_or("(none)");
    EXPECT_FALSE(focused()) << "a committed address ends the typing";
    EXPECT_EQ(entry->get_text(), "https://127.0.0.1:8123/x");

    testing::click(*entry, 20, entry->get_height() / 2.0);
    ASSERT_TRUE(pumpUntil(focused));
    pressKeys(window, {"ctrl+a"});
    testing::typeText(window, "ftp://x");
    pressKeys(window, {"Return"});
    EXPECT_EQ(window.webCard().addressField().refusal(), "Only web addresses (http or https) can be shown.");
    EXPECT_EQ(url(), "https://127.0.0.1:8123/x");
    EXPECT_TRUE(focused()) << "a refused draft stays to be corrected";
    EXPECT_EQ(entry->get_text(), "ftp://x");
    testing::screenshot("web-address-refused");

    // The slide changing elsewhere leaves the draft alone; Escape shows the
    // slide's address again.
    window.editor().editCurrentSlide("Elsewhere", [](Slide& s) { s.url = "https://example.org/"; });
    testing::pumpFor(0.2);
    EXPECT_EQ(entry->get_text(), "ftp://x");
    pressKeys(window, {"Escape"});
    EXPECT_FALSE(focused());
    EXPECT_EQ(entry->get_text(), "https://example.org/");
    EXPECT_EQ(window.webCard().addressField().refusal(), "");
}

}  // namespace
}  // namespace lectern
