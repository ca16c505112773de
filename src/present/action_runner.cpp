#include "present/action_runner.h"

#include <glib/gi18n.h>

#include <glib.h>
#include <pango/pango.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "base/translation.h"

namespace lectern {
namespace {

constexpr std::size_t excerptClusters = 300;

// White space and line ends as the URL field and the excerpt treat them:
// every Unicode White_Space character. GLib's test covers the separators
// (Zs, Zl, Zp) and \t \n \r \f, but not \v and NEL.
bool isSpaceOrLineEnd(gunichar c) {
    return g_unichar_isspace(c) || c == 0x0B || c == 0x85;
}

// `text` without white space and line ends at either end. Stops at the
// first byte that is not UTF-8, leaving the rest as it is.
std::string trimmed(std::string_view text) {
    const char* begin = text.data();
    const char* end = text.data() + text.size();
    while (begin < end) {
        gunichar c = g_utf8_get_char_validated(begin, end - begin);
        if (c >= 0xFFFFFFFEu || !isSpaceOrLineEnd(c)) break;
        begin = g_utf8_next_char(begin);
    }
    while (end > begin) {
        const char* previous = g_utf8_find_prev_char(begin, end);
        if (!previous) previous = begin;
        gunichar c = g_utf8_get_char_validated(previous, end - previous);
        if (c >= 0xFFFFFFFEu || !isSpaceOrLineEnd(c)) break;
        end = previous;
    }
    return std::string(begin, end);
}

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (g_ascii_tolower(a[i]) != g_ascii_tolower(b[i])) return false;
    }
    return true;
}

std::string asciiLower(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = g_ascii_tolower(c);
    return result;
}

struct UriDeleter {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};
using UriPtr = std::unique_ptr<GUri, UriDeleter>;

// Parses an absolute URL the way the HTTP layer will: path, query and
// fragment keep their percent escapes, so what is sent is what was typed
// (spaces and other characters that need it are escaped on the way out).
UriPtr parseUrl(const std::string& text) {
    constexpr auto flags = GUriFlags(G_URI_FLAGS_HAS_PASSWORD | G_URI_FLAGS_ENCODED_PATH | G_URI_FLAGS_ENCODED_QUERY |
                                     G_URI_FLAGS_ENCODED_FRAGMENT);
    return UriPtr(g_uri_parse(text.c_str(), flags, nullptr));
}

std::string schemeOf(GUri* uri) {
    const char* scheme = g_uri_get_scheme(uri);
    return scheme ? asciiLower(scheme) : std::string();
}

// Whether `bytes` is UTF-8. NUL bytes count as text here (GLib's validator
// refuses them), so a body with one is not mistaken for Latin-1.
bool isUtf8(std::span<const std::uint8_t> bytes) {
    const char* p = reinterpret_cast<const char*>(bytes.data());
    const char* limit = p + bytes.size();
    while (p < limit) {
        const char* end = nullptr;
        if (g_utf8_validate_len(p, limit - p, &end)) return true;
        if (end == limit || *end != '\0') return false;
        p = end + 1;
    }
    return true;
}

// The start of a body as UTF-8 text: the body is UTF-8, or else ISO
// Latin-1 (every byte the code point of the same number). Only the start is
// ever decoded, so a large body is not copied whole.
struct BodyText {
    std::span<const std::uint8_t> bytes;
    bool utf8;

    // The first `chars` characters (NULs kept), and whether that is all.
    std::pair<std::string, bool> prefix(std::size_t chars) const {
        const char* begin = reinterpret_cast<const char*>(bytes.data());
        const char* limit = begin + bytes.size();
        if (utf8) {
            const char* end = begin;
            for (std::size_t n = 0; end < limit && n < chars; ++n) end = g_utf8_next_char(end);
            return {std::string(begin, end), end >= limit};
        }
        std::string text;
        std::size_t n = std::min(chars, bytes.size());
        for (std::uint8_t byte : bytes.first(n)) {
            if (byte < 0x80) {
                text += char(byte);
            } else {
                text += char(0xC0 | (byte >> 6));
                text += char(0x80 | (byte & 0x3F));
            }
        }
        return {std::move(text), n == bytes.size()};
    }
};

// The first `count` grapheme clusters of the body (all of it when it has
// fewer). Only a prefix is segmented, grown until it holds `count` whole
// clusters, so a large body costs little more than a small one. A boundary
// depends only on what comes before it and the character right after, so
// any boundary short of the prefix's end is also one in the whole text.
std::string firstClusters(const BodyText& body, std::size_t count) {
    PangoLanguage* language = pango_language_from_string("en");
    std::size_t prefixChars = count + count / 4 + 16;  // most text has one character per cluster
    std::vector<PangoLogAttr> attrs;
    for (;;) {
        auto [text, whole] = body.prefix(prefixChars);
        // Pango stops at a NUL; U+0001 breaks the same way (both are controls)
        // and has the same length, so offsets carry over.
        std::string segmented = text;
        std::replace(segmented.begin(), segmented.end(), '\0', '\x01');
        std::size_t chars = std::size_t(g_utf8_strlen(segmented.data(), gssize(segmented.size())));
        attrs.assign(chars + 1, PangoLogAttr{});
        pango_get_log_attrs(segmented.data(), int(segmented.size()), -1, language, attrs.data(), int(attrs.size()));
        std::size_t clusters = 0;
        for (std::size_t i = 1; i <= chars; ++i) {
            if (!attrs[i].is_cursor_position || ++clusters < count) continue;
            if (i == chars && !whole) break;  // the prefix's end is no real boundary
            text.resize(std::size_t(g_utf8_offset_to_pointer(segmented.data(), glong(i)) - segmented.data()));
            return text;
        }
        if (whole) return text;
        prefixChars *= 2;
    }
}

}  // namespace

ActionRunner::ActionRunner(std::unique_ptr<HttpTransport> transport, std::shared_ptr<CookieSource> cookies,
                           std::function<double()> clock, std::function<double()> wallClock)
    : transport_(std::move(transport)),
      cookies_(std::move(cookies)),
      clock_(std::move(clock)),
      wallClock_(wallClock ? std::move(wallClock) : [] { return double(g_get_real_time()) / G_USEC_PER_SEC; }) {}

// Callbacks still to come see the flag and drop their results; the
// transport, destroyed with the runner, cancels its requests.
ActionRunner::~ActionRunner() { *alive_ = false; }

ActionRunner::RunState ActionRunner::state(const Uuid& actionId) const {
    auto it = states_.find(actionId);
    return it == states_.end() ? RunState::idle() : it->second;
}

std::string ActionRunner::displayName(const SlideAction& action) {
    return action.name.empty() ? _("Untitled action") : action.name;
}

std::optional<ActionRunner::RunDetails> ActionRunner::details(const Uuid& actionId) const {
    auto it = details_.find(actionId);
    return it == details_.end() ? std::nullopt : std::optional(it->second);
}

std::string ActionRunner::describe(const RunDetails& details) {
    std::string took = details.seconds < 1
                           ? formatText(_("%lld ms"), static_cast<long long>(std::floor(details.seconds * 1000 + 1e-6)))
                           : formatText(_("%.1f s"), details.seconds);
    std::string ranAt;
    if (GDateTime* time = g_date_time_new_from_unix_local(static_cast<gint64>(std::floor(details.startedAt)))) {
        char* text = g_date_time_format(time, "%H:%M:%S");
        ranAt = text ? text : "";
        g_free(text);
        g_date_time_unref(time);
    }
    std::string lines = formatText(_("Status: %s"), details.status.c_str());
    lines += "\n" + formatText(_("Took: %s"), took.c_str());
    lines += "\n" + formatText(_("Ran at: %s"), ranAt.c_str());
    if (!details.excerpt.empty()) lines += "\n" + details.excerpt;
    return lines;
}

void ActionRunner::finish(const SlideAction& action, std::string text, bool isFailure) {
    details_[action.id] = RunDetails{text, {}, wallClock_(), 0};
    record(action, std::move(text), isFailure);
}

void ActionRunner::record(const SlideAction& action, std::string text, bool isFailure) {
    RunState state = isFailure ? RunState::failure(std::move(text)) : RunState::success(std::move(text));
    states_[action.id] = state;
    lastCompleted_ = Completed{displayName(action), std::move(state)};
    changed_.emit();
}

void ActionRunner::run(const SlideAction& action, const Slide& slide, const LiveWebViewRegistry* views,
                       std::function<void()> done) {
    states_[action.id] = RunState::running();
    changed_.emit();

    // The page is looked up now and held weakly: the registry belongs to
    // the window and need not outlive the call, and a page that goes away
    // while the action runs is treated as none.
    std::weak_ptr<LiveWebView> view;
    if (views) view = views->lookup(slide.id);

    // Records the outcome and its details, reloading the page first when
    // the action asks for it. `done` runs only if the runner is still there
    // afterwards.
    auto complete = [this, alive = alive_, action, view, done = std::move(done), startedAt = wallClock_(),
                     start = clock_()](std::string text, bool isFailure, std::string status, std::string excerpt) {
        if (!*alive) return;
        if (!isFailure && action.reloadsLiveView) {
            if (auto page = view.lock()) {
                page->reload();
            } else {
                std::string note = _(" \u00B7 no live view to reload");
                text += note;
                status += note;
            }
        }
        details_[action.id] =
            RunDetails{std::move(status), std::move(excerpt), startedAt, std::max(0.0, clock_() - start)};
        record(action, std::move(text), isFailure);
        if (*alive && done) done();
    };
    // A run that ends with a message only: the message is its status too.
    auto fail = [complete](const std::string& message) { complete(message, true, message, {}); };

    if (action.kindCase == SlideActionKindCase::pageScript) {
        auto page = view.lock();
        if (!page) {
            fail(_("No live browser view for this slide"));
            return;
        }
        page->evaluateAsyncFunction(action.script, [complete, fail](Result<std::optional<std::string>> result) {
            if (!result) {
                fail(result.error().message);
            } else {
                std::string value = result->value_or(_("Done"));
                complete(value, false, _("Script finished"), value);
            }
        });
        return;
    }

    // A request: the profile's cookies first when the action uses them.
    auto send = [this, alive = alive_, spec = action.request, complete, fail](const std::vector<HttpCookie>& cookies) {
        if (!*alive) return;
        Result<HttpRequest> request = buildRequest(spec, cookies);
        if (!request) {
            fail(request.error().message);
            return;
        }
        double start = clock_();
        transport_->send(*request, [this, alive, start, complete, fail](Result<HttpResponse> response) {
            if (!*alive) return;
            if (!response) {
                fail(response.error().message);
                return;
            }
            // The clock counts in microseconds at best; the small allowance
            // keeps a floating-point 11.999... from reading as 11 ms.
            double milliseconds = std::floor((clock_() - start) * 1000 + 1e-6);
            std::string text = formatText(_("HTTP %d \u00B7 %lld ms"), response->status,
                                          static_cast<long long>(std::max(0.0, milliseconds)));
            std::string excerpt = bodyExcerpt(response->body);
            if (!excerpt.empty()) text += "\n" + excerpt;
            complete(std::move(text), response->status > 399, formatText(_("HTTP %d"), response->status),
                     std::move(excerpt));
        });
    };

    const APIRequestSpec& spec = action.request;
    if (spec.useProfileCookies && cookies_) {
        std::string urlText = trimmed(spec.urlString);
        if (UriPtr url = parseUrl(urlText)) {
            cookies_->allCookies(slide.browserProfileId, [send, urlText](std::vector<HttpCookie> all) {
                std::vector<HttpCookie> matching;
                for (HttpCookie& cookie : all) {
                    if (cookieMatches(cookie, urlText)) matching.push_back(std::move(cookie));
                }
                send(matching);
            });
            return;
        }
    }
    send({});
}

Result<HttpRequest> ActionRunner::buildRequest(const APIRequestSpec& spec, const std::vector<HttpCookie>& cookies) {
    std::string urlText = trimmed(spec.urlString);
    if (urlText.empty()) return Error{_("URL is empty")};
    UriPtr url = parseUrl(urlText);
    if (!url || (schemeOf(url.get()) != "http" && schemeOf(url.get()) != "https")) {
        return Error{formatText(_("\"%s\" isn't a valid http(s) URL"), urlText.c_str())};
    }

    HttpRequest request;
    // The parsed form: the scheme in lower case, characters that may not
    // appear in a URL (a space in the path) escaped.
    char* normalized = g_uri_to_string(url.get());
    request.url = normalized;
    g_free(normalized);
    // Methods are ASCII tokens, so ASCII upper-casing is all they need.
    request.method = spec.method;
    for (char& c : request.method) c = g_ascii_toupper(c);
    // A request always has a method; an empty one means the default.
    if (request.method.empty()) request.method = "GET";
    request.timeoutSeconds = 60;

    // A later row with exactly the same name replaces the earlier value in
    // place; rows keep the order in which their names first appeared.
    auto& headers = request.headers;
    for (const HTTPHeaderField& field : spec.headers) {
        if (field.name.empty()) continue;
        auto same = std::find_if(headers.begin(), headers.end(),
                                 [&](const auto& header) { return header.first == field.name; });
        if (same != headers.end()) {
            same->second = field.value;
        } else {
            headers.emplace_back(field.name, field.value);
        }
    }
    auto hasHeader = [&](std::string_view name) {
        return std::any_of(headers.begin(), headers.end(),
                           [&](const auto& header) { return equalsIgnoringAsciiCase(header.first, name); });
    };

    // A Cookie header typed by the presenter wins over the profile's cookies.
    if (!cookies.empty() && !hasHeader("Cookie")) {
        std::string value = cookieHeader(cookies);
        if (!value.empty()) headers.emplace_back("Cookie", std::move(value));
    }

    if (request.method != "GET" && request.method != "HEAD" && !spec.body.empty()) {
        request.body = spec.body;
        if (!hasHeader("Content-Type")) headers.emplace_back("Content-Type", "application/json");
    }
    return request;
}

std::string ActionRunner::cookieHeader(const std::vector<HttpCookie>& cookies) {
    std::string header;
    for (const HttpCookie& cookie : cookies) {
        if (!header.empty()) header += "; ";
        header += cookie.name + "=" + cookie.value;
    }
    return header;
}

bool ActionRunner::cookieMatches(const HttpCookie& cookie, const std::string& url) {
    UriPtr uri = parseUrl(url);
    if (!uri) return false;
    const char* rawHost = g_uri_get_host(uri.get());
    if (!rawHost || !*rawHost) return false;
    std::string host = asciiLower(rawHost);
    std::string domain = asciiLower(cookie.domain);

    if (!domain.empty() && domain.front() == '.') {
        if (host != std::string_view(domain).substr(1) && !host.ends_with(domain)) return false;
    } else if (host != domain) {
        return false;
    }

    std::string requestPath = g_uri_get_path(uri.get());
    if (requestPath.empty()) requestPath = "/";
    std::string cookiePath = cookie.path.empty() ? "/" : cookie.path;
    if (requestPath != cookiePath) {
        if (!requestPath.starts_with(cookiePath)) return false;
        if (!cookiePath.ends_with('/') && requestPath[cookiePath.size()] != '/') return false;
    }

    return !cookie.secure || schemeOf(uri.get()) == "https";
}

std::string ActionRunner::bodyExcerpt(std::span<const std::uint8_t> body) {
    if (body.empty()) return {};
    std::string kept = firstClusters(BodyText{body, isUtf8(body)}, excerptClusters);

    // Every line end and white-space character becomes one space; runs stay.
    // A NUL becomes U+FFFD: the labels that show excerpts end text at one.
    std::string excerpt;
    excerpt.reserve(kept.size());
    for (const char* p = kept.data(); p < kept.data() + kept.size();) {
        const char* next = g_utf8_next_char(p);
        gunichar c = g_utf8_get_char(p);
        if (c == 0) {
            excerpt += "\uFFFD";
        } else if (isSpaceOrLineEnd(c)) {
            excerpt += ' ';
        } else {
            excerpt.append(p, next);
        }
        p = next;
    }
    std::size_t first = excerpt.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    std::size_t last = excerpt.find_last_not_of(" \t");
    return excerpt.substr(first, last - first + 1);
}

}  // namespace lectern
