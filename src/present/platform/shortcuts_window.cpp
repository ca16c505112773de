#include "present/platform/shortcuts_window.h"

#include <glibmm/markup.h>

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

}  // namespace

Gtk::ShortcutsWindow* makeShortcutsWindow() {
    static const std::vector<Group> groups{
        {"Presenting",
         {{"Present or stop presenting", "<Shift><Control>p"},
          {"Next step or slide", "Right Down space Page_Down"},
          {"Previous step or slide", "Left Up Page_Up"},
          {"Next slide, past remaining steps", "<Control>Right"},
          {"Previous slide", "<Control>Left"},
          {"Overview", "Escape"},
          {"Start or stop the timer", "<Control>t"}}},
        {"Presenter aids",
         {{"Show or hide the HUD", "<Control>j"},
          {"Show or hide the presenter display", "<Alt><Control>p"},
          {"Show or hide presenter notes", "<Alt><Control>i"},
          {"Open or close the editor", "<Control>e"}}},
        {"Editing",
         {{"Undo", "<Control>z"},
          {"Redo", "<Shift><Control>z <Control>y"},
          {"New slide", "<Shift><Control>n"},
          {"Duplicate slide", "<Control>d"},
          {"Rename slide", "F2"},
          {"Move slide up or down (in the slide list)", "<Alt>Up <Alt>Down"},
          {"Delete slide", "<Shift><Control>Delete Delete"},
          {"Group with the slide above", "<Control>g"},
          {"Take out of its section", "<Shift><Control>g"},
          {"Show or hide the sidebar", "F9"},
          {"Go to the slide list, the slide, the notes", "F6"}}},
        {"Slide text",
         {{"Bold", "<Control>b"},
          {"Italic", "<Control>i"},
          {"Underline", "<Control>u"},
          {"Indent or outdent a list item", "Tab <Shift>Tab"},
          {"From the title to the body", "Return"},
          {"Leave the field", "Escape"}}},
        {"Decks",
         {{"New deck", "<Control>n"},
          {"Open a deck", "<Control>o"},
          {"Save", "<Control>s"},
          {"Save as", "<Shift><Control>s"},
          {"Close the window", "<Control>w"},
          {"Keyboard shortcuts", "<Control>question"},
          {"Quit", "<Control>q"}}},
    };
    auto builder = Gtk::Builder::create_from_string(describe(groups));
    // Deleted with its window, which goes with the deck window it belongs to.
    return Gtk::manage(builder->get_widget<Gtk::ShortcutsWindow>("shortcuts"));
}

}  // namespace lectern
