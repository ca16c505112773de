#include "model/deck_json.h"

#include <gtest/gtest.h>

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
    // Apart from the ids and the schema version, what is read from nothing is a new deck and slide.
    Deck expected;
    expected.schemaVersion = 1;
    expected.id = *Uuid::parse(deckId);
    expected.slides = {Slide::make(SlideLayout::regular)};
    expected.slides[0].id = *Uuid::parse(slideId);
    EXPECT_EQ(DeckJson::fromJson(deckWith(json::array({{{"id", slideId}}}))).value(), expected);
}

TEST(DeckJsonRead, DamagedDocumentsSayWhere) {
    auto slideWith = [](json keys) {
        keys["id"] = slideId;
        return deckWith(json::array({keys}));
    };
    const std::pair<json, std::string> cases[] = {
        {json::array(), "The document is not a JSON object."},
        {{{"slides", json::array()}}, "id: missing"},
        {{{"id", "not-a-uuid"}, {"slides", json::array()}}, "id: not a UUID"},
        {{{"id", deckId}}, "slides: missing"},
        {{{"id", deckId}, {"slides", "many"}}, "slides: expected an array"},
        {deckWith(json::array({{{"id", slideId}}, {{"id", slideId}}, {{"id", 7}}})), "slides[2].id: not a UUID"},
        {deckWith(json::array({{{"title", "no id"}}})), "slides[0].id: missing"},
        {{{"id", deckId}, {"slides", json::array()}, {"title", 12}}, "title: expected a string"},
        {slideWith({{"imageFill", "yes"}}), "slides[0].imageFill: expected true or false"},
        {slideWith({{"actions", json::array({{{"repeatMaxRuns", 2.5}}})}}),
         "slides[0].actions[0].repeatMaxRuns: expected a whole number"},
        {slideWith({{"imageData", "%%%"}}), "slides[0].imageData: not valid Base64"},
        {slideWith({{"sectionId", "nope"}}), "slides[0].sectionId: not a UUID"},
    };
    for (const auto& [document, message] : cases) EXPECT_EQ(failureOf(document), message) << document.dump();
    EXPECT_NE(DeckJson::decode(std::string_view("{\"id\": ")).error().message.find("Not valid JSON"), std::string::npos);
    // Lower-case UUIDs are read (and written upper-case); null counts as absent, never as a wrong type.
    auto deck = DeckJson::fromJson(json{{"id", "0f2d3c9a-1b4e-4a5f-9c8d-7e6f5a4b3c2d"}, {"slides", json::array()},
                                        {"title", nullptr}, {"theme", nullptr}});
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->id.string(), deckId);
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
    for (json bad : {json(-5), json(0), json("ten"), json(2.5)}) EXPECT_FALSE(read({{"targetMinutes", bad}}).targetMinutes) << bad;
    EXPECT_EQ(read({{"schemaVersion", 7}, {"unknownKey", {1, 2}}}).schemaVersion, 7);

    // Short swatch lists are padded to eight, long ones cut.
    using Swatches = std::vector<std::optional<std::string>>;
    EXPECT_EQ(read({{"palette", {{"swatches", {"#111111", nullptr, "#333333"}}}}}).palette.swatches(),
              (Swatches{"#111111", std::nullopt, "#333333", {}, {}, {}, {}, {}}));
    json twelve = json::array();
    for (int i = 0; i < 12; ++i) twelve.push_back("#00000" + std::to_string(i % 10));
    EXPECT_EQ(read({{"palette", {{"swatches", twelve}}}}).palette.swatches().back(), "#000007");
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
    struct Case { const char* stored; SlideLayout layout; SlidePosition position; };
    // Old names ignore the stored position; current and unknown names read it.
    for (auto c : {Case{"title", SlideLayout::regular, SlidePosition::full},
                   Case{"webFull", SlideLayout::web, SlidePosition::full},
                   Case{"webLeft", SlideLayout::web, SlidePosition::left},
                   Case{"webRight", SlideLayout::web, SlidePosition::right},
                   Case{"split", SlideLayout::web, SlidePosition::topBottom},
                   Case{"image", SlideLayout::image, SlidePosition::inText},
                   Case{"carousel", SlideLayout::regular, SlidePosition::inText}}) {
        Slide slide = readSlide({{"layout", c.stored}, {"position", "inText"}});
        EXPECT_EQ(slide.layout, c.layout) << c.stored;
        EXPECT_EQ(slide.position, c.position) << c.stored;
    }
    EXPECT_EQ(readSlide({{"position", "diagonal"}}).position, SlidePosition::full);
}

TEST(DeckJsonRead, OnlyWebAddressesSurvive) {
    for (const char* kept : {"https://example.com/a?b=c", "HTTPS://EXAMPLE.COM", "http://127.0.0.1:8080"}) {
        EXPECT_EQ(readSlide({{"url", kept}}).url, kept);
    }
    for (const char* refused : {"file:///etc/passwd", "javascript:alert(1)", "JavaScript:alert(1)",
                                "lectern://open", "example.com", "", "://x", "https//missing-colon"}) {
        EXPECT_FALSE(readSlide({{"url", refused}}).url) << refused;
    }
}

TEST(DeckJsonRead, InlineImageDataWinsOverFileName) {
    std::string png = "\x89PNG\r\n\x1a\nrest";
    Slide both = readSlide({{"imageData", base64Encode(SharedBytes::fromString(png).span())},
                            {"imageFile", "abc.png"}, {"imageName", "Shot.png"}});
    ASSERT_TRUE(both.imageData);
    EXPECT_EQ(both.imageData->view(), png);
    EXPECT_FALSE(both.imageFile);
    EXPECT_EQ(both.imageName, "Shot.png");
    EXPECT_EQ(readSlide({{"imageFile", "abc.png"}}).imageFile, "abc.png");
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
    const std::pair<json, double> cases[] = {{10, 3.0},   {7, 3.0},     {0.2, 0.5},   {0.5, 0.5},
                                             {-1, 0.5},   {1.25, 1.25}, {"big", 1.0}, {json::array(), 1.0}};
    for (const auto& [stored, zoom] : cases) EXPECT_EQ(readSlide({{"webZoom", stored}}).webZoom, zoom) << stored;
    // A number beyond any double is unreadable JSON: a message, not a crash.
    auto huge = DeckJson::decode(std::string_view(
        R"({"id":"0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D","slides":[{"id":"A1B2C3D4-E5F6-4789-ABCD-EF0123456789","webZoom":1e999}]})"));
    ASSERT_FALSE(huge.ok());
    EXPECT_NE(huge.error().message.find("number overflow"), std::string::npos);
}

TEST(DeckJsonRead, SectionsFromTitleWhenFlagIsMissing) {
    const std::pair<json, bool> cases[] = {{{{"sectionTitle", "Part one"}}, true},
                                           {{{"sectionTitle", ""}}, false},
                                           {{{"sectionTitle", "Part one"}, {"isSection", false}}, false},
                                           {{{"isSection", true}}, true}};
    for (const auto& [keys, section] : cases) EXPECT_EQ(readSlide(keys).isSection, section) << keys;
}

TEST(DeckJsonRead, ActionsCurrentForm) {
    SlideAction a = readAction({{"name", "Reset"}, {"kindCase", "pageScript"}, {"script", "return 1"},
                                {"request", {{"method", "POST"}, {"urlString", "https://x/y"}}}, {"autoRun", true},
                                {"autoRunDelaySeconds", 1.5}, {"repeats", true}, {"repeatMaxRuns", 3}});
    EXPECT_EQ(a.kindCase, SlideActionKindCase::pageScript);
    EXPECT_EQ(a.script, "return 1");
    EXPECT_EQ(a.request.method, "POST");  // both payloads are kept
    EXPECT_TRUE(a.autoRun);
    EXPECT_EQ(a.autoRunDelaySeconds, 1.5);
    EXPECT_EQ(a.repeatIntervalSeconds, 5.0);
    EXPECT_EQ(a.repeatMaxRuns, 3);

    EXPECT_EQ(readAction({{"kindCase", "apiRequest"}}).request.method, "GET");
    // Keys missing inside a stored request read as empty.
    SlideAction emptyMethod = readAction({{"kindCase", "apiRequest"}, {"request", json::object()}});
    EXPECT_EQ(emptyMethod.request.method, "");
    EXPECT_FALSE(emptyMethod.request.useProfileCookies);
}

TEST(DeckJsonRead, ActionsOlderKindObject) {
    // From text too: the single key is read from the parsed object, not a temporary view of it.
    auto fromText = DeckJson::decode(std::string_view(
        R"({"id":"0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D","slides":[{"id":"A1B2C3D4-E5F6-4789-ABCD-EF0123456789",)"
        R"("actions":[{"kind":{"pageScript":{"_0":"x"}}}]}]})"));
    ASSERT_TRUE(fromText.ok());
    EXPECT_EQ(fromText->slides[0].actions[0].script, "x");

    SlideAction script = readAction({{"kind", {{"pageScript", {{"_0", "document.title"}}}}}});
    EXPECT_EQ(script.kindCase, SlideActionKindCase::pageScript);
    EXPECT_EQ(script.script, "document.title");
    EXPECT_EQ(script.request, APIRequestSpec{});

    SlideAction request = readAction(
        {{"kind", {{"apiRequest", {{"_0", {{"method", "DELETE"}, {"urlString", "https://api/x"},
                                            {"headers", {{{"name", "Authorization"}, {"value", "Bearer t"}}}}}}}}}}});
    EXPECT_EQ(request.kindCase, SlideActionKindCase::apiRequest);
    EXPECT_EQ(request.request.method, "DELETE");
    ASSERT_EQ(request.request.headers.size(), 1u);
    EXPECT_EQ(request.request.headers[0].value, "Bearer t");

    // kindCase wins over kind; with neither, an action is a request.
    SlideAction both = readAction({{"kindCase", "apiRequest"}, {"kind", {{"pageScript", {{"_0", "x"}}}}}});
    EXPECT_EQ(both.kindCase, SlideActionKindCase::apiRequest);
    EXPECT_TRUE(both.script.empty());
    EXPECT_EQ(readAction({{"name", "Bare"}}).kindCase, SlideActionKindCase::apiRequest);
    auto kindFailure = [](json kind) {
        return failureOf(deckWith(json::array({{{"id", slideId}, {"actions", json::array({{{"kind", kind}}})}}})));
    };
    for (json kind : {json::object(), json{{"pageScript", {{"_0", "a"}}}, {"apiRequest", {{"_0", json::object()}}}},
                      json{{"shell", {{"_0", "rm"}}}}}) {
        EXPECT_EQ(kindFailure(kind), "slides[0].actions[0].kind: Invalid number of keys found, expected one.") << kind;
    }
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
    EXPECT_FALSE(s["actions"][0].contains("kind"));
    EXPECT_EQ(s["actions"][0]["kindCase"], "apiRequest");
    EXPECT_EQ(written["palette"]["swatches"], json(std::vector<std::nullptr_t>(8, nullptr)));
    EXPECT_EQ(s["id"], slide.id.string());  // upper-case

    // Keys appear in alphabetical order and the text is indented.
    EXPECT_LT(text.find("\"browserProfiles\""), text.find("\"id\""));
    EXPECT_LT(text.find("\"id\""), text.find("\"palette\""));
    EXPECT_NE(text.find("\n  \"schemaVersion\": 3"), std::string::npos);
}

}  // namespace
}  // namespace lectern
