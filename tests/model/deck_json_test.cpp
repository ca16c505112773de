#include "model/deck_json.h"

#include <gtest/gtest.h>

#include <cmath>

#include "model/digests.h"

namespace lectern {
namespace {

using nlohmann::json;

const char* const deckId = "0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D";
const char* const slideId = "A1B2C3D4-E5F6-4789-ABCD-EF0123456789";

json deckWith(json slides) {
    return {{"id", deckId}, {"slides", std::move(slides)}};
}

// Decodes a deck whose only slide has the given keys (plus an id).
Slide readSlide(json slide) {
    if (!slide.contains("id")) slide["id"] = slideId;
    auto deck = DeckJson::fromJson(deckWith(json::array({slide})));
    EXPECT_TRUE(deck.ok()) << (deck.ok() ? "" : deck.error().message);
    return deck.ok() ? deck->slides.at(0) : Slide{};
}

SlideAction readAction(json action) {
    Slide slide = readSlide({{"actions", json::array({std::move(action)})}});
    return slide.actions.empty() ? SlideAction{} : slide.actions[0];
}

std::string failureOf(const json& document) {
    auto deck = DeckJson::fromJson(document);
    EXPECT_FALSE(deck.ok());
    return deck.ok() ? "" : deck.error().message;
}

TEST(DeckJsonRead, MinimalDeckGetsEveryDefault) {
    auto deck = DeckJson::fromJson(deckWith(json::array({{{"id", slideId}}})));
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->schemaVersion, 1);
    EXPECT_EQ(deck->id.string(), deckId);
    EXPECT_FALSE(deck->title);
    EXPECT_EQ(deck->theme, Theme::clinical);
    EXPECT_EQ(deck->palette, DeckPalette());
    EXPECT_TRUE(deck->browserProfiles.empty());
    EXPECT_FALSE(deck->targetMinutes);

    // Apart from its id, a slide read from nothing is a new regular slide.
    Slide expected = Slide::make(SlideLayout::regular);
    expected.id = *Uuid::parse(slideId);
    EXPECT_EQ(deck->slides.at(0), expected);
}

TEST(DeckJsonRead, IdentifiersAndSlidesAreRequired) {
    EXPECT_EQ(failureOf({{"slides", json::array()}}), "id: missing");
    EXPECT_EQ(failureOf({{"id", "not-a-uuid"}, {"slides", json::array()}}), "id: not a UUID");
    EXPECT_EQ(failureOf({{"id", deckId}}), "slides: missing");
    EXPECT_EQ(failureOf({{"id", deckId}, {"slides", "many"}}), "slides: expected an array");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"id", slideId}}, {{"id", slideId}}, {{"id", 7}}}))),
              "slides[2].id: not a UUID");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"title", "no id"}}}))), "slides[0].id: missing");
    EXPECT_EQ(failureOf(json::array()), "The document is not a JSON object.");
    // Lower-case UUIDs are read; they are written upper-case.
    auto deck = DeckJson::fromJson(json{{"id", "0f2d3c9a-1b4e-4a5f-9c8d-7e6f5a4b3c2d"}, {"slides", json::array()}});
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->id.string(), deckId);
}

TEST(DeckJsonRead, WrongTypesUnderPlainKeysFailTheRead) {
    EXPECT_EQ(failureOf({{"id", deckId}, {"slides", json::array()}, {"title", 12}}), "title: expected a string");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"id", slideId}, {"imageFill", "yes"}}}))),
              "slides[0].imageFill: expected true or false");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"id", slideId}, {"actions", json::array({{{"repeatMaxRuns", 2.5}}})}}}))),
              "slides[0].actions[0].repeatMaxRuns: expected a whole number");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"id", slideId}, {"imageData", "%%%"}}}))),
              "slides[0].imageData: not valid Base64");
    EXPECT_EQ(failureOf(deckWith(json::array({{{"id", slideId}, {"sectionId", "nope"}}}))),
              "slides[0].sectionId: not a UUID");
    auto syntax = DeckJson::decode(std::string_view("{\"id\": "));
    ASSERT_FALSE(syntax.ok());
    EXPECT_NE(syntax.error().message.find("Not valid JSON"), std::string::npos);
    // Null counts as absent, never as a wrong type.
    auto deck = DeckJson::fromJson(json{{"id", deckId}, {"slides", json::array()}, {"title", nullptr}, {"theme", nullptr}});
    ASSERT_TRUE(deck.ok());
    EXPECT_FALSE(deck->title);
}

TEST(DeckJsonRead, DeckLevelLenience) {
    auto read = [](json extra) {
        json document = deckWith(json::array());
        document.update(extra);
        auto deck = DeckJson::fromJson(document);
        EXPECT_TRUE(deck.ok());
        return deck.ok() ? *deck : Deck{};
    };
    EXPECT_EQ(read({{"theme", "editorial"}}).theme, Theme::editorial);
    EXPECT_EQ(read({{"theme", "neon"}}).theme, Theme::clinical);
    EXPECT_EQ(read({{"targetMinutes", 25}}).targetMinutes, 25);
    EXPECT_EQ(read({{"targetMinutes", 3.0}}).targetMinutes, 3);
    EXPECT_FALSE(read({{"targetMinutes", -5}}).targetMinutes);
    EXPECT_FALSE(read({{"targetMinutes", 0}}).targetMinutes);
    EXPECT_FALSE(read({{"targetMinutes", "ten"}}).targetMinutes);
    EXPECT_FALSE(read({{"targetMinutes", 2.5}}).targetMinutes);
    EXPECT_EQ(read({{"schemaVersion", 7}}).schemaVersion, 7);
    EXPECT_EQ(read({{"unknownKey", {1, 2}}}).slides.size(), 0u);

    auto three = read({{"palette", {{"swatches", {"#111111", nullptr, "#333333"}}}}}).palette.swatches();
    ASSERT_EQ(three.size(), 8u);
    EXPECT_EQ(three[0], "#111111");
    EXPECT_FALSE(three[1]);
    EXPECT_EQ(three[2], "#333333");
    EXPECT_FALSE(three[7]);
    json twelve = json::array();
    for (int i = 0; i < 12; ++i) twelve.push_back("#00000" + std::to_string(i % 10));
    auto first8 = read({{"palette", {{"swatches", twelve}}}}).palette.swatches();
    ASSERT_EQ(first8.size(), 8u);
    EXPECT_EQ(first8[7], "#000007");
}

TEST(DeckJsonRead, DanglingProfileReferencesAreCleared) {
    const char* kept = "11111111-1111-4111-8111-111111111111";
    const char* gone = "22222222-2222-4222-8222-222222222222";
    json document = deckWith(json::array({{{"id", slideId}, {"browserProfileId", kept}},
                                           {{"id", "33333333-3333-4333-8333-333333333333"}, {"browserProfileId", gone}}}));
    document["browserProfiles"] = json::array({{{"id", kept}, {"name", "Admin"}}, {{"name", "No id yet"}}});
    auto deck = DeckJson::fromJson(document);
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->slides[0].browserProfileId->string(), kept);
    EXPECT_FALSE(deck->slides[1].browserProfileId);
    ASSERT_EQ(deck->browserProfiles.size(), 2u);
    EXPECT_FALSE(deck->browserProfiles[1].id.isNil());  // a missing id gets a new one
    EXPECT_EQ(deck->profile(*Uuid::parse(kept))->name, "Admin");
}

TEST(DeckJsonRead, OldLayoutNamesFixThePosition) {
    struct Case {
        const char* stored;
        SlideLayout layout;
        SlidePosition position;
    };
    for (auto c : {Case{"title", SlideLayout::regular, SlidePosition::full},
                   Case{"webFull", SlideLayout::web, SlidePosition::full},
                   Case{"webLeft", SlideLayout::web, SlidePosition::left},
                   Case{"webRight", SlideLayout::web, SlidePosition::right},
                   Case{"split", SlideLayout::web, SlidePosition::topBottom}}) {
        // The stored position is not even looked at.
        Slide slide = readSlide({{"layout", c.stored}, {"position", "left"}});
        EXPECT_EQ(slide.layout, c.layout) << c.stored;
        EXPECT_EQ(slide.position, c.position) << c.stored;
    }
    Slide current = readSlide({{"layout", "image"}, {"position", "inText"}});
    EXPECT_EQ(current.layout, SlideLayout::image);
    EXPECT_EQ(current.position, SlidePosition::inText);
    Slide unknown = readSlide({{"layout", "carousel"}, {"position", "diagonal"}});
    EXPECT_EQ(unknown.layout, SlideLayout::regular);
    EXPECT_EQ(unknown.position, SlidePosition::full);
}

TEST(DeckJsonRead, OnlyWebAddressesSurvive) {
    EXPECT_EQ(readSlide({{"url", "https://example.com/a?b=c"}}).url, "https://example.com/a?b=c");
    EXPECT_EQ(readSlide({{"url", "HTTPS://EXAMPLE.COM"}}).url, "HTTPS://EXAMPLE.COM");
    EXPECT_EQ(readSlide({{"url", "http://127.0.0.1:8080"}}).url, "http://127.0.0.1:8080");
    for (const char* refused : {"file:///etc/passwd", "javascript:alert(1)", "JavaScript:alert(1)",
                                "lectern://open", "example.com", "", "://x", "https//missing-colon"}) {
        EXPECT_FALSE(readSlide({{"url", refused}}).url) << refused;
    }
}

TEST(DeckJsonRead, InlineImageDataWinsOverFileName) {
    std::string png = "\x89PNG\r\n\x1a\nrest";
    std::string encoded = base64Encode(std::span(reinterpret_cast<const std::uint8_t*>(png.data()), png.size()));
    Slide both = readSlide({{"imageData", encoded}, {"imageFile", "abc.png"}, {"imageName", "Shot.png"}});
    ASSERT_TRUE(both.imageData);
    EXPECT_EQ(both.imageData->view(), png);
    EXPECT_FALSE(both.imageFile);
    EXPECT_EQ(both.imageName, "Shot.png");
    Slide fileOnly = readSlide({{"imageFile", "abc.png"}});
    EXPECT_EQ(fileOnly.imageFile, "abc.png");
    EXPECT_FALSE(fileOnly.imageData);
}

TEST(DeckJsonRead, RevealSpellingsAndGranularity) {
    for (const char* on : {"reveal", "auto", "manualByParagraph"}) EXPECT_EQ(readSlide({{"reveal", on}}).reveal, RevealMode::reveal) << on;
    for (const char* off : {"all", "sometimes", "Reveal"}) EXPECT_EQ(readSlide({{"reveal", off}}).reveal, RevealMode::all) << off;
    EXPECT_EQ(readSlide({{"revealGranularity", "line"}}).revealGranularity, RevealGranularity::line);
    EXPECT_EQ(readSlide({{"revealGranularity", "listItem"}}).revealGranularity, RevealGranularity::listItem);
    EXPECT_EQ(readSlide({{"revealGranularity", "word"}}).revealGranularity, RevealGranularity::paragraph);
    EXPECT_EQ(readSlide({{"revealPlan", {{0}, {2, 1}, json::array()}}}).revealPlan,
              (std::vector<std::vector<std::int64_t>>{{0}, {2, 1}, {}}));
}

TEST(DeckJsonRead, WebZoomIsClampedAndNeverFailsTheDeck) {
    EXPECT_EQ(readSlide({{"webZoom", 10}}).webZoom, 3.0);
    EXPECT_EQ(readSlide({{"webZoom", 7}}).webZoom, 3.0);
    EXPECT_EQ(readSlide({{"webZoom", 0.2}}).webZoom, 0.5);
    EXPECT_EQ(readSlide({{"webZoom", 0.5}}).webZoom, 0.5);
    EXPECT_EQ(readSlide({{"webZoom", -1}}).webZoom, 0.5);
    EXPECT_EQ(readSlide({{"webZoom", 1.25}}).webZoom, 1.25);
    EXPECT_EQ(readSlide({{"webZoom", "big"}}).webZoom, 1.0);
    EXPECT_EQ(readSlide({{"webZoom", json::array()}}).webZoom, 1.0);
    auto huge = DeckJson::decode(std::string_view(
        R"({"id":"0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D","slides":[{"id":"A1B2C3D4-E5F6-4789-ABCD-EF0123456789","webZoom":1e999}]})"));
    // A number beyond any double is not JSON that can be read at all; the
    // failure is a message, not a crash.
    ASSERT_FALSE(huge.ok());
    EXPECT_NE(huge.error().message.find("number overflow"), std::string::npos);
}

TEST(DeckJsonRead, SectionsFromTitleWhenFlagIsMissing) {
    EXPECT_TRUE(readSlide({{"sectionTitle", "Part one"}}).isSection);
    EXPECT_FALSE(readSlide({{"sectionTitle", ""}}).isSection);
    EXPECT_FALSE(readSlide({{"sectionTitle", "Part one"}, {"isSection", false}}).isSection);
    EXPECT_TRUE(readSlide({{"isSection", true}}).isSection);
    EXPECT_FALSE(readSlide(json::object()).isSection);
}

TEST(DeckJsonRead, ActionsCurrentForm) {
    SlideAction a = readAction({{"name", "Reset"},
                                {"kindCase", "pageScript"},
                                {"script", "return 1"},
                                {"request", {{"method", "POST"}, {"urlString", "https://x/y"}}},
                                {"autoRun", true},
                                {"autoRunDelaySeconds", 1.5},
                                {"repeats", true},
                                {"repeatMaxRuns", 3}});
    EXPECT_EQ(a.kindCase, SlideActionKindCase::pageScript);
    EXPECT_EQ(a.script, "return 1");
    EXPECT_EQ(a.request.method, "POST");  // both payloads are kept
    EXPECT_TRUE(a.autoRun);
    EXPECT_EQ(a.autoRunDelaySeconds, 1.5);
    EXPECT_EQ(a.repeatIntervalSeconds, 5.0);
    EXPECT_EQ(a.repeatMaxRuns, 3);

    SlideAction noRequest = readAction({{"kindCase", "apiRequest"}});
    EXPECT_EQ(noRequest.request, APIRequestSpec{});
    EXPECT_EQ(noRequest.request.method, "GET");

    // Keys missing inside a stored request read as empty.
    SlideAction emptyMethod = readAction({{"kindCase", "apiRequest"}, {"request", json::object()}});
    EXPECT_EQ(emptyMethod.request.method, "");
    EXPECT_FALSE(emptyMethod.request.useProfileCookies);
}

TEST(DeckJsonRead, ActionsOlderKindObject) {
    // Decoded from text too: the single key is read from the parsed object
    // itself, not from a temporary view of it.
    auto fromText = DeckJson::decode(std::string_view(
        R"({"id":"0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D","slides":[{"id":"A1B2C3D4-E5F6-4789-ABCD-EF0123456789",)"
        R"("actions":[{"kind":{"pageScript":{"_0":"x"}}}]}]})"));
    ASSERT_TRUE(fromText.ok());
    EXPECT_EQ(fromText->slides[0].actions[0].script, "x");

    SlideAction script = readAction({{"kind", {{"pageScript", {{"_0", "document.title"}}}}}});
    EXPECT_EQ(script.kindCase, SlideActionKindCase::pageScript);
    EXPECT_EQ(script.script, "document.title");
    EXPECT_EQ(script.request.method, "GET");
    EXPECT_TRUE(script.request.urlString.empty());

    SlideAction request = readAction(
        {{"kind", {{"apiRequest", {{"_0", {{"method", "DELETE"}, {"urlString", "https://api/x"},
                                            {"headers", {{{"name", "Authorization"}, {"value", "Bearer t"}}}}}}}}}}});
    EXPECT_EQ(request.kindCase, SlideActionKindCase::apiRequest);
    EXPECT_EQ(request.request.method, "DELETE");
    ASSERT_EQ(request.request.headers.size(), 1u);
    EXPECT_EQ(request.request.headers[0].value, "Bearer t");
    EXPECT_TRUE(request.script.empty());

    // kindCase wins over kind.
    SlideAction both = readAction({{"kindCase", "apiRequest"}, {"kind", {{"pageScript", {{"_0", "x"}}}}}});
    EXPECT_EQ(both.kindCase, SlideActionKindCase::apiRequest);
    EXPECT_TRUE(both.script.empty());

    SlideAction neither = readAction({{"name", "Bare"}});
    EXPECT_EQ(neither.kindCase, SlideActionKindCase::apiRequest);
    EXPECT_EQ(neither.request, APIRequestSpec{});

    const std::string invalid = "slides[0].actions[0].kind: Invalid number of keys found, expected one.";
    auto kindFailure = [](json kind) {
        return failureOf(deckWith(json::array({{{"id", slideId}, {"actions", json::array({{{"kind", kind}}})}}})));
    };
    EXPECT_EQ(kindFailure(json::object()), invalid);
    EXPECT_EQ(kindFailure({{"pageScript", {{"_0", "a"}}}, {"apiRequest", {{"_0", json::object()}}}}), invalid);
    EXPECT_EQ(kindFailure({{"shell", {{"_0", "rm"}}}}), invalid);
    EXPECT_EQ(kindFailure({{"pageScript", json::object()}}), "slides[0].actions[0].kind.pageScript._0: missing");
}

TEST(DeckJsonRead, ActionsAndHeadersWithoutIdsGetTheSameIdsAtEveryRead) {
    // Name-based (version 5) UUID, the known value of RFC 4122's example.
    EXPECT_EQ(Uuid::nameBased(*Uuid::parse("6ba7b810-9dad-11d1-80b4-00c04fd430c8"), "www.example.com").string(),
              "2ED6657D-E927-568B-95E1-2665A8AEA6A2");

    json headers = json::array({{{"name", "A"}}, {{"name", "B"}}});
    json action = {{"kindCase", "apiRequest"}, {"request", {{"headers", headers}}}};
    json document = deckWith(json::array({{{"id", slideId}, {"actions", json::array({action, action})}}}));
    auto first = DeckJson::fromJson(document);
    auto second = DeckJson::fromJson(document);
    ASSERT_TRUE(first.ok() && second.ok());
    EXPECT_EQ(DeckJson::encode(*first), DeckJson::encode(*second));  // ids included
    const auto& actions = first->slides[0].actions;
    EXPECT_NE(actions[0].id, actions[1].id);
    EXPECT_NE(actions[0].request.headers[0].id, actions[0].request.headers[1].id);
    EXPECT_NE(actions[0].request.headers[0].id, actions[1].request.headers[0].id);
    // The place is named within the deck: another deck gives other ids.
    document["id"] = "11111111-2222-4333-8444-555555555555";
    EXPECT_NE(DeckJson::fromJson(document)->slides[0].actions[0].id, actions[0].id);
}

TEST(DeckJsonWrite, RoundTripGivesAnEqualDeck) {
    Deck deck;
    deck.title = "Launch day \u2014 \u201Cdemo\u201D";
    deck.theme = Theme::dark;
    deck.accentHex = "#112233";
    deck.palette.setSwatch(2, "#ABCDEF");
    deck.browserProfiles.push_back({Uuid::random(), "Admin"});
    deck.targetMinutes = 20;
    Slide web = Slide::make(SlideLayout::web);
    web.position = SlidePosition::topBottom;
    web.url = "https://example.com/dashboard";
    web.browserProfileId = deck.browserProfiles[0].id;
    web.webZoom = 1.25;
    web.isSkipped = true;
    web.nextSlideAction = "back";
    SlideAction action;
    action.name = "Prepare";
    action.request.headers.push_back({Uuid::random(), "X-Token", "abc"});
    action.request.useProfileCookies = true;
    action.repeats = true;
    action.repeatIntervalSeconds = 0.75;
    web.actions.push_back(action);
    Slide picture = Slide::make(SlideLayout::image);
    picture.imageData = SharedBytes::fromString(std::string("\x89PNG\r\n\x1a\n\0\x01\xff", 11));
    picture.imageName = "Photo.png";
    picture.imageFill = true;
    picture.isSection = true;
    picture.sectionTitle = "Pictures";
    Slide decisions = Slide::make(SlideLayout::decisions);
    decisions.links.push_back({Uuid::random(), "Yes", "Go on", "#FF0000", true, web.id.string()});
    decisions.links.push_back({Uuid::random(), "No", "", std::nullopt, false, ""});
    decisions.sectionId = picture.id;
    decisions.reveal = RevealMode::reveal;
    decisions.revealGranularity = RevealGranularity::listItem;
    decisions.revealPlan = std::vector<std::vector<std::int64_t>>{{1}, {0}};
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    decisions.body.append("Plain ");
    decisions.body.append("bold", bold);
    decisions.notes = "Say hello";
    deck.slides = {web, picture, decisions};

    std::string encoded = DeckJson::encode(deck);
    auto decoded = DeckJson::decode(encoded);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_EQ(*decoded, deck);
    EXPECT_EQ(DeckJson::encode(*decoded), encoded);  // stable
}

TEST(DeckJsonWrite, CurrentFormSortedAndWithoutAbsentFields) {
    Deck deck;
    Slide slide = Slide::make(SlideLayout::regular);
    slide.actions.push_back(SlideAction{});
    deck.slides = {slide};
    std::string text = DeckJson::encode(deck);
    json written = json::parse(text);

    EXPECT_EQ(written["schemaVersion"], 3);
    for (const char* absent : {"title", "accentHex", "targetMinutes"}) EXPECT_FALSE(written.contains(absent)) << absent;
    const json& s = written["slides"][0];
    for (const char* absent : {"url", "browserProfileId", "imageData", "imageFile", "imageName", "revealPlan",
                               "accentHex", "sectionId", "sectionTitle", "nextSlideAction"}) {
        EXPECT_FALSE(s.contains(absent)) << absent;
    }
    EXPECT_EQ(s.size(), 17u);  // every non-optional key, nothing else
    EXPECT_EQ(s["layout"], "regular");
    EXPECT_EQ(s["webZoom"], 1.0);
    EXPECT_EQ(s["body"], json::array());
    const json& a = s["actions"][0];
    EXPECT_FALSE(a.contains("kind"));
    EXPECT_EQ(a["kindCase"], "apiRequest");
    EXPECT_EQ(a["request"]["method"], "GET");
    EXPECT_EQ(a["repeatIntervalSeconds"], 5.0);
    EXPECT_EQ(written["palette"]["swatches"], json(std::vector<std::nullptr_t>(8, nullptr)));
    EXPECT_EQ(s["id"], slide.id.string());  // upper-case

    // Keys appear in alphabetical order and the text is indented.
    EXPECT_LT(text.find("\"browserProfiles\""), text.find("\"id\""));
    EXPECT_LT(text.find("\"id\""), text.find("\"palette\""));
    EXPECT_NE(text.find("\n  \"schemaVersion\": 3"), std::string::npos);
}

TEST(DeckJsonWrite, OlderDeckIsRewrittenInTheCurrentForm) {
    json old = deckWith(json::array({{{"id", slideId},
                                      {"layout", "split"},
                                      {"reveal", "manualByParagraph"},
                                      {"actions", json::array({{{"kind", {{"pageScript", {{"_0", "go()"}}}}}}})}}}));
    auto deck = DeckJson::fromJson(old);
    ASSERT_TRUE(deck.ok());
    json written = json::parse(DeckJson::encode(*deck));
    const json& s = written["slides"][0];
    EXPECT_EQ(s["layout"], "web");
    EXPECT_EQ(s["position"], "topBottom");
    EXPECT_EQ(s["reveal"], "reveal");
    EXPECT_EQ(s["actions"][0]["kindCase"], "pageScript");
    EXPECT_EQ(s["actions"][0]["script"], "go()");
    EXPECT_FALSE(s["actions"][0].contains("kind"));
    EXPECT_FALSE(s["actions"][0]["id"].get<std::string>().empty());
}

}  // namespace
}  // namespace lectern
