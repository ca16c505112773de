#pragma once

#include <libsoup/soup.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lectern::testing {

// Turns the default GLib main loop until `finished` holds or `boundMs`
// passes; true when it finished in time.
bool iterateUntil(const std::function<bool()>& finished, unsigned boundMs = 20000);
// Turns the main loop for `ms` milliseconds.
void iterateFor(unsigned ms);

// A web server on 127.0.0.1 (a free port) in the test process, answering on
// the default main loop. Every path has a route; unknown paths answer 404.
// It counts the requests per path and the most that were open at once.
class LocalServer {
public:
    struct Answer {
        int status = 200;
        std::string contentType = "text/html; charset=utf-8";
        std::string body;
        std::vector<std::pair<std::string, std::string>> headers;  // e.g. Location, Set-Cookie
        unsigned delayMs = 0;  // answer after this long
        bool never = false;    // never answer (the connection stays open)
    };
    struct Request {
        std::string method;
        std::string path;
        std::map<std::string, std::string> headers;  // lower-case names
    };
    using Route = std::function<Answer(const Request&)>;

    LocalServer();
    // An HTTPS server with the certificate and key in this PEM file.
    explicit LocalServer(const std::filesystem::path& tlsCertificate);
    ~LocalServer();
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;

    // http://127.0.0.1:<port><path> (https for an HTTPS server)
    std::string url(const std::string& path) const;
    // http://localhost:<port><path>: the same server under another host name.
    std::string localhostUrl(const std::string& path) const;
    int port() const { return port_; }
    // Stops listening and drops every open connection (the network is
    // gone), and listens again on the same port.
    void stop();
    void restart();

    void route(const std::string& path, Route route);
    // A page with this title and body text.
    void page(const std::string& path, const std::string& title, unsigned delayMs = 0);

    int requests(const std::string& path) const;
    const std::vector<Request>& seen() const { return seen_; }
    int mostOpenAtOnce() const { return mostOpen_; }
    int openNow() const { return open_; }

private:
    static void handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
    void respond(SoupServerMessage* message, const Answer& answer);

    SoupServer* server_;
    std::string scheme_ = "http";
    int port_ = 0;
    std::map<std::string, Route> routes_;
    std::vector<Request> seen_;
    int open_ = 0;
    int mostOpen_ = 0;
    std::vector<SoupServerMessage*> held_;  // never answered; released at the end
    std::vector<guint> timers_;
};

}  // namespace lectern::testing
