#include "bench_decks.h"

#include <stdlib.h>

#include <array>
#include <string_view>
#include <system_error>
#include <vector>

namespace lectern::bench {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 48> words{
    "latency",  "request", "cache",    "deploy",  "rollout",  "metrics", "service",  "queue",
    "replica",  "budget",  "incident", "review",  "schema",   "client",  "gateway",  "token",
    "session",  "browser", "render",   "layout",  "payload",  "header",  "retry",    "timeout",
    "backlog",  "release", "feature",  "flag",    "customer", "signal",  "baseline", "window",
    "throughput", "error", "storage",  "index",   "partition", "shard",  "consumer", "producer",
    "pipeline", "build",   "artifact", "runtime", "profile",  "trace",   "span",     "alert",
};

constexpr std::array<std::string_view, 6> hosts{
    "https://status.example.com/dashboard",   "https://grafana.example.org/d/overview?orgId=1",
    "https://docs.example.net/guide/getting-started", "http://localhost:8080/admin",
    "https://app.example.com/projects/42/board",      "https://example.com/search?q=release+notes",
};

constexpr std::array<std::string_view, 5> colors{"#D94F30", "#2E7D32", "#1565C0", "#6A1B9A", "#F9A825"};

std::string sentence(Random& random, std::size_t minWords, std::size_t maxWords, bool capitalized = true) {
    std::size_t count = minWords + random.below(maxWords - minWords + 1);
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        if (i) out += ' ';
        out += words[random.below(words.size())];
    }
    if (capitalized && !out.empty()) out[0] = static_cast<char>(out[0] - 'a' + 'A');
    return out;
}

Uuid makeId(Random& random) {
    // Version 4 layout, drawn from the generator so the deck is reproducible.
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (int i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20) text += '-';
        std::size_t digit = random.below(16);
        if (i == 12) digit = 4;
        if (i == 16) digit = 8 + (digit & 3);
        text += digits[digit];
    }
    return *Uuid::parse(text);
}

std::string mediaLikeName(Random& random) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string name;
    for (int i = 0; i < 64; ++i) name += digits[random.below(16)];
    return name + (random.chance(70) ? ".png" : ".jpg");
}

AttributedText makeBody(Random& random) {
    AttributedText body;
    std::size_t paragraphs = 2 + random.below(3);
    for (std::size_t p = 0; p < paragraphs; ++p) {
        if (p) body.append("\n");
        if (random.chance(15)) {
            SlideBodyAttributes command;
            command.block = SlideBodyBlockKind::command;
            body.append("$ curl -s https://api.example.com/v1/" + std::string(words[random.below(words.size())]) +
                            " | jq '.items[] | .name'",
                        command);
            continue;
        }
        SlideBodyAttributes base;
        if (random.chance(20)) base.alignment = SlideBodyAlignment::center;
        body.append(sentence(random, 3, 8) + " ", base);
        SlideBodyAttributes strong = base;
        strong.inlineIntent = inline_intent::stronglyEmphasized;
        body.append(sentence(random, 1, 3, false), strong);
        body.append(", then ", base);
        SlideBodyAttributes accent = base;
        if (random.chance(50)) {
            accent.foregroundColor = std::string(colors[random.below(colors.size())]);
        } else {
            accent.inlineIntent = inline_intent::emphasized;
        }
        body.append(sentence(random, 2, 4, false), accent);
        if (random.chance(40)) {
            SlideBodyAttributes code = base;
            code.inlineIntent = inline_intent::code;
            body.append(" with ", base);
            body.append(std::string(words[random.below(words.size())]) + "()", code);
        }
        body.append(".", base);
    }
    return body;
}

std::string makeNotes(Random& random) {
    std::string notes;
    std::size_t sentences = 2 + random.below(4);
    for (std::size_t i = 0; i < sentences; ++i) {
        if (i) notes += ' ';
        notes += sentence(random, 6, 16) + '.';
    }
    return notes;
}

SlideAction makeAction(Random& random, std::size_t index) {
    SlideAction action;
    action.id = makeId(random);
    if (random.chance(60)) {
        action.name = "Create " + std::string(words[random.below(words.size())]);
        action.kindCase = SlideActionKindCase::apiRequest;
        action.request.method = random.chance(50) ? "POST" : "GET";
        action.request.urlString = "https://api.example.com/v1/items/" + std::to_string(index);
        HTTPHeaderField contentType;
        contentType.id = makeId(random);
        contentType.name = "Content-Type";
        contentType.value = "application/json";
        HTTPHeaderField authorization;
        authorization.id = makeId(random);
        authorization.name = "Authorization";
        authorization.value = "Bearer demo-token-" + std::to_string(random.next() % 100000);
        action.request.headers = {contentType, authorization};
        action.request.body = R"({"name": ")" + sentence(random, 1, 3) + R"(", "count": 3})";
        action.request.useProfileCookies = random.chance(30);
        action.reloadsLiveView = true;
    } else {
        action.name = "Highlight " + std::string(words[random.below(words.size())]);
        action.kindCase = SlideActionKindCase::pageScript;
        action.script = "document.querySelectorAll('.card').forEach(c => c.classList.add('highlight'));";
    }
    if (random.chance(20)) {
        action.autoRun = true;
        action.autoRunDelaySeconds = 1.5;
    }
    if (random.chance(10)) {
        action.repeats = true;
        action.repeatIntervalSeconds = 10;
        action.repeatMaxRuns = 6;
    }
    return action;
}

}  // namespace

std::uint64_t Random::next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

Deck makeTalkDeck(std::size_t slideCount, std::uint64_t salt) {
    Random random(salt);
    Deck deck;
    deck.id = makeId(random);
    deck.title = "Quarterly engineering review";
    deck.theme = Theme::editorial;
    deck.accentHex = "#3B5A7A";
    deck.palette.setSwatch(0, "#D94F30");
    deck.palette.setSwatch(1, "#2E7D32");
    deck.targetMinutes = 45;
    for (const char* name : {"Demo account", "Admin"}) {
        BrowserProfile profile;
        profile.id = makeId(random);
        profile.name = name;
        deck.browserProfiles.push_back(profile);
    }

    deck.slides.reserve(slideCount);
    std::optional<Uuid> section;
    std::vector<std::size_t> decisionSlides;
    for (std::size_t i = 0; i < slideCount; ++i) {
        Slide slide;
        slide.id = makeId(random);
        slide.notes = makeNotes(random);
        if (i % 12 == 0) {
            slide.isSection = true;
            slide.sectionTitle = "Part of the talk " + std::to_string(i / 12 + 1);
            slide.title = sentence(random, 2, 5);
            slide.subtitle = sentence(random, 4, 8);
            section = slide.id;
            deck.slides.push_back(std::move(slide));
            continue;
        }
        slide.sectionId = section;
        slide.eyebrow = std::string(words[random.below(words.size())]);
        slide.title = sentence(random, 3, 7);
        std::size_t kind = random.below(100);
        if (kind < 50) {
            slide.layout = SlideLayout::regular;
            if (random.chance(40)) slide.subtitle = sentence(random, 4, 9);
            slide.body = makeBody(random);
            if (random.chance(25)) {
                slide.reveal = RevealMode::reveal;
                slide.revealPlan = std::vector<std::vector<std::int64_t>>{{0}, {1, 2}};
            }
        } else if (kind < 62) {
            slide.layout = SlideLayout::callout;
            slide.body = makeBody(random);
            if (random.chance(30)) slide.accentHex = std::string(colors[random.below(colors.size())]);
        } else if (kind < 84) {
            slide.layout = SlideLayout::web;
            slide.position = static_cast<SlidePosition>(random.below(4));
            slide.url = std::string(hosts[random.below(hosts.size())]);
            slide.webZoom = random.chance(30) ? 1.25 : 1.0;
            if (random.chance(50)) slide.browserProfileId = deck.browserProfiles[random.below(2)].id;
            if (slide.position != SlidePosition::full) slide.body = makeBody(random);
            if (random.chance(45)) {
                std::size_t count = 1 + random.below(3);
                for (std::size_t a = 0; a < count; ++a) slide.actions.push_back(makeAction(random, i));
            }
        } else if (kind < 94) {
            slide.layout = SlideLayout::decisions;
            slide.showLinkSubtitles = random.chance(50);
            std::size_t count = 2 + random.below(3);
            for (std::size_t l = 0; l < count; ++l) {
                SlideLink link;
                link.id = makeId(random);
                link.label = sentence(random, 1, 3);
                link.subtitle = sentence(random, 3, 6);
                link.filled = random.chance(50);
                if (random.chance(40)) link.fillHex = std::string(colors[random.below(colors.size())]);
                slide.links.push_back(std::move(link));
            }
            decisionSlides.push_back(i);
        } else {
            slide.layout = SlideLayout::image;
            slide.position = random.chance(50) ? SlidePosition::full : SlidePosition::left;
            slide.imageFile = mediaLikeName(random);
            slide.imageName = "diagram-" + std::to_string(i) + ".png";
            slide.imageFill = random.chance(50);
        }
        if (random.chance(5)) slide.isSkipped = true;
        deck.slides.push_back(std::move(slide));
    }
    // Link cards jump to other slides of the deck.
    for (std::size_t index : decisionSlides) {
        for (auto& link : deck.slides[index].links) {
            link.targetId = deck.slides[random.below(deck.slides.size())].id.string();
        }
    }
    return deck;
}

SharedBytes makeImageBytes(std::size_t size, std::uint64_t salt) {
    static constexpr std::uint8_t signature[] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    std::vector<std::uint8_t> bytes(size);
    Random random(salt);
    std::size_t at = 0;
    for (; at + 8 <= size; at += 8) {
        std::uint64_t word = random.next();
        for (int b = 0; b < 8; ++b) bytes[at + static_cast<std::size_t>(b)] = static_cast<std::uint8_t>(word >> (8 * b));
    }
    for (std::uint64_t word = random.next(); at < size; ++at, word >>= 8) bytes[at] = static_cast<std::uint8_t>(word);
    for (std::size_t i = 0; i < sizeof signature && i < size; ++i) bytes[i] = signature[i];
    return SharedBytes(std::move(bytes));
}

TempFolder::TempFolder(const std::string& prefix) {
    std::string pattern = (fs::temp_directory_path() / (prefix + "XXXXXX")).string();
    if (::mkdtemp(pattern.data())) path_ = pattern;
}

TempFolder::~TempFolder() {
    if (path_.empty()) return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

}  // namespace lectern::bench
