#include "present/presenter_keys.h"

#include <gtest/gtest.h>

#include "base/manual_scheduler.h"
#include "support/fake_http.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

// A presenting state on a manual clock, with six slides, the second and
// last of them skipped.
struct Talk {
    testing::TempDir dir;
    ManualScheduler scheduler{100};
    PreferencesStore preferences{dir / "preferences.json"};
    PresentationState state{scheduler, preferences,
                            std::make_unique<ActionRunner>(std::make_unique<testing::FakeHttpTransport>(), nullptr,
                                                           [this] { return scheduler.now(); })};
    PresenterKeys keys{state, scheduler};
    std::vector<Slide> slides;

    Talk() {
        for (int i = 0; i < 6; ++i) slides.push_back(Slide::make(SlideLayout::regular));
        slides[1].isSkipped = true;
        slides[5].isSkipped = true;
        state.togglePresenting();
    }
    bool press(std::uint32_t key, KeyModifiers modifiers = {}, KeyFocus focus = KeyFocus::stage) {
        return keys.press(key, modifiers, focus, slides);
    }
    void type(const std::string& text) {
        for (char c : text) press(static_cast<std::uint32_t>(c));
    }
};

constexpr std::uint32_t shiftKey = 0xffe1;

TEST(PresenterKeys, CoverEndsOnTheNextKeyOrClickAndDoesNothingElse) {
    Talk t;
    t.state.goTo(2, false);
    t.state.setOverview(true);
    EXPECT_TRUE(t.press('b'));
    EXPECT_EQ(t.keys.cover(), StageCover::black);
    EXPECT_FALSE(t.state.overview()) << "the cover takes the overview away";
    EXPECT_FALSE(t.press(shiftKey));
    EXPECT_EQ(t.keys.cover(), StageCover::black) << "a modifier alone is on its way to a combination";
    EXPECT_TRUE(t.press(keys::right));
    EXPECT_EQ(t.keys.cover(), StageCover::none);
    EXPECT_EQ(t.state.current(), 2) << "the key only uncovers";

    // The same key again ends it; any focus, any modifiers.
    t.press('.');
    EXPECT_EQ(t.keys.cover(), StageCover::black);
    EXPECT_TRUE(t.press('.'));
    EXPECT_EQ(t.keys.cover(), StageCover::none);
    t.press('W', {.shift = true});
    EXPECT_EQ(t.keys.cover(), StageCover::white);
    EXPECT_TRUE(t.press('w', {.control = true}, KeyFocus::text));
    EXPECT_EQ(t.keys.cover(), StageCover::none);
    t.press(',');
    EXPECT_EQ(t.keys.cover(), StageCover::white);
    EXPECT_TRUE(t.keys.click());
    EXPECT_EQ(t.keys.cover(), StageCover::none);
    EXPECT_FALSE(t.keys.click());

    // Opening the editor takes the cover away; in the editor there is none,
    // and B is the text's.
    t.press('b');
    t.state.toggleEditor();
    EXPECT_EQ(t.keys.cover(), StageCover::none);
    EXPECT_FALSE(t.press('b'));
    t.keys.setCover(StageCover::black);
    EXPECT_EQ(t.keys.cover(), StageCover::none);

    // Keys a text field or a live page types stay theirs.
    t.state.toggleEditor();
    EXPECT_FALSE(t.press('b', {}, KeyFocus::text));
    EXPECT_FALSE(t.press('b', {}, KeyFocus::livePage));
    EXPECT_EQ(t.keys.cover(), StageCover::none);
}

TEST(PresenterKeys, TypedNumberJumpsEditsAndLapses) {
    Talk t;
    t.type("1");
    t.press(keys::keypad0 + 2);
    EXPECT_EQ(t.keys.typedNumber(), "12");
    t.press(keys::backSpace);
    t.type("4");
    EXPECT_EQ(t.keys.typedNumber(), "14");
    EXPECT_TRUE(t.press(keys::returnKey));
    EXPECT_EQ(t.state.current(), 0) << "no slide 14";
    EXPECT_EQ(t.keys.missingNumber(), 14);
    EXPECT_EQ(t.keys.typedNumber(), "");
    t.scheduler.advance(PresenterKeys::noticeDuration);
    EXPECT_EQ(t.keys.missingNumber(), std::nullopt);

    t.type("0");
    t.press(keys::keypadEnter);
    EXPECT_EQ(t.keys.missingNumber(), 0);

    // A jump, even to a skipped slide, pushes the history: Left goes back.
    t.state.setOverview(true);
    t.type("2");
    t.press(keys::returnKey);
    EXPECT_EQ(t.state.current(), 1);
    EXPECT_FALSE(t.state.overview());
    t.press(keys::left);
    EXPECT_EQ(t.state.current(), 0);

    // Escape drops the number and leaves the overview alone; a pause drops
    // it; another key drops it and does its own work.
    t.type("3");
    EXPECT_TRUE(t.press(keys::escape));
    EXPECT_EQ(t.keys.typedNumber(), "");
    EXPECT_FALSE(t.state.overview());
    t.type("3");
    t.scheduler.advance(PresenterKeys::numberTimeout - 0.5);
    t.type("4");
    t.scheduler.advance(PresenterKeys::numberTimeout - 0.5);
    EXPECT_EQ(t.keys.typedNumber(), "34") << "each digit gives another pause";
    t.scheduler.advance(1);
    EXPECT_EQ(t.keys.typedNumber(), "");
    t.type("4");
    t.press(keys::pageDown);
    EXPECT_EQ(t.keys.typedNumber(), "");
    EXPECT_EQ(t.state.current(), 2);
    EXPECT_FALSE(t.press(keys::returnKey)) << "Return alone is not the talk's";

    t.type("5");
    EXPECT_FALSE(t.press('0', {.control = true})) << "Ctrl+0 is a command, not a digit";
    EXPECT_EQ(t.keys.typedNumber(), "");
    t.type("1234567");
    EXPECT_EQ(t.keys.typedNumber().size(), PresenterKeys::maxDigits);
    t.press(keys::escape);
    EXPECT_FALSE(t.press('3', {}, KeyFocus::livePage));
    EXPECT_FALSE(t.press('3', {}, KeyFocus::text));
    EXPECT_EQ(t.keys.typedNumber(), "");
}

TEST(PresenterKeys, HomeEndRemotesAndF5) {
    Talk t;
    t.state.goTo(2, false);
    t.press(keys::end);
    EXPECT_EQ(t.state.current(), 4) << "the last slide shown";
    t.press(keys::home);
    EXPECT_EQ(t.state.current(), 0);
    t.press(keys::left);
    EXPECT_EQ(t.state.current(), 4) << "back to where Home came from";

    // Remotes step with Page Down and Page Up, which a live page keeps.
    t.press(keys::pageUp);
    EXPECT_EQ(t.state.current(), 2) << "and on back through the jumps";
    EXPECT_FALSE(t.press(keys::pageDown, {}, KeyFocus::livePage));
    EXPECT_FALSE(t.press(keys::space, {}, KeyFocus::livePage));

    // F5 brings the talk back to the stage; stopped, it starts from the
    // first slide and Shift+F5 from the current one.
    t.state.setOverview(true);
    EXPECT_TRUE(t.press(keys::f5));
    EXPECT_FALSE(t.state.overview());
    EXPECT_TRUE(t.state.presenting());
    t.state.togglePresenting();
    EXPECT_FALSE(t.press(keys::home)) << "the editor's list has its own Home";
    t.state.goTo(3, false);
    t.press(keys::f5, {.shift = true}, KeyFocus::text);
    EXPECT_TRUE(t.state.presenting());
    EXPECT_EQ(t.state.current(), 3);
    t.state.togglePresenting();
    t.slides[0].isSkipped = true;
    // The window's way of starting asks for consent first: F5 goes through
    // it, on the first slide shown.
    int asked = 0;
    t.keys.setLeaveEditor([&] { ++asked; }, [&] { ++asked; });
    t.press(keys::f5);
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(t.state.presenting());
    EXPECT_EQ(t.state.current(), 2);
}

}  // namespace
}  // namespace lectern
