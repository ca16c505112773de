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

TEST(DeckPackageMedia, NamesComeFromTheBytes) {
    auto png = fakePng(1);
    auto jpeg = fakeJpeg(1);
    EXPECT_EQ(DeckPackage::mediaName(png.span()), sha256Hex(png.view()) + ".png");
    EXPECT_EQ(DeckPackage::mediaName(jpeg.span()), sha256Hex(jpeg.view()) + ".jpg");
    EXPECT_EQ(sha256Hex(std::string_view("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

    std::string hash(64, 'a');
    EXPECT_TRUE(DeckPackage::isValidMediaName(hash + ".png"));
    EXPECT_TRUE(DeckPackage::isValidMediaName(hash + ".jpg"));
    for (std::string bad : {hash + ".gif", hash.substr(1) + ".png", hash + "a.png", std::string(64, 'A') + ".png",
                            hash + ".png.png", "../" + hash.substr(3) + ".png", hash, std::string("x.png"),
                            std::string(63, 'a') + "g.png"}) {
        EXPECT_FALSE(DeckPackage::isValidMediaName(bad)) << bad;
    }
}

TEST(DeckPackageRead, FailuresSayWhy) {
    TempDir dir;
    auto missing = DeckPackage::read(dir / "Nowhere.lectern");
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error().kind, ErrorKind::fileReadNoSuchFile);

    writeText(dir / "Plain.lectern", "{}");
    auto plain = DeckPackage::read(dir / "Plain.lectern");
    ASSERT_FALSE(plain.ok());
    EXPECT_EQ(plain.error().kind, ErrorKind::fileReadCorruptFile);
    EXPECT_EQ(plain.error().message,
              "The file \u201CPlain.lectern\u201D couldn\u2019t be opened because it isn\u2019t in the correct format.");

    fs::create_directories(dir / "Empty.lectern");
    EXPECT_EQ(DeckPackage::read(dir / "Empty.lectern").error().kind, ErrorKind::fileReadNoSuchFile);
    fs::create_directories(dir / "Folder.lectern" / "deck.json");
    EXPECT_EQ(DeckPackage::read(dir / "Folder.lectern").error().kind, ErrorKind::fileReadNoSuchFile);

    makePackage(dir / "Bad.lectern", {{"id", "nope"}, {"slides", json::array()}});
    auto bad = DeckPackage::read(dir / "Bad.lectern");
    ASSERT_FALSE(bad.ok());
    EXPECT_EQ(bad.error().kind, ErrorKind::decoding);
    EXPECT_EQ(bad.error().message, "id: not a UUID");
}

TEST(DeckPackageRead, ImagesLoadOnlyFromValidNamesInMedia) {
    TempDir dir;
    auto png = fakePng(7);
    std::string good = DeckPackage::mediaName(png.span());
    fs::create_directories(dir / "secret");
    writeText(dir / "secret" / "x.png", "outside the package");
    fs::create_directories(dir / "D.lectern" / "media");
    fs::create_symlink(dir / "secret" / "x.png", dir / "D.lectern" / "media" / (std::string(64, 'b') + ".png"));

    json slides = json::array();
    auto slideWithFile = [&](int n, const std::string& file) {
        char id[37];
        std::snprintf(id, sizeof id, "00000000-0000-4000-8000-%012d", n);
        slides.push_back({{"id", id}, {"imageFile", file}, {"imageName", "Shown.png"}});
    };
    slideWithFile(1, good);
    slideWithFile(2, "../secret/x.png");
    slideWithFile(3, std::string(63, 'c') + ".png");
    slideWithFile(4, std::string(64, 'd') + ".png");  // valid, but no such file
    slideWithFile(5, std::string(64, 'b') + ".png");  // a link, not a file
    makePackage(dir / "D.lectern", {{"id", deckId}, {"schemaVersion", 3}, {"slides", slides}}, {png});

    auto deck = DeckPackage::read(dir / "D.lectern");
    ASSERT_TRUE(deck.ok()) << deck.error().message;
    EXPECT_EQ(deck->slides[0].imageData, png);
    EXPECT_EQ(deck->slides[0].imageFile, good);
    for (std::size_t i = 1; i < 5; ++i) {
        EXPECT_FALSE(deck->slides[i].imageData) << i;
        EXPECT_FALSE(deck->slides[i].imageFile) << i;
        EXPECT_EQ(deck->slides[i].imageName, "Shown.png");  // the name the user gave stays
    }
}

// A pipe would block the open until a writer came, and a huge sparse file
// would be allocated whole: both are refused at once, on this thread.
TEST(DeckPackageRead, PipesAndOversizedMembersAreRefusedAtOnce) {
    TempDir dir;
    auto sparse = [](const fs::path& path, std::uint64_t size) {
        writeText(path, "");
        fs::resize_file(path, size);  // a hole: no disk is used
    };
    fs::create_directories(dir / "Pipe.lectern");
    ASSERT_EQ(::mkfifo((dir / "Pipe.lectern" / "deck.json").c_str(), 0644), 0);
    EXPECT_EQ(DeckPackage::read(dir / "Pipe.lectern").error().kind, ErrorKind::fileReadNoSuchFile);
    fs::create_directories(dir / "Huge.lectern");
    sparse(dir / "Huge.lectern" / "deck.json", std::uint64_t{64} << 30);
    EXPECT_EQ(DeckPackage::read(dir / "Huge.lectern").error().message, "deck.json is larger than 256 MiB");

    // An image that is a pipe or one byte too large: its slide has no picture.
    std::string name = DeckPackage::mediaName(fakePng(2).span());
    json deck = {{"id", deckId}, {"slides", {{{"id", "00000000-0000-4000-8000-000000000001"}, {"imageFile", name}}}}};
    makePackage(dir / "PipeImage.lectern", deck);
    ASSERT_EQ(::mkfifo((dir / "PipeImage.lectern" / "media" / name).c_str(), 0644), 0);
    makePackage(dir / "HugeImage.lectern", deck);
    sparse(dir / "HugeImage.lectern" / "media" / name, DeckPackage::mediaSizeLimit + 1);
    for (const char* package : {"PipeImage.lectern", "HugeImage.lectern"}) {
        auto read = DeckPackage::read(dir / package);
        ASSERT_TRUE(read.ok()) << package << ": " << read.error().message;
        EXPECT_FALSE(read->slides[0].imageData) << package;
        EXPECT_FALSE(read->slides[0].imageFile) << package;
    }
}

TEST(DeckPackageRead, OldSchemaIsReadAsCurrent) {
    TempDir dir;
    json body = {"Hello ", {{"NSFont", {{"size", 30}}}, {"NSInlinePresentationIntent", 2}}, "there", json::object()};
    makePackage(dir / "Old.lectern",
                {{"id", deckId}, {"slides", {{{"id", "00000000-0000-4000-8000-000000000001"}, {"body", body}}}}});
    auto deck = DeckPackage::read(dir / "Old.lectern");
    ASSERT_TRUE(deck.ok());
    EXPECT_EQ(deck->schemaVersion, 3);
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    EXPECT_EQ(deck->slides[0].body, AttributedText::fromRuns({{"Hello ", bold}, {"there", {}}}));

    ASSERT_TRUE(DeckPackage::write(*deck, dir / "Old.lectern", dir / "Old.lectern").ok());
    EXPECT_EQ(json::parse(readText(dir / "Old.lectern" / "deck.json"))["schemaVersion"], 3);
}

TEST(DeckPackageWrite, SharedPicturesOneFileAndUnusedOnesGo) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    auto shared = fakePng(1);
    auto other = fakeJpeg(2);
    Deck deck;
    deck.slides = {imageSlide(shared, "A"), imageSlide(SharedBytes(std::vector<std::uint8_t>(shared.span().begin(),
                                                                                             shared.span().end())),
                                                       "B"),
                   imageSlide(other, "C")};
    ASSERT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    std::string sharedName = DeckPackage::mediaName(shared.span());
    std::string otherName = DeckPackage::mediaName(other.span());
    EXPECT_EQ(listFolder(path / "media"), (std::vector<std::string>{std::min(sharedName, otherName),
                                                                    std::max(sharedName, otherName)}));
    EXPECT_EQ(listFolder(path), (std::vector<std::string>{"QuickLook", "deck.json", "media"}));

    json stored = json::parse(readText(path / "deck.json"));
    EXPECT_EQ(stored["slides"][0]["imageFile"], sharedName);
    EXPECT_EQ(stored["slides"][1]["imageFile"], sharedName);
    EXPECT_FALSE(stored["slides"][0].contains("imageData"));

    auto reopened = DeckPackage::read(path);
    ASSERT_TRUE(reopened.ok());
    EXPECT_EQ(reopened->slides[2].imageData, other);

    // A file a person put into media/ under another name stays; the picture
    // nobody shows any more goes.
    writeText(path / "media" / "notes.txt", "mine");
    writeText(path / "media" / (std::string(64, 'e') + ".png"), "orphan");
    Deck edited = *reopened;
    edited.slides.erase(edited.slides.begin() + 2);
    ASSERT_TRUE(DeckPackage::write(edited, path, path).ok());
    EXPECT_EQ(listFolder(path / "media"), (std::vector<std::string>{sharedName, "notes.txt"}));
}

TEST(DeckPackageWrite, UnchangedImagesAreNeverRewritten) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    Deck deck;
    deck.slides = {imageSlide(fakePng(1)), imageSlide(fakePng(2))};
    ASSERT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    auto opened = DeckPackage::read(path);
    ASSERT_TRUE(opened.ok());
    std::string first = *opened->slides[0].imageFile;
    ino_t before = inodeOf(path / "media" / first);

    opened->slides[1].title = "Changed";
    ASSERT_TRUE(DeckPackage::write(*opened, path, path).ok());
    EXPECT_EQ(inodeOf(path / "media" / first), before);

    // An image kept under an older valid name keeps that name.
    std::string older = std::string(64, 'f') + ".png";
    fs::rename(path / "media" / first, path / "media" / older);
    opened->slides[0].imageFile = older;
    ASSERT_TRUE(DeckPackage::write(*opened, path, path).ok());
    EXPECT_TRUE(fs::exists(path / "media" / older));
    EXPECT_FALSE(fs::exists(path / "media" / first));
}

TEST(DeckPackageWrite, MembersNobodyKnowsAreKeptAndPreviewsReplaced) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    Deck deck;
    deck.slides = {Slide::make(SlideLayout::regular)};
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
    Deck withImage = deck;
    withImage.slides.push_back(imageSlide(fakePng(3)));
    ASSERT_TRUE(DeckPackage::write(withImage, path, path).ok());
    EXPECT_TRUE(fs::is_directory(path / "media"));
    EXPECT_EQ(DeckPackage::read(path)->slides[1].imageData, fakePng(3));
}

TEST(DeckPackageWrite, SaveAsCarriesMembersAndLeavesTheOriginal) {
    TempDir dir;
    Deck deck;
    deck.slides = {imageSlide(fakePng(4))};
    ASSERT_TRUE(DeckPackage::write(deck, dir / "A.lectern", std::nullopt).ok());
    writeText(dir / "A.lectern" / "Keep.txt", "k");
    auto opened = DeckPackage::read(dir / "A.lectern");
    opened->title = "Copy";
    ASSERT_TRUE(DeckPackage::write(*opened, dir / "B.lectern", dir / "A.lectern").ok());
    EXPECT_EQ(readText(dir / "B.lectern" / "Keep.txt"), "k");
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Copy");
    EXPECT_FALSE(DeckPackage::read(dir / "A.lectern")->title);
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->slides[0].imageData, fakePng(4));

    // Written with a trailing slash, or through a link to it, the package is
    // still replaced in place.
    opened->title = "Slash";
    ASSERT_TRUE(DeckPackage::write(*opened, (dir / "B.lectern").string() + "/", dir / "B.lectern").ok());
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Slash");
    fs::create_directory_symlink("B.lectern", dir / "Link.lectern");
    opened->title = "Linked";
    ASSERT_TRUE(DeckPackage::write(*opened, dir / "Link.lectern", dir / "Link.lectern").ok());
    EXPECT_TRUE(fs::is_symlink(dir / "Link.lectern"));
    EXPECT_EQ(DeckPackage::read(dir / "B.lectern")->title, "Linked");
    EXPECT_EQ(listFolder(dir.path()), (std::vector<std::string>{"A.lectern", "B.lectern", "Link.lectern"}));
}

TEST(DeckPackageWrite, AFailedSaveLeavesNothingBehind) {
    TempDir dir;
    Deck deck;
    auto status = DeckPackage::write(deck, dir / "missing-folder" / "X.lectern", std::nullopt);
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error().kind, ErrorKind::fileWrite);
    EXPECT_EQ(listFolder(dir.path()), std::vector<std::string>{});
}

TEST(DeckPackageWrite, BodiesLoseLeadingAndTrailingBlankLines) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    Deck deck;
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
    deck.slides = {padded, inner, blanks};
    ASSERT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    auto opened = DeckPackage::read(path);
    ASSERT_TRUE(opened.ok());
    EXPECT_EQ(opened->slides[0].body, AttributedText("Only line", bold));
    EXPECT_EQ(opened->slides[1].body, inner.body);  // blank lines inside stay
    EXPECT_TRUE(opened->slides[2].body.empty());
}

TEST(DeckPackageWrite, EncodeForSavingMatchesWhatIsWritten) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    Deck deck;
    deck.slides = {imageSlide(fakePng(5)), Slide::make(SlideLayout::web)};
    ASSERT_TRUE(DeckPackage::write(deck, path, std::nullopt).ok());
    auto opened = DeckPackage::read(path);
    ASSERT_TRUE(opened.ok());
    EXPECT_EQ(DeckPackage::encodeForSaving(*opened, path), readText(path / "deck.json"));
    // A new picture gets its hash name in the preview of the save as well.
    opened->slides[1] = imageSlide(fakeJpeg(6));
    json planned = json::parse(DeckPackage::encodeForSaving(*opened, path));
    EXPECT_EQ(planned["slides"][1]["imageFile"], DeckPackage::mediaName(fakeJpeg(6).span()));
    EXPECT_FALSE(fs::exists(path / "media" / planned["slides"][1]["imageFile"].get<std::string>()));
}

}  // namespace
}  // namespace lectern
