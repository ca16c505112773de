#pragma once

#include <glib/gi18n.h>

#include <optional>
#include <string>

namespace lectern {

// How the check of one web page ended: loaded where it was asked to, ended up
// somewhere else (a note naming where), or did not load (a message).
struct WebCheckOutcome {
    enum class Kind { ok, redirected, failed };

    Kind kind = Kind::ok;
    std::string text;  // the note of `redirected`, the message of `failed`

    static WebCheckOutcome ok() { return {Kind::ok, {}}; }
    static WebCheckOutcome redirected(std::string note) { return {Kind::redirected, std::move(note)}; }
    static WebCheckOutcome failed(std::string message) { return {Kind::failed, std::move(message)}; }

    bool needsAttention() const { return kind != Kind::ok; }

    friend bool operator==(const WebCheckOutcome&, const WebCheckOutcome&) = default;
};

// "HTTP 404 — not found": the failure message of an HTTP error status.
std::string httpFailureMessage(int status);
// The lower-case reason phrase of an HTTP status; codes without one of their
// own get the one of their class ("client error", "server error").
std::string httpStatusText(int status);

// Where a page that was asked for `requested` and finished at `finalUrl`
// ended up, when that deserves a note: another site (a leading "www." and
// the case of the host do not count) or a sign-in page it was not asked
// for. "Redirected to " + the final host as written + its path.
std::optional<std::string> redirectNote(const std::string& requested, const std::string& finalUrl);

// Whether an address looks like a sign-in page: its lower-cased path holds
// "login", "signin", "sign-in", "sso" or "auth".
bool looksLikeSignIn(const std::string& url);

// The failure of a page whose server certificate the engine rejected, with
// the way to trust it: "Untrusted certificate for 127.0.0.1:8443 — open the
// slide and choose Trust This Certificate…".
std::string untrustedCertificateMessage(const std::string& place);

// The note of a page that stayed at its own address but shows a form asking
// for a password: the session behind it has ended.
inline constexpr const char* signInFormNote = N_("Shows a sign-in form");

}  // namespace lectern
