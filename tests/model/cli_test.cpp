// Runs the real lectern-cli binary on packages made in a temporary folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "model/deck_json.h"
#include "model/deck_package.h"
#include "support/deck_fixtures.h"
#include "support/pdf_pages.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::fakePng;
using testing::imageSlide;
using testing::listFolder;
using testing::readText;
using testing::TempDir;
using testing::writeText;

struct CliRun {
    int status = -1;
    std::string out;
    std::string err;
};

CliRun runCli(const std::vector<std::string>& arguments, const fs::path& workingFolder = {}) {
    TempDir capture;
    fs::path outFile = capture / "out";
    fs::path errFile = capture / "err";
    pid_t child = ::fork();
    if (child == 0) {
        std::vector<char*> argv{const_cast<char*>(LECTERN_CLI_PATH)};
        for (const auto& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        if (!std::freopen(outFile.c_str(), "w", stdout) || !std::freopen(errFile.c_str(), "w", stderr)) ::_exit(99);
        if (!workingFolder.empty() && ::chdir(workingFolder.c_str()) != 0) ::_exit(97);
        ::execv(LECTERN_CLI_PATH, argv.data());
        ::_exit(98);
    }
    CliRun run;
    int status = 0;
    ::waitpid(child, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = readText(outFile);
    run.err = readText(errFile);
    return run;
}

// Every file below the folder with its modification time, to show nothing changed.
std::map<std::string, fs::file_time_type> snapshot(const fs::path& folder) {
    std::map<std::string, fs::file_time_type> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        files[entry.path().string()] = fs::symlink_status(entry.path()).type() == fs::file_type::directory
                                           ? fs::file_time_type{}
                                           : entry.last_write_time();
    }
    return files;
}

TEST(LecternCliDump, PrintsWhatSavingWouldWriteAndTouchesNothing) {
    TempDir dir;
    fs::path path = dir / "Talk.lectern";
    fs::create_directories(path / "media");
    auto png = fakePng(9);
    // Inline image data and an old layout name: the dump shows the current form.
    json document = {{"id", "0F2D3C9A-1B4E-4A5F-9C8D-7E6F5A4B3C2D"},
                     {"slides",
                      {{{"id", "A1B2C3D4-E5F6-4789-ABCD-EF0123456789"},
                        {"layout", "webLeft"},
                        {"url", "https://example.com"},
                        {"imageData", DeckJson::toJson(imageSlide(png))["imageData"]}}}}};
    writeText(path / "deck.json", document.dump());
    auto before = snapshot(dir.path());

    CliRun run = runCli({"dump", path.string()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(snapshot(dir.path()), before);
    EXPECT_EQ(listFolder(path / "media"), std::vector<std::string>{});

    json dumped = json::parse(run.out);
    EXPECT_EQ(dumped["schemaVersion"], 3);
    EXPECT_EQ(dumped["slides"][0]["layout"], "web");
    EXPECT_EQ(dumped["slides"][0]["position"], "left");
    EXPECT_EQ(dumped["slides"][0]["imageFile"], DeckPackage::mediaName(png.span()));
    EXPECT_FALSE(dumped["slides"][0].contains("imageData"));

    // Saving writes exactly what the dump showed.
    ASSERT_TRUE(DeckPackage::write(*DeckPackage::read(path), path, path).ok());
    EXPECT_EQ(readText(path / "deck.json"), run.out);
}

TEST(LecternCliDump, DecksThatDoNotOpenPrintOneLineAndExitWithTwo) {
    TempDir dir;
    writeText(dir / "File.lectern", "{}");
    fs::create_directories(dir / "Broken.lectern");
    writeText(dir / "Broken.lectern" / "deck.json", R"({"id": "A1B2C3D4-E5F6-4789-ABCD-EF0123456789", "slides": [{"id": 5}]})");
    fs::create_directories(dir / "Empty.lectern");
    fs::create_directories(dir / "Pipe.lectern");
    ASSERT_EQ(::mkfifo((dir / "Pipe.lectern" / "deck.json").c_str(), 0644), 0);
    fs::create_directories(dir / "Huge.lectern");
    writeText(dir / "Huge.lectern" / "deck.json", "");
    fs::resize_file(dir / "Huge.lectern" / "deck.json", std::uint64_t{64} << 30);  // sparse: no disk is used

    for (const auto& [name, reason] : std::vector<std::pair<std::string, std::string>>{
             {"File.lectern", "isn\u2019t in the correct format"},
             {"Broken.lectern", "slides[0].id: not a UUID"},
             {"Empty.lectern", "deck.json"},
             {"Missing.lectern", "no such file"},
             {"Pipe.lectern", "no readable deck.json"},
             {"Huge.lectern", "deck.json is larger than 256 MiB"}}) {
        CliRun run = runCli({"dump", (dir / name).string()});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_EQ(run.out, "") << name;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_NE(run.err.find(name), std::string::npos) << run.err;
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
    }
    EXPECT_FALSE(fs::exists(dir / "Missing.lectern"));
    EXPECT_EQ(listFolder(dir / "Empty.lectern"), std::vector<std::string>{});

    CliRun outline = runCli({"outline", (dir / "Broken.lectern").string(), "--json"});
    EXPECT_EQ(outline.status, 2);
    EXPECT_EQ(outline.out, "");
    EXPECT_NE(outline.err.find("slides[0].id: not a UUID"), std::string::npos);

    CliRun usage = runCli({"dump"});
    EXPECT_EQ(usage.status, 2);
    EXPECT_NE(usage.err.find("Usage"), std::string::npos);
}

}  // namespace
}  // namespace lectern

namespace lectern {
namespace {

// The first deck a user sees opens, is stored in the current form, and shows
// every layout with working card routes and pictures.
TEST(WelcomeDeck, OpensCompleteAndInTheCurrentForm) {
    fs::path path = fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern";
    CliRun run = runCli({"dump", path.string()});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, readText(path / "deck.json"));

    auto deck = DeckPackage::read(path);
    ASSERT_TRUE(deck.ok());
    std::set<SlideLayout> layouts;
    bool reveals = false, picture = false, section = false, notes = false;
    for (const auto& slide : deck->slides) {
        layouts.insert(slide.layout);
        reveals |= slide.reveal == RevealMode::reveal;
        picture |= slide.imageData.has_value();
        section |= slide.isSection;
        notes |= !slide.notes.empty();
        for (const auto& link : slide.links) {
            auto target = Uuid::parse(link.targetId);
            EXPECT_TRUE(target && deck->indexOfSlide(*target)) << "card " << link.label << " leads nowhere";
        }
        if (slide.layout == SlideLayout::web) {
            EXPECT_TRUE(slide.url) << slide.title;
        }
    }
    EXPECT_EQ(layouts.size(), allCases<SlideLayout>().size());

    // The outline of the same deck, in both forms.
    CliRun text = runCli({"outline", path.string()});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("01  "), std::string::npos);
    CliRun outline = runCli({"outline", "--json", path.string()});
    ASSERT_EQ(outline.status, 0) << outline.err;
    EXPECT_EQ(json::parse(outline.out)["slides"].size(), deck->slides.size());

    // Every slide as a 960 x 540 page of a PDF.
    TempDir out;
    CliRun exported = runCli({"export", path.string(), (out / "Welcome.pdf").string()});
    ASSERT_EQ(exported.status, 0) << exported.err;
    std::string pdf = readText(out / "Welcome.pdf");
    std::size_t pages = 0;
    for (std::size_t at = pdf.find("/MediaBox [ 0 0 960 540 ]"); at != std::string::npos;
         at = pdf.find("/MediaBox [ 0 0 960 540 ]", at + 1)) {
        ++pages;
    }
    EXPECT_EQ(pages, deck->slides.size());
    CliRun missing = runCli({"export", (out / "Nothing.lectern").string(), (out / "x.pdf").string()});
    EXPECT_EQ(missing.status, 2);
    EXPECT_FALSE(fs::exists(out / "x.pdf"));
    EXPECT_TRUE(reveals && picture && section && notes);
}

TEST(LecternCliExport, ABareNameIsWrittenHereAndMissingFoldersAreNotMade) {
    fs::path deck = fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern";
    TempDir here;
    CliRun bare = runCli({"export", deck.string(), "Talk.pdf"}, here.path());
    EXPECT_EQ(bare.status, 0) << bare.err;
    EXPECT_EQ(bare.err, "");
    EXPECT_EQ(listFolder(here.path()), std::vector<std::string>{"Talk.pdf"});
    EXPECT_EQ(readText(here / "Talk.pdf").rfind("%PDF", 0), 0u);

    CliRun missing = runCli({"export", deck.string(), (here / "missing" / "folder" / "Talk.pdf").string()});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 1) << missing.err;
    EXPECT_NE(missing.err.find("No such file or directory"), std::string::npos) << missing.err;
    EXPECT_EQ(listFolder(here.path()), std::vector<std::string>{"Talk.pdf"});
}

// --notes may stand before or after the paths; the pages are the handout
// pages, with the notes read back from them.
TEST(LecternCliExport, NotesMakeHandoutPagesWhereverTheOptionStands) {
    fs::path package = fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern";
    auto deck = DeckPackage::read(package);
    ASSERT_TRUE(deck.ok());
    auto withNotes = std::find_if(deck->slides.begin(), deck->slides.end(),
                                  [](const Slide& slide) { return slide.notes.size() > 12; });
    ASSERT_NE(withNotes, deck->slides.end());
    std::string someNotes = withNotes->notes.substr(0, withNotes->notes.find_first_of("\n"));
    someNotes = someNotes.substr(0, someNotes.rfind(' ', 24));

    TempDir out;
    ASSERT_EQ(runCli({"export", "--notes", package.string(), (out / "a.pdf").string()}).status, 0);
    ASSERT_EQ(runCli({"export", package.string(), (out / "b.pdf").string(), "--notes"}).status, 0);
    auto before = testing::readPdf(out / "a.pdf"), after = testing::readPdf(out / "b.pdf");
    ASSERT_GE(before.size(), deck->slides.size());
    EXPECT_EQ(before.size(), after.size());
    EXPECT_LT(before[0].width, before[0].height) << "portrait handout pages";
    bool found = false;
    for (const auto& page : before) found = found || page.text.find(someNotes) != std::string::npos;
    EXPECT_TRUE(found) << someNotes;

    CliRun twice = runCli({"export", package.string(), (out / "c.pdf").string(), "--notes", "--notes"});
    EXPECT_EQ(twice.status, 2);
    EXPECT_FALSE(fs::exists(out / "c.pdf"));
}

}  // namespace
}  // namespace lectern
