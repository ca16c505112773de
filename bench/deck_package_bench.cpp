// Opening, saving and copying a deck whose package holds 200 slides with 200
// distinct 1 MiB images (200 MiB of media).

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <string>

#include "bench_decks.h"
#include "model/deck_json.h"
#include "model/deck_package.h"
#include "model/file_io.h"

namespace lectern::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t slideCount = 200;
constexpr std::size_t imageSize = std::size_t{1} << 20;

// The package is built once per process, on first use, and removed at exit
// together with its temporary folder.
struct PackageFixture {
    TempFolder folder{"lectern-bench-"};
    fs::path package;
    Deck deck;  // as opened from the package: every slide holds its image bytes
    std::string error;

    PackageFixture() {
        if (!folder.ok()) {
            error = "could not create a temporary folder";
            return;
        }
        package = folder.path() / "Talk.lectern";
        {
            Deck generated = makeTalkDeck(slideCount, 20261121);
            for (std::size_t i = 0; i < generated.slides.size(); ++i) {
                Slide& slide = generated.slides[i];
                slide.imageData = makeImageBytes(imageSize, 1000 + i);
                slide.imageFile.reset();
                slide.imageName = "photo-" + std::to_string(i) + ".png";
            }
            if (auto status = DeckPackage::write(generated, package, std::nullopt); !status) {
                error = "building the package failed: " + status.error().message;
                return;
            }
        }
        auto opened = DeckPackage::read(package);
        if (!opened) {
            error = "opening the built package failed: " + opened.error().message;
            return;
        }
        deck = std::move(opened).value();
        for (const auto& slide : deck.slides) {
            if (!slide.imageData || slide.imageData->size() != imageSize || !slide.imageFile) {
                error = "the built package lost an image";
                return;
            }
        }
        if (deck.slides.size() != slideCount || DeckPackage::heldMedia(package).size() != slideCount) {
            error = "the built package does not hold 200 slides with 200 images";
        }
    }
};

const PackageFixture& fixture() {
    static const PackageFixture shared;
    return shared;
}

// True when the fixture is usable; otherwise marks the benchmark as failed.
bool ready(benchmark::State& state) {
    const auto& f = fixture();
    if (!f.error.empty()) {
        state.SkipWithError(f.error.c_str());
        return false;
    }
    return true;
}

// Inode of every file in the package's media/, by name.
std::map<std::string, ino_t> mediaInodes(const fs::path& package) {
    std::map<std::string, ino_t> inodes;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(package / DeckPackage::mediaMember, ec)) {
        struct stat info{};
        if (::lstat(entry.path().c_str(), &info) == 0) inodes[entry.path().filename().string()] = info.st_ino;
    }
    return inodes;
}

// Asks the kernel to drop the package's cached pages, so the next read comes
// from the disk (or the host's cache, on a virtual machine).
void evictFromPageCache(const fs::path& package) {
    std::error_code ec;
    for (const auto& entry : fs::recursive_directory_iterator(package, ec)) {
        if (!entry.is_regular_file(ec)) continue;
        int fd = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) continue;
        ::fdatasync(fd);
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

void reportMedia(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * slideCount * imageSize));
    state.counters["images"] = static_cast<double>(slideCount);
}

// Opening with the files in the page cache: the usual case of a deck that
// was just saved, or opened before.
void BM_OpenPackage200Images(benchmark::State& state) {
    if (!ready(state)) return;
    const auto& f = fixture();
    for (auto _ : state) {
        auto opened = DeckPackage::read(f.package);
        if (!opened) {
            state.SkipWithError(("opening failed: " + opened.error().message).c_str());
            break;
        }
        benchmark::DoNotOptimize(opened);
    }
    reportMedia(state);
}
BENCHMARK(BM_OpenPackage200Images)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// The same with the package's pages dropped from the page cache first.
void BM_OpenPackage200ImagesUncached(benchmark::State& state) {
    if (!ready(state)) return;
    const auto& f = fixture();
    for (auto _ : state) {
        state.PauseTiming();
        evictFromPageCache(f.package);
        state.ResumeTiming();
        auto opened = DeckPackage::read(f.package);
        if (!opened) {
            state.SkipWithError(("opening failed: " + opened.error().message).c_str());
            break;
        }
        benchmark::DoNotOptimize(opened);
    }
    reportMedia(state);
}
BENCHMARK(BM_OpenPackage200ImagesUncached)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// Saving over the package it was opened from after one title changed: the
// images are unchanged, so they are hard-linked into the new package and no
// media byte is written.
void BM_SavePackageAfterTitleEdit(benchmark::State& state) {
    if (!ready(state)) return;
    const auto& f = fixture();
    Deck deck = f.deck;  // shares the image bytes
    const auto before = mediaInodes(f.package);
    std::string title;
    std::int64_t saves = 0;
    for (auto _ : state) {
        title = "Edited title " + std::to_string(saves++);
        deck.slides[1].title = title;
        if (auto status = DeckPackage::write(deck, f.package, f.package); !status) {
            state.SkipWithError(("saving failed: " + status.error().message).c_str());
            break;
        }
    }
    if (state.error_occurred()) return;

    // Outside the timed loop: the media files must be the very same files.
    const auto after = mediaInodes(f.package);
    std::size_t rewritten = 0;
    for (const auto& [name, inode] : before) {
        auto it = after.find(name);
        if (it == after.end() || it->second != inode) ++rewritten;
    }
    rewritten += after.size() > before.size() ? after.size() - before.size() : 0;
    state.counters["media_files"] = static_cast<double>(after.size());
    state.counters["media_rewritten"] = static_cast<double>(rewritten);
    if (before.size() != slideCount || after.size() != slideCount) {
        state.SkipWithError("media/ does not hold one file per image");
        return;
    }
    if (rewritten != 0) {
        state.SkipWithError("saving rewrote media files that did not change");
        return;
    }
    auto json = readRegularFile(f.package / DeckPackage::deckMember, DeckPackage::deckSizeLimit);
    auto saved = json ? DeckJson::decode(std::string_view(reinterpret_cast<const char*>(json->data()), json->size()))
                      : Result<Deck>(Error{"no deck.json"});
    if (!saved || saved->slides.size() != slideCount || saved->slides[1].title != title) {
        state.SkipWithError("the saved deck.json does not hold the edited title");
    }
}
BENCHMARK(BM_SavePackageAfterTitleEdit)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

// Undo keeps whole copies of the deck; the image bytes must be shared, not
// copied.
void BM_CopyDeck200Images(benchmark::State& state) {
    if (!ready(state)) return;
    const auto& f = fixture();
    {
        Deck copy = f.deck;
        std::size_t copied = 0;
        for (std::size_t i = 0; i < copy.slides.size(); ++i) {
            if (!copy.slides[i].imageData->sharesBufferWith(*f.deck.slides[i].imageData)) ++copied;
        }
        state.counters["images_copied"] = static_cast<double>(copied);
        if (copied != 0) {
            state.SkipWithError("copying the deck copied image bytes");
            return;
        }
    }
    for (auto _ : state) {
        Deck copy = f.deck;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(BM_CopyDeck200Images)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

}  // namespace
}  // namespace lectern::bench

BENCHMARK_MAIN();
