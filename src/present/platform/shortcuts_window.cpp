#include "present/platform/shortcuts_window.h"

#include <glib/gi18n.h>

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
        {_("Presenting"),
         {{_("Present or stop presenting"), "<Shift><Control>p"},
          {_("Next step or slide"), "Right Down space Page_Down"},
          {_("Previous step or slide"), "Left Up Page_Up"},
          {_("Next slide, past remaining steps"), "<Control>Right"},
          {_("Previous slide"), "<Control>Left"},
          {_("Overview"), "Escape"},
          {_("Start or stop the timer"), "<Control>t"}}},
        {_("Presenter aids"),
         {{_("Show or hide the HUD"), "<Control>j"},
          {_("Show or hide the presenter display"), "<Alt><Control>p"},
          {_("Show or hide presenter notes"), "<Alt><Control>i"},
          {_("Open or close the editor"), "<Control>e"}}},
        {_("Editing"),
         {{_("Undo"), "<Control>z"},
          {_("Redo"), "<Shift><Control>z <Control>y"},
          {_("New slide"), "<Shift><Control>n"},
          {_("Duplicate slide"), "<Control>d"},
          {_("Rename slide"), "F2"},
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
    return Gtk::manage(builder->get_widget<Gtk::ShortcutsWindow>("shortcuts"));
}

}  // namespace lectern
