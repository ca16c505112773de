#include "app/appcast.h"

#include <glib.h>
#include <glib/gi18n.h>

#include <cstring>
#include <optional>
#include <utility>

namespace lectern {
namespace {

// GMarkup knows nothing of namespaces, so names keep their prefixes; this
// resolves them against the xmlns declarations in scope.
struct Name {
    enum class Space { rss, appcast, other };  // rss: no prefix
    Space space = Space::rss;
    std::string local;

    bool rss(const char* name) const { return space == Space::rss && local == name; }
    bool appcast(const char* name) const { return space == Space::appcast && local == name; }
};

enum class Field { none, title, link, releaseNotesLink, version, shortVersion, channel };

struct Parser {
    // One entry per open element: the prefixes it declares.
    std::vector<std::vector<std::pair<std::string, std::string>>> scopes;
    std::vector<Name> open;
    bool sawChannel = false;
    std::optional<AppcastItem> item;
    std::string releaseNotesLink;  // the item's, used when it has no <link>
    Field field = Field::none;
    std::string text;
    std::vector<AppcastItem> items;
    std::optional<std::string> failure;

    Name resolve(const char* qualified) const {
        const char* colon = std::strchr(qualified, ':');
        if (!colon) return {Name::Space::rss, qualified};
        std::string prefix(qualified, colon);
        for (auto scope = scopes.rbegin(); scope != scopes.rend(); ++scope) {
            for (const auto& [declared, uri] : *scope) {
                if (declared == prefix) {
                    return {uri == appcastNamespace ? Name::Space::appcast : Name::Space::other, colon + 1};
                }
            }
        }
        return {Name::Space::other, qualified};  // an undeclared prefix matches nothing we read
    }

    // True when the open elements, innermost last, end in these plain names.
    bool inside(std::initializer_list<const char*> path) const {
        if (open.size() < path.size()) return false;
        auto it = open.end() - std::ptrdiff_t(path.size());
        for (const char* name : path) {
            if (!it->rss(name)) return false;
            ++it;
        }
        return true;
    }

    void start(const char* element, const char** names, const char** values) {
        auto& scope = scopes.emplace_back();
        for (int i = 0; names[i]; ++i) {
            if (std::strncmp(names[i], "xmlns:", 6) == 0) scope.emplace_back(names[i] + 6, values[i]);
        }
        Name name = resolve(element);
        field = Field::none;
        text.clear();

        if (open.empty() && !name.rss("rss")) failure = _("The feed isn’t an RSS document");
        if (name.rss("channel") && inside({"rss"})) sawChannel = true;
        if (name.rss("item") && inside({"rss", "channel"})) {
            item.emplace();
            releaseNotesLink.clear();
        } else if (item && inside({"rss", "channel", "item"})) {
            if (name.rss("enclosure")) readEnclosure(names, values);
            if (name.rss("title")) field = Field::title;
            if (name.rss("link")) field = Field::link;
            if (name.appcast("version")) field = Field::version;
            if (name.appcast("shortVersionString")) field = Field::shortVersion;
            if (name.appcast("releaseNotesLink")) field = Field::releaseNotesLink;
            if (name.appcast("channel")) field = Field::channel;
        }
        open.push_back(std::move(name));
    }

    void readEnclosure(const char** names, const char** values) {
        for (int i = 0; names[i]; ++i) {
            Name attribute = resolve(names[i]);
            if (attribute.rss("url")) item->enclosureUrl = values[i];
            // The elements, when present, win over the enclosure's attributes.
            if (attribute.appcast("version") && item->version.empty()) {
                item->version = values[i];
            }
            if (attribute.appcast("shortVersionString") && item->shortVersion.empty()) {
                item->shortVersion = values[i];
            }
        }
    }

    void end() {
        Name name = std::move(open.back());
        open.pop_back();
        scopes.pop_back();
        if (field != Field::none && item) {
            std::string value = strip(text);
            switch (field) {
            case Field::title: item->title = value; break;
            case Field::link: item->link = value; break;
            case Field::releaseNotesLink: releaseNotesLink = value; break;
            case Field::version: if (!value.empty()) item->version = value; break;
            case Field::shortVersion: if (!value.empty()) item->shortVersion = value; break;
            case Field::channel: item->channel = value; break;
            case Field::none: break;
            }
        }
        field = Field::none;
        text.clear();
        if (item && name.rss("item") && inside({"rss", "channel"})) finishItem();
    }

    void finishItem() {
        AppcastItem done = std::move(*item);
        item.reset();
        if (done.version.empty()) done.version = done.shortVersion;
        if (done.version.empty()) {
            failure = _("An item in the feed has no version");
            return;
        }
        if (done.link.empty()) done.link = releaseNotesLink;
        items.push_back(std::move(done));
    }

    static std::string strip(const std::string& value) {
        const char* space = " \t\r\n";
        auto first = value.find_first_not_of(space);
        if (first == std::string::npos) return {};
        return value.substr(first, value.find_last_not_of(space) - first + 1);
    }
};

void onStart(GMarkupParseContext*, const char* element, const char** names, const char** values, gpointer data,
             GError** error) {
    auto* parser = static_cast<Parser*>(data);
    parser->start(element, names, values);
    if (parser->failure) g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "");
}

void onEnd(GMarkupParseContext*, const char*, gpointer data, GError** error) {
    auto* parser = static_cast<Parser*>(data);
    parser->end();
    if (parser->failure) g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "");
}

void onText(GMarkupParseContext*, const char* text, gsize length, gpointer data, GError**) {
    auto* parser = static_cast<Parser*>(data);
    if (parser->field != Field::none) parser->text.append(text, length);
}

// One run of a version string: a number or a text.
struct VersionPart {
    bool number = false;
    std::string_view text;  // digits without leading zeros, or the text
};

// The next part at `at`, skipping separators; nullopt at the end.
std::optional<VersionPart> nextPart(std::string_view version, std::size_t& at) {
    auto separator = [](char c) { return !g_ascii_isalnum(c); };
    while (at < version.size() && separator(version[at])) ++at;
    if (at == version.size()) return std::nullopt;
    std::size_t begin = at;
    bool number = g_ascii_isdigit(version[at]);
    while (at < version.size() && !separator(version[at]) && bool(g_ascii_isdigit(version[at])) == number) ++at;
    std::string_view text = version.substr(begin, at - begin);
    if (number) {
        while (text.size() > 1 && text.front() == '0') text.remove_prefix(1);
    }
    return VersionPart{number, text};
}

int compareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    int order = a.compare(b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int compareTexts(std::string_view a, std::string_view b) {
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
        char x = g_ascii_tolower(a[i]);
        char y = g_ascii_tolower(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace

Result<std::vector<AppcastItem>> parseAppcast(std::string_view xml) {
    Parser parser;
    GMarkupParser callbacks{&onStart, &onEnd, &onText, nullptr, nullptr};
    // Titles are often CDATA, which is text like any other here.
    GMarkupParseContext* context =
        g_markup_parse_context_new(&callbacks, G_MARKUP_TREAT_CDATA_AS_TEXT, &parser, nullptr);
    GError* error = nullptr;
    bool parsed = g_markup_parse_context_parse(context, xml.data(), gssize(xml.size()), &error) &&
                  g_markup_parse_context_end_parse(context, &error);
    g_markup_parse_context_free(context);
    if (error) g_error_free(error);
    if (parser.failure) return Error{*parser.failure};
    if (!parsed) return Error{_("The feed isn’t valid XML")};
    if (!parser.sawChannel) return Error{_("The feed has no channel")};
    return std::move(parser.items);
}

int compareVersions(std::string_view a, std::string_view b) {
    std::size_t atA = 0;
    std::size_t atB = 0;
    while (true) {
        auto partA = nextPart(a, atA);
        auto partB = nextPart(b, atB);
        if (!partA && !partB) return 0;
        // A missing part is a zero against a number, and the release itself
        // against a text (which marks a pre-release).
        if (!partA) {
            if (!partB->number) return 1;
            if (partB->text != "0") return -1;
            continue;
        }
        if (!partB) {
            if (!partA->number) return -1;
            if (partA->text != "0") return 1;
            continue;
        }
        if (partA->number != partB->number) return partA->number ? 1 : -1;
        int order = partA->number ? compareNumbers(partA->text, partB->text) : compareTexts(partA->text, partB->text);
        if (order != 0) return order < 0 ? -1 : 1;
    }
}

}  // namespace lectern
