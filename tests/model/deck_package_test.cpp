#include "model/deck_package.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "model/deck_json.h"
#include "model/digests.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::fakeJpeg;
using testing::fakePng;
using testing::imageSlide;
using testing::listFolder;
using testing::readText;
using testing::TempDir;
using testing::writeText;

const char* const deckId = "0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D";

ino_t inodeOf(const fs::path& path) {
    struct stat info{};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_ino;
}

// A package folder with the given deck.json and media files.
fs::path makePackage(const fs::path& at, const json& deck, const std::vector<SharedBytes>& media = {}) {
    fs::create_directories(at / "media");
    writeText(at / "deck.json", deck.dump());
    for (const auto& bytes : media) writeText(at / "media" / DeckPackage::mediaName(bytes.span()), bytes.view());
    return at;
}

Deck deckOf(std::vector<Slide> slides) {
    Deck deck;
    deck.slides = std::move(slides);
    return deck;
}

// Saves `deck` as a new package at `path` and opens it again.
Deck saveAndOpen(const Deck& deck, const fs::path& path) {
    EXPECT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    auto opened = DeckPackage::read(path);
    EXPECT_TRUE(opened.ok()) << (opened.ok() ? "" : opened.error().message);
    return opened.ok() ? *opened : Deck{};
}

// Each test works in a folder of its own.
class DeckPackageTest : public ::testing::Test {
protected:
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
};

TEST(DeckPackageMedia, NamesComeFromTheBytes) {
    EXPECT_EQ(DeckPackage::mediaName(fakePng(1).span()), sha256Hex(fakePng(1).view()) + ".png");
    EXPECT_EQ(DeckPackage::mediaName(fakeJpeg(1).span()), sha256Hex(fakeJpeg(1).view()) + ".jpg");
    EXPECT_EQ(sha256Hex(std::string_view("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

    std::string hash(64, 'a');
    EXPECT_TRUE(DeckPackage::isValidMediaName(hash + ".png") && DeckPackage::isValidMediaName(hash + ".jpg"));
    for (std::string bad : {hash + ".gif", hash.substr(1) + ".png", hash + "a.png", std::string(64, 'A') + ".png",
                            hash + ".png.png", "../" + hash.substr(3) + ".png", hash, std::string("x.png"),
                            std::string(63, 'a') + "g.png"}) {
        EXPECT_FALSE(DeckPackage::isValidMediaName(bad)) << bad;
    }
}

TEST_F(DeckPackageTest, FailuresSayWhy) {
    writeText(dir / "Plain.lectern", "{}");
    fs::create_directories(dir / "Empty.lectern");
    fs::create_directories(dir / "Folder.lectern" / "deck.json");
    makePackage(dir / "Bad.lectern", {{"id", "nope"}, {"slides", json::array()}});
    for (const char* noDeck : {"Nowhere.lectern", "Empty.lectern", "Folder.lectern"}) {
        EXPECT_EQ(DeckPackage::read(dir / noDeck).error().kind, ErrorKind::fileReadNoSuchFile) << noDeck;
    }
    auto plain = DeckPackage::read(dir / "Plain.lectern");
    ASSERT_FALSE(plain.ok());
    EXPECT_EQ(plain.error().kind, ErrorKind::fileReadCorruptFile);
    EXPECT_EQ(plain.error().message,
              "The file \u201CPlain.lectern\u201D couldn\u2019t be opened because it isn\u2019t in the correct format.");
    auto bad = DeckPackage::read(dir / "Bad.lectern");
    ASSERT_FALSE(bad.ok());
    EXPECT_EQ(bad.error().kind, ErrorKind::decoding);
    EXPECT_EQ(bad.error().message, "id: not a UUID");
}

// A file of `size` bytes that is all hole: no disk is used.
void sparse(const fs::path& path, std::uint64_t size) {
    writeText(path, "");
    fs::resize_file(path, size);
}

// A pipe would block the open until a writer came, and a huge sparse file
// would be allocated whole: both are refused at once, on this thread.
TEST_F(DeckPackageTest, PipesAndOversizedDeckFilesAreRefusedAtOnce) {
    fs::create_directories(dir / "Pipe.lectern");
    ASSERT_EQ(::mkfifo((dir / "Pipe.lectern" / "deck.json").c_str(), 0644), 0);
    EXPECT_EQ(DeckPackage::read(dir / "Pipe.lectern").error().kind, ErrorKind::fileReadNoSuchFile);
    fs::create_directories(dir / "Huge.lectern");
    sparse(dir / "Huge.lectern" / "deck.json", std::uint64_t{64} << 30);
    EXPECT_EQ(DeckPackage::read(dir / "Huge.lectern").error().message, "deck.json is larger than 256 MiB");
}

// Only plain files under valid names in media/ are loaded; any other image
// leaves its slide without a picture but with the name the user gave.
TEST_F(DeckPackageTest, ImagesLoadOnlyFromValidNamesInMedia) {
    auto png = fakePng(7);
    const fs::path media = dir / "D.lectern" / "media";
    fs::create_directories(dir / "secret");
    writeText(dir / "secret" / "x.png", "outside the package");
    fs::create_directories(media);
    const std::string link = std::string(64, 'b') + ".png", pipe = std::string(64, 'e') + ".png",
                      huge = std::string(64, 'f') + ".png";
    fs::create_symlink(dir / "secret" / "x.png", media / link);
    ASSERT_EQ(::mkfifo((media / pipe).c_str(), 0644), 0);
    sparse(media / huge, DeckPackage::mediaSizeLimit + 1);

    json slides = json::array();
    for (const std::string& file : {DeckPackage::mediaName(png.span()), std::string("../secret/x.png"),
                                    std::string(63, 'c') + ".png", std::string(64, 'd') + ".png" /* no such file */,
                                    link, pipe, huge}) {
        slides.push_back({{"id", Uuid::random().string()}, {"imageFile", file}, {"imageName", "Shown.png"}});
    }
    makePackage(dir / "D.lectern", {{"id", deckId}, {"schemaVersion", 3}, {"slides", slides}}, {png});

    auto deck = DeckPackage::read(dir / "D.lectern");
    ASSERT_TRUE(deck.ok()) << deck.error().message;
    EXPECT_EQ(deck->slides[0].imageData, png);
    EXPECT_EQ(deck->slides[0].imageFile, DeckPackage::mediaName(png.span()));
    for (std::size_t i = 1; i < slides.size(); ++i) {
        EXPECT_FALSE(deck->slides[i].imageData) << slides[i];
        EXPECT_FALSE(deck->slides[i].imageFile) << slides[i];
        EXPECT_EQ(deck->slides[i].imageName, "Shown.png");
    }
}

TEST_F(DeckPackageTest, OldSchemaIsReadAsCurrent) {
    json body = {"Hello ", {{"NSFont", {{"size", 30}}}, {"NSInlinePresentationIntent", 2}}, "there", json::object()};
    makePackage(dir / "Old.lectern",
                {{"id", deckId}, {"slides", {{{"id", "00000000-0000-4000-8000-000000000001"}, {"body", body}}}}});
    auto deck = DeckPackage::read(dir / "Old.lectern");
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->schemaVersion, 3);
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    EXPECT_EQ(deck->slides[0].body, AttributedText::fromRuns({{"Hello ", bold}, {"there", {}}}));
}

TEST_F(DeckPackageTest, PicturesAreStoredOnceUnderTheirHashAndNeverRewritten) {
    auto shared = fakePng(1);
    auto other = fakeJpeg(2);
    // Two slides with equal bytes, held apart, share one file.
    Deck reopened = saveAndOpen(deckOf({imageSlide(shared, "A"), imageSlide(fakePng(1), "B"), imageSlide(other, "C")}), path);
    EXPECT_EQ(reopened.slides[2].imageData, other);
    const std::string sharedName = DeckPackage::mediaName(shared.span()), otherName = DeckPackage::mediaName(other.span());
    EXPECT_EQ(listFolder(path / "media"),
              (std::vector<std::string>{std::min(sharedName, otherName), std::max(sharedName, otherName)}));
    EXPECT_EQ(listFolder(path), (std::vector<std::string>{"QuickLook", "deck.json", "media"}));
    json stored = json::parse(readText(path / "deck.json"));
    EXPECT_EQ(stored["slides"][0]["imageFile"], sharedName);
    EXPECT_EQ(stored["slides"][1]["imageFile"], sharedName);
    EXPECT_FALSE(stored["slides"][0].contains("imageData"));

    // A file a person put into media/ under another name stays, pictures
    // nobody shows any more go, and the one still shown is not rewritten.
    const ino_t before = inodeOf(path / "media" / sharedName);
    writeText(path / "media" / "notes.txt", "mine");
    writeText(path / "media" / (std::string(64, 'e') + ".png"), "orphan");
    reopened.slides.erase(reopened.slides.begin() + 2);
    ASSERT_TRUE(DeckPackage::write(reopened, path, path).ok());
    EXPECT_EQ(listFolder(path / "media"), (std::vector<std::string>{sharedName, "notes.txt"}));
    EXPECT_EQ(inodeOf(path / "media" / sharedName), before);

    // A picture kept under an older valid name keeps that name.
    const std::string older = std::string(64, 'f') + ".png";
    fs::rename(path / "media" / sharedName, path / "media" / older);
    for (auto& slide : reopened.slides) slide.imageFile = older;
    ASSERT_TRUE(DeckPackage::write(reopened, path, path).ok());
    EXPECT_EQ(listFolder(path / "media"), (std::vector<std::string>{older, "notes.txt"}));
}

TEST_F(DeckPackageTest, MembersNobodyKnowsAreKeptAndPreviewsReplaced) {
    Deck deck = deckOf({Slide::make(SlideLayout::regular)});
    ASSERT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    fs::create_directories(path / "Extras" / "deep");
    writeText(path / "Extras" / "deep" / "script.md", "notes");
    writeText(path / "README.txt", "hello");
    fs::create_symlink("README.txt", path / "LINK");
    writeText(path / "QuickLook" / "Stale.png", "old");

    int calls = 0;
    auto previews = [&](const Deck& d) {
        ++calls;
        EXPECT_EQ(d, deck);
        return DeckPreviews{std::vector<std::uint8_t>{1, 2, 3}, std::nullopt};
    };
    ASSERT_TRUE(DeckPackage::write(deck, path, path, previews).ok());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(readText(path / "Extras" / "deep" / "script.md"), "notes");
    EXPECT_EQ(readText(path / "README.txt"), "hello");
    EXPECT_TRUE(fs::is_symlink(path / "LINK"));
    EXPECT_EQ(listFolder(path / "QuickLook"), std::vector<std::string>{"Thumbnail.png"});
    // Nothing is left beside the package.
    EXPECT_EQ(listFolder(dir.path()), std::vector<std::string>{"Talk.lectern"});

    // A stray file called media is replaced by the folder.
    fs::remove_all(path / "media");
    writeText(path / "media", "not a folder");
    deck.slides.push_back(imageSlide(fakePng(3)));
    ASSERT_TRUE(DeckPackage::write(deck, path, path).ok());
    EXPECT_TRUE(fs::is_directory(path / "media"));
    EXPECT_EQ(DeckPackage::read(path)->slides[1].imageData, fakePng(3));
}

TEST_F(DeckPackageTest, SaveAsCarriesMembersAndLeavesTheOriginal) {
    Deck opened = saveAndOpen(deckOf({imageSlide(fakePng(4))}), dir / "A.lectern");
    writeText(dir / "A.lectern" / "Keep.txt", "k");
    opened.title = "Copy";
    ASSERT_TRUE(DeckPackage::write(opened, dir / "B.lectern", dir / "A.lectern").ok());
    EXPECT_EQ(readText(dir / "B.lectern" / "Keep.txt"), "k");
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Copy");
    EXPECT_FALSE(DeckPackage::read(dir / "A.lectern")->title);
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->slides[0].imageData, fakePng(4));

    // Written with a trailing slash, or through a link to it, the package is still replaced in place.
    opened.title = "Slash";
    ASSERT_TRUE(DeckPackage::write(opened, (dir / "B.lectern").string() + "/", dir / "B.lectern").ok());
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Slash");
    fs::create_directory_symlink("B.lectern", dir / "Link.lectern");
    opened.title = "Linked";
    ASSERT_TRUE(DeckPackage::write(opened, dir / "Link.lectern", dir / "Link.lectern").ok());
    EXPECT_TRUE(fs::is_symlink(dir / "Link.lectern"));
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Linked");

    // A save that fails leaves nothing behind.
    auto failed = DeckPackage::write(opened, dir / "missing-folder" / "X.lectern", std::nullopt);
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(failed.error().kind, ErrorKind::fileWrite);
    EXPECT_EQ(listFolder(dir.path()), (std::vector<std::string>{"A.lectern", "B.lectern", "Link.lectern"}));
}

TEST_F(DeckPackageTest, BodiesLoseLeadingAndTrailingBlankLines) {
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    Slide padded = Slide::make(SlideLayout::regular);
    padded.body.append("\n \t\n");
    padded.body.append("Only line", bold);
    padded.body.append("\n\n  \n");
    Slide inner = Slide::make(SlideLayout::regular);
    inner.body = AttributedText("First\n\n\nLast");
    Slide blanks = Slide::make(SlideLayout::regular);
    blanks.body = AttributedText(" \n\t\n");
    Deck opened = saveAndOpen(deckOf({padded, inner, blanks}), path);
    ASSERT_EQ(opened.slides.size(), 3u);
    EXPECT_EQ(opened.slides[0].body, AttributedText("Only line", bold));
    EXPECT_EQ(opened.slides[1].body, inner.body);  // blank lines inside stay
    EXPECT_TRUE(opened.slides[2].body.empty());
}

TEST_F(DeckPackageTest, EncodeForSavingMatchesWhatIsWritten) {
    Deck opened = saveAndOpen(deckOf({imageSlide(fakePng(5)), Slide::make(SlideLayout::web)}), path);
    EXPECT_EQ(DeckPackage::encodeForSaving(opened, path), readText(path / "deck.json"));
    // A new picture gets its hash name in the preview of the save as well.
    opened.slides[1] = imageSlide(fakeJpeg(6));
    json planned = json::parse(DeckPackage::encodeForSaving(opened, path));
    EXPECT_EQ(planned["slides"][1]["imageFile"], DeckPackage::mediaName(fakeJpeg(6).span()));
    EXPECT_FALSE(fs::exists(path / "media" / planned["slides"][1]["imageFile"].get<std::string>()));
}

}  // namespace
}  // namespace lectern
