#include "present/platform/shortcuts_window.h"

#include <glib/gi18n.h>

#include <glibmm/markup.h>

#include "base/translation.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace lectern {

namespace {

struct Group {
    const char* title;
    std::vector<std::pair<const char*, const char*>> shortcuts;  // title, accelerators
};

// GtkShortcutsWindow takes its content only from a UI description in GTK 4.8.
std::string describe(const std::vector<Group>& groups) {
    std::string ui = R"(<interface><object class="GtkShortcutsWindow" id="shortcuts"><property name="modal">1</property>)"
                     R"(<child><object class="GtkShortcutsSection"><property name="section-name">shortcuts</property>)";
    for (const auto& group : groups) {
        ui += R"(<child><object class="GtkShortcutsGroup"><property name="title">)" +
              Glib::Markup::escape_text(group.title) + "</property>";
        for (const auto& [title, accelerator] : group.shortcuts) {
            ui += R"(<child><object class="GtkShortcutsShortcut"><property name="title">)" +
                  Glib::Markup::escape_text(title) + R"(</property><property name="accelerator">)" +
                  Glib::Markup::escape_text(accelerator) + "</property></object></child>";
        }
        ui += "</object></child>";
    }
    ui += "</object></child></object></interface>";
    return ui;
}

// The keys GtkShortcutLabel shows by their X names.
const char* readableName(const std::string& shown) {
    if (shown == "Page_Up") return _("Page Up");
    if (shown == "Page_Down") return _("Page Down");
    if (shown == "BackSpace") return _("Backspace");
    if (shown == "KP_Enter" || shown == "KP Enter") return _("Enter");
    return nullptr;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// One key or combination ("<Shift>F5") as words: "Shift+F5".
std::string keyInWords(const std::string& accelerator) {
    guint key = 0;
    GdkModifierType modifiers{};
    if (!gtk_accelerator_parse(accelerator.c_str(), &key, &modifiers)) return accelerator;
    char* label = gtk_accelerator_get_label(key, modifiers);
    std::string words = label ? label : accelerator;
    g_free(label);
    for (const char* raw : {"BackSpace", "KP Enter"}) words = replaceAll(words, raw, readableName(raw));
    return words;
}

// Every shortcut label's keys by readable names, and every shortcut read
// out as its title and keys in words (a screen reader would otherwise read
// the pictures of the keys, "␣" or "⏎", one by one).
void makeReadable(GtkWidget* widget) {
    if (GTK_IS_LABEL(widget) && GTK_IS_SHORTCUT_LABEL(gtk_widget_get_parent(widget))) {
        if (const char* name = readableName(gtk_label_get_text(GTK_LABEL(widget)))) {
            gtk_label_set_text(GTK_LABEL(widget), name);
        }
    }
    if (GTK_IS_SHORTCUTS_SHORTCUT(widget)) {
        char* title = nullptr;
        char* accelerator = nullptr;
        g_object_get(widget, "title", &title, "accelerator", &accelerator, nullptr);
        std::string spoken = formatText(_("%s: %s"), title ? title : "", keysInWords(accelerator ? accelerator : "").c_str());
        gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, spoken.c_str(), -1);
        g_free(title);
        g_free(accelerator);
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        makeReadable(child);
    }
}

}  // namespace

std::string keysInWords(const std::string& accelerators) {
    std::vector<std::string> alternatives;
    std::istringstream stream(accelerators);
    for (std::string alternative; stream >> alternative;) {
        // "0...9+Return": a range, then a key.
        std::string words;
        std::size_t start = 0;
        while (start <= alternative.size()) {
            std::size_t plus = alternative.find('+', start);
            std::string step = alternative.substr(start, plus == std::string::npos ? std::string::npos : plus - start);
            std::size_t dots = step.find("...");
            std::string stepWords = dots == std::string::npos
                                        ? keyInWords(step)
                                        : formatText(_("%s to %s"), keyInWords(step.substr(0, dots)).c_str(),
                                                     keyInWords(step.substr(dots + 3)).c_str());
            words = words.empty() ? stepWords : formatText(_("%s, then %s"), words.c_str(), stepWords.c_str());
            if (plus == std::string::npos) break;
            start = plus + 1;
        }
        alternatives.push_back(words);
    }
    std::string spoken;
    for (std::size_t i = 0; i < alternatives.size(); ++i) {
        if (i == 0) spoken = alternatives[i];
        else spoken = formatText(_("%s or %s"), spoken.c_str(), alternatives[i].c_str());
    }
    return spoken;
}

Gtk::ShortcutsWindow* makeShortcutsWindow() {
    static const std::vector<Group> groups{
        {_("Presenting"),
         {{_("Present from the first slide"), "F5"},
          {_("Present from the current slide"), "<Shift>F5"},
          {_("Present or stop presenting"), "<Shift><Control>p"},
          {_("Next step or slide"), "Right Down space Page_Down"},
          {_("Previous step or slide"), "Left Up Page_Up"},
          {_("Next slide, past remaining steps"), "<Control>Right"},
          {_("Previous slide"), "<Control>Left"},
          {_("First or last slide"), "Home End"},
          {_("Go to a slide: its number, then Return"), "0...9+Return"},
          {_("Correct or drop the slide number"), "BackSpace Escape"},
          {_("Black out the stage, until any key"), "b period"},
          {_("White out the stage, until any key"), "w comma"},
          {_("Overview"), "Escape"},
          {_("Start or stop the timer"), "<Control>t"}}},
        {_("Presenter aids"),
         {{_("Show or hide the HUD"), "<Control>j"},
          {_("Show or hide the presenter display"), "<Alt><Control>p"},
          {_("Show or hide presenter notes"), "<Alt><Control>i"},
          {_("Open or close the editor"), "<Control>e"}}},
        {_("Web pages"),
         {{_("Reload the web page"), "<Control>r"},
          {_("Zoom in"), "<Control>equal <Control>plus"},
          {_("Zoom out"), "<Control>minus"},
          {_("Actual size"), "<Control>0"},
          {_("Clear the shared web session"), "<Control>k"}}},
        {_("Editing"),
         {{_("Undo"), "<Control>z"},
          {_("Redo"), "<Shift><Control>z <Control>y"},
          {_("New slide"), "<Shift><Control>n"},
          {_("Duplicate slide"), "<Control>d"},
          {_("Rename slide"), "F2"},
          {_("Previous or next slide (in the slide list)"), "Up Down"},
          {_("First or last slide (in the slide list)"), "Home End"},
          {_("Move slide up or down (in the slide list)"), "<Alt>Up <Alt>Down"},
          {_("Delete slide"), "<Shift><Control>Delete Delete"},
          {_("Group with the slide above"), "<Control>g"},
          {_("Take out of its section"), "<Shift><Control>g"},
          {_("Show or hide the sidebar"), "F9"},
          {_("Go to the slide list, the slide, the notes"), "F6"}}},
        {_("Slide text"),
         {{_("Bold"), "<Control>b"},
          {_("Italic"), "<Control>i"},
          {_("Underline"), "<Control>u"},
          {_("Indent or outdent a list item"), "Tab <Shift>Tab"},
          {_("From the title to the body"), "Return"},
          {_("Leave the field"), "Escape"}}},
        {_("Decks"),
         {{_("New deck"), "<Control>n"},
          {_("Open a deck"), "<Control>o"},
          {_("Save"), "<Control>s"},
          {_("Save as"), "<Shift><Control>s"},
          {_("Export as PDF"), "<Shift><Control>e"},
          {_("Close the window"), "<Control>w"},
          {_("Preferences"), "<Control>comma"},
          {_("Keyboard shortcuts"), "<Control>question"},
          {_("Quit"), "<Control>q"}}},
    };
    auto builder = Gtk::Builder::create_from_string(describe(groups));
    // Deleted with its window, which goes with the deck window it belongs to.
    auto* window = Gtk::manage(builder->get_widget<Gtk::ShortcutsWindow>("shortcuts"));
    makeReadable(GTK_WIDGET(window->gobj()));
    return window;
}

}  // namespace lectern
