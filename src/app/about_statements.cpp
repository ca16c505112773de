#include "app/about_statements.h"

#include <glib.h>
#include <glib/gi18n.h>

namespace lectern {

namespace {

std::string printed(const char* format, const std::string& value) {
    char* text = g_strdup_printf(format, value.c_str());
    std::string result = text;
    g_free(text);
    return result;
}

}  // namespace

std::string settingsAreaTitle(SettingsArea area) {
    switch (area) {
    case SettingsArea::general: return _("General");
    case SettingsArea::privacy: return _("Privacy");
    case SettingsArea::disclaimer: return _("Disclaimer");
    case SettingsArea::about: return _("About");
    }
    return {};
}

std::vector<AboutStatement> privacyStatements(const std::string& updateHost) {
    std::vector<AboutStatement> statements{
        {_("Nothing goes to the developer"), _("No account, no tracking, no analytics.")},
        {_("Decks are files you keep"),
         _("Saved where you choose. Headers you enter for demo actions, such as tokens, are stored as plain text.")},
        {_("Web slides load directly"),
         _("Each site sees your IP address, as in a browser. Sign-ins stay in each browser profile on this "
           "computer until you clear them.")},
        {_("Demo actions run only when asked"),
         _("When you run one, or a slide you present runs it. Requests go only to the addresses in the deck. "
           "Actions from a deck made elsewhere wait until you allow them, and this computer remembers your "
           "choice.")},
    };
    if (updateHost.empty()) {
        // A build without an update feed never asks anyone for anything.
        statements.push_back({_("No update checks"),
                              _("This build of Lectern never checks for new versions, so nothing is sent to "
                                "look for one.")});
    } else {
        // The feed is fetched straight from its host: no delivery network in between.
        statements.push_back(
            {_("One update check a day"),
             printed(_("Asks %s for a new version, which sees your IP address. Nothing about you or your decks "
                       "is sent. You can turn it off in Preferences."),
                     updateHost)});
    }
    return statements;
}

std::vector<AboutStatement> disclaimerStatements() {
    return {
        {_("Present decks only from people you trust"),
         _("Lectern asks before running demo actions from a deck made elsewhere. Once allowed, they do exactly "
           "what the deck says, signed in with its browser profiles.")},
        {_("Websites belong to their owners"), _("Pages load unchanged, and their terms and privacy policies apply.")},
        {_("Free, and provided as is"),
         _("No warranty. Keep a copy of decks you rely on, and run Check Web Slides before a talk.")},
        {_("An alpha by one developer"),
         _("Its look and behaviour may change between versions, and decks may gain fields that older versions "
           "ignore.")},
    };
}

std::string lecternDescription() {
    return _("Slides with live web pages in them, so a talk can show the real product, signed in and ready, "
             "instead of screenshots of it.");
}

std::string lastCheckedText(long long secondsSinceEpoch, bool checked) {
    if (!checked) return _("Not yet");
    GDateTime* utc = g_date_time_new_from_unix_utc(secondsSinceEpoch);
    if (!utc) return _("Not yet");
    GDateTime* local = g_date_time_to_local(utc);
    g_date_time_unref(utc);
    // TRANSLATORS: the date and time of the last update check (strftime-like, see g_date_time_format).
    char* text = g_date_time_format(local, _("%-d %B %Y, %H:%M"));
    g_date_time_unref(local);
    std::string result = text ? text : "";
    g_free(text);
    return result;
}

}  // namespace lectern
