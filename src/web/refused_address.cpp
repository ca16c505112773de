#include "web/refused_address.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <algorithm>
#include <array>

#include "base/translation.h"
#include "model/deck_json.h"


namespace lectern {

namespace {

// The ports that browsers never connect to for a page (the "bad ports" of
// the Fetch standard): mail, name service, printing and the like.
constexpr std::array<int, 82> blockedPorts{
    1,    7,    9,    11,   13,   15,   17,   19,   20,   21,   22,   23,   25,   37,   42,   43,   53,
    69,   77,   79,   87,   95,   101,  102,  103,  104,  109,  110,  111,  113,  115,  117,  119,  123,
    135,  137,  139,  143,  161,  179,  389,  427,  465,  512,  513,  514,  515,  526,  530,  531,  532,
    540,  548,  554,  556,  563,  587,  601,  636,  989,  990,  993,  995,  1719, 1720, 1723, 2049, 3659,
    4045, 4190, 5060, 5061, 6000, 6566, 6665, 6666, 6667, 6668, 6669, 6679, 6697, 10080};

// Long addresses are cut, so that the message stays readable on stage.
std::string shortened(std::string_view url) {
    constexpr std::size_t longest = 80;
    std::string shown(url.substr(0, longest));
    if (url.size() > longest) shown += "…";
    return shown;
}

}  // namespace

std::optional<std::string> refusalReason(std::string_view url) {
    if (!DeckJson::isWebAddress(url)) {
        return formatText(_("Refused to open “%s”: only http and https pages are shown"), std::string(shortened(url)).c_str());
    }
    GUri* uri = g_uri_parse(std::string(url).c_str(), G_URI_FLAGS_NONE, nullptr);
    if (!uri) return std::nullopt;  // the engine reports what it makes of it
    int port = g_uri_get_port(uri);
    g_uri_unref(uri);
    if (std::find(blockedPorts.begin(), blockedPorts.end(), port) != blockedPorts.end()) {
        return formatText(_("Port %d belongs to another service: browsers never load pages from it"), port);
    }
    return std::nullopt;
}

}  // namespace lectern
