#include "present/action_trust.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace lectern {
namespace {

using nlohmann::json;
using testing::TempDir;

SlideAction scriptAction(std::string name, bool autoRun = false) {
    SlideAction action;
    action.name = std::move(name);
    action.kindCase = SlideActionKindCase::pageScript;
    action.script = "document.title";
    action.autoRun = autoRun;
    return action;
}

Deck deckWithActions() {
    Deck deck;
    deck.browserProfiles = {{Uuid::random(), "Admin"}, {Uuid::random(), "Guest"}};
    Slide web = Slide::make(SlideLayout::web);
    web.url = "https://app.example.com/dashboard";
    web.browserProfileId = deck.browserProfiles[0].id;
    web.actions = {scriptAction("Refresh", true), scriptAction("", false)};
    Slide plain = Slide::make(SlideLayout::regular);
    SlideAction request;
    request.name = "Reset";
    request.request.method = "delete";
    request.request.urlString = "https://api.example.com/reset";
    request.autoRun = true;
    plain.actions = {request};
    deck.slides = {web, plain};
    return deck;
}

TEST(ActionTrustFingerprint, ChangesWithWhatAndWhere) {
    Deck deck = deckWithActions();
    const Slide& slide = deck.slides[0];
    auto base = ActionTrust::fingerprint(slide.actions[0], slide);
    ASSERT_TRUE(base);
    EXPECT_EQ(base->size(), 64u);
    EXPECT_EQ(base->find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(ActionTrust::fingerprint(slide.actions[0], slide), base);  // stable

    auto differs = [&](auto change) {
        Slide edited = slide;
        change(edited);
        return ActionTrust::fingerprint(edited.actions[0], edited) != base;
    };
    EXPECT_TRUE(differs([&](Slide& s) { s.browserProfileId = deck.browserProfiles[1].id; }));
    EXPECT_TRUE(differs([](Slide& s) { s.browserProfileId.reset(); }));
    EXPECT_TRUE(differs([](Slide& s) { s.url = "https://evil.example.net/"; }));
    EXPECT_TRUE(differs([](Slide& s) { s.actions[0].script += ";"; }));
    EXPECT_TRUE(differs([](Slide& s) { s.actions[0].repeats = true; }));
    EXPECT_TRUE(differs([](Slide& s) { s.actions[0].request.urlString = "https://x"; }));  // kept payloads count too
    EXPECT_FALSE(differs([](Slide& s) { s.title = "Renamed slide"; }));
    EXPECT_FALSE(differs([](Slide& s) { s.notes = "New notes"; }));
}

TEST(ActionTrustSummary, ExactSentences) {
    Deck deck = deckWithActions();
    const Slide& web = deck.slides[0];
    EXPECT_EQ(ActionTrust::summary(web.actions[0], web),
              "\u201CRefresh\u201D runs a script in app.example.com (runs by itself)");
    EXPECT_EQ(ActionTrust::summary(web.actions[1], web), "\u201CUntitled action\u201D runs a script in app.example.com");
    Slide noPage = web;
    noPage.url.reset();
    EXPECT_EQ(ActionTrust::summary(web.actions[1], noPage), "\u201CUntitled action\u201D runs a script in the slide's page");

    const Slide& plain = deck.slides[1];
    EXPECT_EQ(ActionTrust::summary(plain.actions[0], plain),
              "\u201CReset\u201D sends DELETE to api.example.com (runs by itself)");
    SlideAction cookies = plain.actions[0];
    cookies.autoRun = false;
    cookies.request.useProfileCookies = true;
    cookies.request.urlString = "\t not a url \n";
    EXPECT_EQ(ActionTrust::summary(cookies, plain), "\u201CReset\u201D sends DELETE to not a url with the profile's cookies");
}

TEST(ActionTrustStore, TrustRequestsAndTrustedSlides) {
    TempDir dir;
    PreferencesStore store(dir / "preferences.json");
    Deck deck = deckWithActions();
    auto requests = ActionTrust::requests(deck, store);
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[2].summary, "\u201CReset\u201D sends DELETE to api.example.com (runs by itself)");
    EXPECT_TRUE(ActionTrust::trustedSlide(deck.slides[0], store).actions.empty());

    ActionTrust::trust({requests[0].id, requests[2].id, requests[0].id}, store);
    EXPECT_EQ(store.value(ActionTrust::preferencesKey)->size(), 2u);
    auto trusted = ActionTrust::trustedSlide(deck.slides[0], store);
    ASSERT_EQ(trusted.actions.size(), 1u);
    EXPECT_EQ(trusted.actions[0].name, "Refresh");
    EXPECT_EQ(trusted.title, deck.slides[0].title);
    EXPECT_EQ(ActionTrust::requests(deck, store).size(), 1u);

    // Trusting more keeps the old order and adds only what is new.
    ActionTrust::trust({requests[1].id, requests[2].id}, store);
    EXPECT_EQ(*store.value(ActionTrust::preferencesKey), json({requests[0].id, requests[2].id, requests[1].id}));

    // A damaged entry is treated as empty, and trusting replaces it.
    (void)store.setValue(ActionTrust::preferencesKey, json::array({1, requests[0].id}));
    EXPECT_TRUE(ActionTrust::trustedFingerprints(store).empty());
    ActionTrust::trust({requests[0].id}, store);
    EXPECT_EQ(*store.value(ActionTrust::preferencesKey), json({requests[0].id}));
}

TEST(ActionTrustStore, TwoWindowsShareOneStore) {
    TempDir dir;
    PreferencesStore store(dir / "preferences.json");
    Deck deck = deckWithActions();
    MadeElsewhereTracker first(deck);
    MadeElsewhereTracker second(deck);
    // What the deck held when it opened is not trusted by opening it.
    first.deckChanged(deck, store);
    EXPECT_EQ(ActionTrust::requests(deck, store).size(), 3u);

    // An action the presenter adds in one window is trusted at once, and the
    // other window sees it trusted too.
    Deck edited = deck;
    edited.slides[1].actions.push_back(scriptAction("Mine", true));
    first.deckChanged(edited, store);
    second.deckChanged(edited, store);
    auto trusted = ActionTrust::trustedSlide(edited.slides[1], store);
    ASSERT_EQ(trusted.actions.size(), 1u);
    EXPECT_EQ(trusted.actions[0].name, "Mine");

    // Editing a received action trusts the edited version only.
    Deck retargeted = edited;
    retargeted.slides[0].actions[0].script = "location.reload()";
    first.deckChanged(retargeted, store);
    EXPECT_EQ(ActionTrust::trustedSlide(retargeted.slides[0], store).actions.size(), 1u);
    EXPECT_EQ(ActionTrust::trustedSlide(deck.slides[0], store).actions.size(), 0u);
}

TEST(ActionTrustMadeElsewhere, RepointingMovingOrUndoingNeverGrantsConsent) {
    TempDir dir;
    PreferencesStore store(dir / "preferences.json");
    Deck deck = deckWithActions();
    // "Reset" was allowed on an earlier day; the web slide's two actions not.
    ActionTrust::trust({*ActionTrust::fingerprint(deck.slides[1].actions[0], deck.slides[1])}, store);
    MadeElsewhereTracker tracker(deck);
    auto untrusted = [&](const Deck& changed) {
        tracker.deckChanged(changed, store);
        return ActionTrust::requests(changed, store).size();
    };

    // Another profile for both slides (as deleting a profile does): the
    // received actions still wait, the allowed one stays allowed.
    Deck repointed = deck;
    for (auto& slide : repointed.slides) slide.browserProfileId = deck.browserProfiles[1].id;
    EXPECT_EQ(untrusted(repointed), 2u);

    // Moved to another slide, duplicated under a new id, page changed.
    Deck moved = repointed;
    moved.slides[1].actions.push_back(moved.slides[0].actions[1]);
    moved.slides[0].actions.erase(moved.slides[0].actions.begin() + 1);
    moved.slides[1].actions.push_back(moved.slides[0].actions[0]);
    moved.slides[1].actions.back().id = Uuid::random();
    moved.slides[0].url = "https://other.example.com/";
    EXPECT_EQ(untrusted(moved), 3u);

    // Deleted, then brought back by undo.
    Deck deleted = moved;
    deleted.slides[0].actions.clear();
    EXPECT_EQ(untrusted(deleted), 2u);
    EXPECT_EQ(untrusted(moved), 3u);

    // Editing the action itself is the presenter's own work.
    Deck renamed = moved;
    renamed.slides[0].actions[0].name = "Refresh now";
    EXPECT_EQ(untrusted(renamed), 2u);
    Deck renamedRepointed = renamed;
    renamedRepointed.slides[0].browserProfileId.reset();
    EXPECT_EQ(untrusted(renamedRepointed), 2u);
}

}  // namespace
}  // namespace lectern
