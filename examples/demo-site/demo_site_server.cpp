// lectern-demo-site: the small web app that the example deck demonstrates.
//
// It serves "Larkspur", a made-up orders dashboard, on 127.0.0.1 only, so the
// example deck's web slide, browser profile and demo actions work without
// internet. Static pages come from a folder (public/ beside this file, which
// is installed as <prefix>/share/lectern/demo-site); the API keeps its orders
// in memory:
//
//   GET  /api/health   who answers here (scripts/run checks it before reusing a port)
//   GET  /api/me       who is signed in, from the session cookie (401 when nobody)
//   GET  /api/orders   every order, newest first, with today's totals
//   POST /api/orders   creates an order from a JSON body; answers it as JSON (201)
//   POST /api/reset    puts the demo orders back as they were at start
//   POST /login        signs in (form fields email, password, next) and sends you back
//   GET  /logout       signs out
//
// The session cookie carries the e-mail address and an HMAC over it, so a
// sign-in made while building the deck stays valid after the server restarts.
//
// Usage: lectern-demo-site [--port N] [--root DIR]. One line on stdout when
// it listens; SIGTERM or SIGINT stops it with status 0.
#include <glib-unix.h>
#include <glib/gi18n.h>
#include <libsoup/soup.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/install_layout.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int defaultPort = 8765;
constexpr std::string_view sessionCookie = "larkspur_session";
// Not a secret worth keeping: it only stops a hand-typed cookie from passing
// as a sign-in, which is all a demo on the loopback address needs.
constexpr std::string_view sessionKey = "larkspur-demo-session-key";
constexpr std::int64_t sessionSeconds = 30LL * 24 * 60 * 60;

std::int64_t nowMs() { return g_get_real_time() / 1000; }

// ---------------------------------------------------------------- orders

struct CatalogueItem {
    std::string_view name;
    int priceCents;
};

constexpr CatalogueItem catalogue[] = {
    {"House blend, 1 kg", 2900},   {"Espresso roast, 500 g", 1650}, {"Decaf, 250 g", 990},
    {"Pour-over kit", 4200},       {"Ceramic dripper", 2400},        {"Gift card", 2500},
    {"Cold brew bottles, 6", 1800}, {"Single origin, 250 g", 1350},
};

int priceOf(std::string_view item) {
    for (const auto& entry : catalogue)
        if (entry.name == item) return entry.priceCents;
    return 1500;
}

struct Order {
    int number = 0;
    std::string customer;
    std::string item;
    int quantity = 1;
    int totalCents = 0;
    std::string status;  // New, Paid, Packing, Shipped
    std::string channel;  // Web shop, API, or who placed it
    std::int64_t createdAtMs = 0;
};

std::string money(int cents) {
    std::string text = "€";
    text += std::to_string(cents / 100);
    text += cents % 100 < 10 ? ".0" : ".";
    text += std::to_string(cents % 100);
    return text;
}

Json toJson(const Order& order) {
    std::string id = "#";
    id += std::to_string(order.number);
    return Json{{"id", id},
                {"number", order.number},
                {"customer", order.customer},
                {"item", order.item},
                {"quantity", order.quantity},
                {"total", money(order.totalCents)},
                {"totalCents", order.totalCents},
                {"status", order.status},
                {"channel", order.channel},
                {"createdAt", order.createdAtMs}};
}

std::vector<Order> demoOrders() {
    struct Starting {
        const char* customer;
        const char* item;
        int quantity;
        const char* status;
        const char* channel;
        int minutesAgo;
    };
    const Starting startingOrders[] = {
        {"Noor Haddad", "House blend, 1 kg", 2, "Shipped", "Web shop", 212},
        {"Tomás Rivera", "Pour-over kit", 1, "Shipped", "Web shop", 164},
        {"Ingrid Solberg", "Espresso roast, 500 g", 3, "Packing", "Web shop", 97},
        {"Kwame Mensah", "Gift card", 2, "Paid", "Web shop", 41},
        {"Lena Vogt", "Single origin, 250 g", 4, "Paid", "Web shop", 12},
    };
    std::vector<Order> orders;
    int number = 1038;
    const std::int64_t now = nowMs();
    for (const auto& first : startingOrders) {
        Order order;
        order.number = number++;
        order.customer = first.customer;
        order.item = first.item;
        order.quantity = first.quantity;
        order.totalCents = priceOf(first.item) * first.quantity;
        order.status = first.status;
        order.channel = first.channel;
        order.createdAtMs = now - std::int64_t(first.minutesAgo) * 60 * 1000;
        orders.push_back(order);
    }
    return orders;
}

// ---------------------------------------------------------------- sessions

struct Person {
    std::string email;
    std::string name;
};

std::string hmacOf(std::string_view text) {
    gchar* digest = g_compute_hmac_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(sessionKey.data()),
                                            sessionKey.size(), reinterpret_cast<const guchar*>(text.data()),
                                            text.size());
    std::string result = digest;
    g_free(digest);
    return result;
}

// "ada.park@juniper.test" is shown as "Ada Park".
std::string nameFromEmail(std::string_view email) {
    std::string local(email.substr(0, email.find('@')));
    std::string name;
    bool startOfWord = true;
    for (char c : local) {
        if (c == '.' || c == '_' || c == '-' || c == '+') {
            if (!name.empty() && name.back() != ' ') name += ' ';
            startOfWord = true;
            continue;
        }
        name += startOfWord ? g_ascii_toupper(c) : c;
        startOfWord = false;
    }
    while (!name.empty() && name.back() == ' ') name.pop_back();
    return name.empty() ? std::string(email) : name;
}

std::string sessionValueFor(std::string_view email) {
    gchar* encoded = g_base64_encode(reinterpret_cast<const guchar*>(email.data()), email.size());
    std::string value = encoded;
    g_free(encoded);
    // Base64 may hold '=', '+' and '/', none of which a cookie value minds;
    // the HMAC separates with '.', which base64 never uses.
    value += '.';
    value += hmacOf(email);
    return value;
}

std::optional<Person> personFromSessionValue(std::string_view value) {
    const auto dot = value.rfind('.');
    if (dot == std::string_view::npos) return std::nullopt;
    const std::string encoded(value.substr(0, dot));
    gsize size = 0;
    guchar* decoded = g_base64_decode(encoded.c_str(), &size);
    std::string email(reinterpret_cast<const char*>(decoded), size);
    g_free(decoded);
    if (email.empty() || hmacOf(email) != value.substr(dot + 1)) return std::nullopt;
    return Person{email, nameFromEmail(email)};
}

std::optional<std::string> cookieValue(SoupServerMessage* message, std::string_view name) {
    const char* header = soup_message_headers_get_list(soup_server_message_get_request_headers(message), "Cookie");
    if (!header) return std::nullopt;
    std::string_view rest = header;
    while (!rest.empty()) {
        const auto end = rest.find(';');
        std::string_view pair = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        while (!pair.empty() && pair.front() == ' ') pair.remove_prefix(1);
        const auto equals = pair.find('=');
        if (equals != std::string_view::npos && pair.substr(0, equals) == name)
            return std::string(pair.substr(equals + 1));
    }
    return std::nullopt;
}

std::optional<Person> signedInPerson(SoupServerMessage* message) {
    if (auto value = cookieValue(message, sessionCookie)) return personFromSessionValue(*value);
    return std::nullopt;
}

// Only a path on this site: "/x" but not "//host" or "https://...".
std::string safeNext(const char* next) {
    if (!next || next[0] != '/' || next[1] == '/' || next[1] == '\\') return "/";
    return next;
}

// ---------------------------------------------------------------- answers

void answer(SoupServerMessage* message, int status, std::string_view contentType, std::string_view body) {
    auto* headers = soup_server_message_get_response_headers(message);
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, std::string(contentType).c_str(), SOUP_MEMORY_COPY, body.data(),
                                     body.size());
}

void answerJson(SoupServerMessage* message, int status, const Json& body) {
    answer(message, status, "application/json", body.dump());
}

void answerError(SoupServerMessage* message, int status, std::string_view text) {
    answerJson(message, status, Json{{"error", text}});
}

void redirect(SoupServerMessage* message, const std::string& location) {
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Location", location.c_str());
    answer(message, SOUP_STATUS_SEE_OTHER, "text/plain", "");
}

void methodNotAllowed(SoupServerMessage* message, const char* allowed) {
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Allow", allowed);
    answerError(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "Method not allowed");
}

std::string requestBody(SoupServerMessage* message) {
    GBytes* bytes = soup_message_body_flatten(soup_server_message_get_request_body(message));
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    std::string body(data ? data : "", size);
    g_bytes_unref(bytes);
    return body;
}

std::string_view contentTypeFor(const std::filesystem::path& file) {
    const std::string extension = file.extension().string();
    if (extension == ".html") return "text/html; charset=utf-8";
    if (extension == ".css") return "text/css; charset=utf-8";
    if (extension == ".js") return "text/javascript; charset=utf-8";
    if (extension == ".svg") return "image/svg+xml";
    if (extension == ".png") return "image/png";
    if (extension == ".json") return "application/json";
    return "application/octet-stream";
}

// ---------------------------------------------------------------- the site

class DemoSite {
public:
    explicit DemoSite(std::filesystem::path root) : root_(std::move(root)), orders_(demoOrders()) {}

    void handle(SoupServerMessage* message, std::string_view path) {
        const std::string_view method = soup_server_message_get_method(message);
        if (path == "/api/health") return answerJson(message, 200, Json{{"service", "lectern-demo-site"}, {"ok", true}});
        if (path == "/api/me") return me(message);
        if (path == "/api/orders") {
            if (method == "GET" || method == "HEAD") return listOrders(message);
            if (method == "POST") return createOrder(message);
            return methodNotAllowed(message, "GET, HEAD, POST");
        }
        if (path == "/api/reset") {
            if (method != "POST") return methodNotAllowed(message, "POST");
            orders_ = demoOrders();
            std::string text = "Demo data reset: ";
            text += std::to_string(orders_.size());
            text += " orders";
            return answerJson(message, 200, Json{{"message", text}});
        }
        if (path.starts_with("/api/")) return answerError(message, 404, "No such endpoint");
        if (path == "/login" && method == "POST") return signIn(message);
        if (path == "/logout") return signOut(message);
        if (method != "GET" && method != "HEAD") return methodNotAllowed(message, "GET, HEAD");
        if (path == "/") return serveFile(message, "index.html");
        if (path == "/login") return serveFile(message, "login.html");
        return serveFile(message, path.substr(1));
    }

private:
    void me(SoupServerMessage* message) {
        if (auto person = signedInPerson(message))
            return answerJson(message, 200, Json{{"signedIn", true}, {"name", person->name}, {"email", person->email}});
        answerJson(message, 401, Json{{"signedIn", false}, {"error", "Not signed in"}});
    }

    void listOrders(SoupServerMessage* message) {
        Json list = Json::array();
        int revenue = 0, open = 0;
        for (auto it = orders_.rbegin(); it != orders_.rend(); ++it) {
            list.push_back(toJson(*it));
            revenue += it->totalCents;
            open += it->status != "Shipped";
        }
        const int count = int(orders_.size());
        answerJson(message, 200,
                   Json{{"now", nowMs()},
                        {"orders", list},
                        {"totals",
                         {{"orders", count},
                          {"revenue", money(revenue)},
                          {"average", money(count ? revenue / count : 0)},
                          {"open", open}}}});
    }

    // Body: {"customer": text, "item": text, "quantity": 1..99}; every field
    // may be left out. An order placed with a session cookie names the person.
    void createOrder(SoupServerMessage* message) {
        const std::string body = requestBody(message);
        Json request = Json::object();
        if (body.find_first_not_of(" \t\r\n") != std::string::npos) {
            request = Json::parse(body, nullptr, false);
            if (request.is_discarded() || !request.is_object())
                return answerError(message, 400, "The body must be a JSON object");
        }
        Order order;
        order.number = orders_.empty() ? 1038 : orders_.back().number + 1;
        order.customer = "Walk-in customer";
        order.item = "House blend, 1 kg";
        if (request.contains("customer")) {
            if (!request["customer"].is_string() || request["customer"].get<std::string>().empty())
                return answerError(message, 400, "customer must be a non-empty text");
            order.customer = request["customer"].get<std::string>().substr(0, 60);
        }
        if (request.contains("item")) {
            if (!request["item"].is_string() || request["item"].get<std::string>().empty())
                return answerError(message, 400, "item must be a non-empty text");
            order.item = request["item"].get<std::string>().substr(0, 60);
        }
        if (request.contains("quantity")) {
            const auto& quantity = request["quantity"];
            if (!quantity.is_number_integer() || quantity.get<std::int64_t>() < 1 || quantity.get<std::int64_t>() > 99)
                return answerError(message, 400, "quantity must be a whole number from 1 to 99");
            order.quantity = quantity.get<int>();
        }
        order.totalCents = priceOf(order.item) * order.quantity;
        order.status = "New";
        auto person = signedInPerson(message);
        order.channel = person ? person->name : "API";
        order.createdAtMs = nowMs();
        orders_.push_back(order);

        std::string text = "Order #";
        text += std::to_string(order.number);
        text += " created for ";
        text += order.customer;
        answerJson(message, 201, Json{{"message", text}, {"order", toJson(order)}});
    }

    void signIn(SoupServerMessage* message) {
        const std::string body = requestBody(message);
        GHashTable* form = soup_form_decode(body.c_str());
        auto field = [form](const char* name) -> std::string {
            const auto* value = static_cast<const char*>(g_hash_table_lookup(form, name));
            return value ? value : "";
        };
        const std::string email = field("email");
        const std::string password = field("password");
        const std::string next = safeNext(field("next").c_str());
        g_hash_table_unref(form);

        if (email.find('@') == std::string::npos || password.empty()) {
            gchar* escaped = g_uri_escape_string(next.c_str(), nullptr, FALSE);
            std::string location = "/login?error=1&next=";
            location += escaped;
            g_free(escaped);
            return redirect(message, location);
        }
        std::string cookie(sessionCookie);
        cookie += '=';
        cookie += sessionValueFor(email);
        cookie += "; Path=/; Max-Age=";
        cookie += std::to_string(sessionSeconds);
        cookie += "; HttpOnly; SameSite=Lax";
        soup_message_headers_append(soup_server_message_get_response_headers(message), "Set-Cookie", cookie.c_str());
        redirect(message, next);
    }

    void signOut(SoupServerMessage* message) {
        std::string cookie(sessionCookie);
        cookie += "=; Path=/; Max-Age=0; HttpOnly; SameSite=Lax";
        soup_message_headers_append(soup_server_message_get_response_headers(message), "Set-Cookie", cookie.c_str());
        redirect(message, "/login");
    }

    void serveFile(SoupServerMessage* message, std::string_view relative) {
        // Plain names only: no "..", no hidden files, nothing outside the root.
        const bool plain = !relative.empty() && relative.front() != '/' && std::all_of(relative.begin(), relative.end(), [](char c) {
            return g_ascii_isalnum(c) || c == '-' || c == '_' || c == '.' || c == '/';
        });
        const std::filesystem::path file = root_ / std::filesystem::path(relative);
        bool inside = plain;
        for (const auto& part : std::filesystem::path(relative))
            inside = inside && !part.empty() && part.string().front() != '.';
        std::error_code error;
        if (!inside || !std::filesystem::is_regular_file(file, error)) return notFound(message);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        answer(message, 200, contentTypeFor(file), bytes);
    }

    void notFound(SoupServerMessage* message) {
        answer(message, 404, "text/html; charset=utf-8",
               "<!doctype html><meta charset=utf-8><title>Not found</title>"
               "<body style=\"font:16px system-ui,sans-serif;margin:3em\"><h1>Page not found</h1>"
               "<p><a href=\"/\">Back to the dashboard</a></p></body>");
    }

    std::filesystem::path root_;
    std::vector<Order> orders_;
};

void handleRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer site) {
    static_cast<DemoSite*>(site)->handle(message, path);
}

gboolean quitLoop(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

// With a problem: the problem and the usage line on standard error, status 2.
// Without (--help): the usage and what the options do on standard output.
int usage(const char* problem) {
    if (problem) {
        std::fprintf(stderr, "lectern-demo-site: %s\n", problem);
        std::fprintf(stderr, "%s\n", _("Usage: lectern-demo-site [--port N] [--root DIR]"));
        return 2;
    }
    std::printf("%s\n\n", _("Usage: lectern-demo-site [--port N] [--root DIR]"));
    std::printf(_("Serves the example deck's demo site on 127.0.0.1 until stopped.\n"
                  "\n"
                  "  --port N      listen on port N (%d unless told)\n"
                  "  --root DIR    serve the pages in DIR (%s unless told)\n"
                  "  --help        print this and exit\n"),
                defaultPort, (lectern::lecternDataDir() / "demo-site").c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    int port = defaultPort;
    std::filesystem::path root = lectern::lecternDataDir() / "demo-site";
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help" || argument == "-h") return usage(nullptr);
        if ((argument == "--port" || argument == "--root") && i + 1 >= argc) return usage(_("missing value after an option"));
        if (argument == "--port") {
            char* end = nullptr;
            const long value = std::strtol(argv[++i], &end, 10);
            if (!end || *end || value < 1 || value > 65535) return usage(_("the port must be a number from 1 to 65535"));
            port = int(value);
        } else if (argument == "--root") {
            root = argv[++i];
        } else {
            std::string problem = _("unknown argument ");
            problem += argument;
            return usage(problem.c_str());
        }
    }
    if (!std::filesystem::is_regular_file(root / "index.html")) {
        std::fprintf(stderr, "lectern-demo-site: ");
        std::fprintf(stderr, _("no index.html in %s\n"), root.c_str());
        return 1;
    }

    DemoSite site(root);
    SoupServer* server = soup_server_new("server-header", "lectern-demo-site", nullptr);
    soup_server_add_handler(server, nullptr, handleRequest, &site, nullptr);

    GInetAddress* loopback = g_inet_address_new_from_string("127.0.0.1");
    GSocketAddress* address = g_inet_socket_address_new(loopback, guint16(port));
    GError* error = nullptr;
    const bool listening = soup_server_listen(server, address, SoupServerListenOptions(0), &error);
    g_object_unref(address);
    g_object_unref(loopback);
    if (!listening) {
        std::fprintf(stderr, "lectern-demo-site: ");
        std::fprintf(stderr, _("cannot listen on 127.0.0.1:%d: %s\n"), port,
                     error ? error->message : _("unknown error"));
        if (error) g_error_free(error);
        g_object_unref(server);
        return 1;
    }

    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    const guint onTerm = g_unix_signal_add(SIGTERM, quitLoop, loop);
    const guint onInt = g_unix_signal_add(SIGINT, quitLoop, loop);
    std::printf("Demo site ready at http://127.0.0.1:%d/\n", port);
    std::fflush(stdout);

    g_main_loop_run(loop);

    g_source_remove(onTerm);
    g_source_remove(onInt);
    soup_server_disconnect(server);
    g_object_unref(server);
    g_main_loop_unref(loop);
    return 0;
}
