// The slide body editor and its format bar in a window of their own, driven
// with real keys and clicks.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

#include "editor/platform/body_editor.h"
#include "editor/platform/format_bar.h"
#include "gui_harness.h"

namespace lectern {
namespace {

using testing::pressKeys;
using testing::pumpUntil;
using testing::typeText;

SlideBodyAttributes boldAttributes() {
    SlideBodyAttributes a;
    a.inlineIntent = inline_intent::stronglyEmphasized;
    return a;
}

struct Edit {
    std::string text;
    std::string label;
    bool mergeable = false;
};

class BodyEditorTest : public testing::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        if (IsSkipped()) return;
        window_ = std::make_unique<Gtk::Window>();
        window_->set_default_size(640, 420);
        editor_ = Gtk::make_managed<BodyEditor>();
        bar_ = Gtk::make_managed<FormatBar>(*editor_);
        BodyEditorLook look;
        look.style = ThemeStyle::of(Theme::clinical);
        editor_->setLook(look);
        editor_->set_vexpand(true);
        auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
        box->append(*bar_);
        box->append(*editor_);
        window_->set_child(*box);
        // The deck window's undo and redo, counted.
        auto actions = Gio::SimpleActionGroup::create();
        actions->add_action("undo", [this] { ++undos_; });
        actions->add_action("redo", [this] { ++redos_; });
        window_->insert_action_group("win", actions);
        connection_ = editor_->edited().connect([this](const AttributedText& body, const std::string& label, bool merge) {
            edits_.push_back({body.string(), label, merge});
        });
        window_->present();
        testing::focus(*window_);
        editor_->grab_focus();
        pumpUntil([&] { return window_->is_active() && editor_->has_focus(); }, 2);

    }
    void TearDown() override {
        connection_.disconnect();
        window_.reset();
        WindowTest::TearDown();
    }

    Gtk::Widget& control(const std::string& label) {
        auto found = testing::findWidgets(GTK_WIDGET(bar_->gobj()), [&](GtkWidget* widget) {
            const char* tip = gtk_widget_get_tooltip_text(widget);
            return tip && label == tip;
        });
        EXPECT_FALSE(found.empty()) << label;
        return *Glib::wrap(found.front());
    }
    void clickControl(const std::string& label) {
        Gtk::Widget& widget = control(label);
        testing::click(widget, widget.get_width() / 2.0, widget.get_height() / 2.0);
    }

    std::unique_ptr<Gtk::Window> window_;
    BodyEditor* editor_ = nullptr;
    FormatBar* bar_ = nullptr;
    std::vector<Edit> edits_;
    int undos_ = 0;
    int redos_ = 0;
    Signal<const AttributedText&, const std::string&, bool>::Connection connection_;
};

TEST_F(BodyEditorTest, ListsAndStylesAsTyped) {
    // "- " at the start becomes a bullet; every key is one mergeable edit.
    pressKeys(*window_, {"minus", "space"});  // xdotool would read "- one" as an option
    typeText(*window_, "one");
    EXPECT_EQ(editor_->body().string(), "\u2022 one");
    ASSERT_EQ(edits_.size(), 5u);
    for (const auto& edit : edits_) {
        EXPECT_EQ(edit.label, "Typing");
        EXPECT_TRUE(edit.mergeable);
    }
    EXPECT_EQ(edits_.back().text, "\u2022 one");

    // Return continues the list, Tab indents the item, Shift+Tab outdents it,
    // Return on an empty item ends the list.
    pressKeys(*window_, {"Return", "Tab"});
    EXPECT_EQ(editor_->body().string(), "\u2022 one\n\t\u2022 ");
    EXPECT_EQ(edits_.back().label, "Indent list item");
    EXPECT_FALSE(edits_.back().mergeable);
    pressKeys(*window_, {"shift+Tab"});
    typeText(*window_, "two");
    pressKeys(*window_, {"Return", "Return"});
    EXPECT_EQ(editor_->body().string(), "\u2022 one\n\u2022 two\n");

    // Bold toggled at the caret applies to what is typed next.
    pressKeys(*window_, {"ctrl+b"});
    typeText(*window_, "loud");
    EXPECT_EQ(editor_->body(), AttributedText::fromRuns({{"\u2022 one\n\u2022 two\n", {}}, {"loud", boldAttributes()}}));
    EXPECT_EQ(editor_->body(), editor_->editable().text);

    // Undo keys go to the window; the view keeps no history of its own.
    std::size_t before = edits_.size();
    pressKeys(*window_, {"ctrl+z", "ctrl+shift+z", "ctrl+y"});
    EXPECT_EQ(undos_, 1);
    EXPECT_EQ(redos_, 2);
    EXPECT_EQ(edits_.size(), before);
    EXPECT_EQ(editor_->body().string(), "\u2022 one\n\u2022 two\nloud");

    // Tab outside a list leaves the field.
    pressKeys(*window_, {"Tab"});
    EXPECT_FALSE(editor_->has_focus());
    EXPECT_EQ(editor_->body().string(), "\u2022 one\n\u2022 two\nloud");
}

TEST_F(BodyEditorTest, BarButtonsActOnTheSelectionAndKeepTheFocus) {
    editor_->setBody(AttributedText("intro\nls -la"));
    EXPECT_TRUE(editor_->isApplyingModelSync());
    EXPECT_TRUE(pumpUntil([&] { return !editor_->isApplyingModelSync(); }));
    EXPECT_TRUE(edits_.empty());

    pressKeys(*window_, {"ctrl+End"});
    clickControl("Command block");
    EXPECT_TRUE(editor_->has_focus());
    AttributedText body = editor_->body();
    EXPECT_FALSE(body.attributesAt(0).isCommand());
    EXPECT_TRUE(body.attributesAt(6).isCommand());
    EXPECT_TRUE(body.attributesAt(body.size() - 1).isCommand());
    ASSERT_FALSE(edits_.empty());
    EXPECT_EQ(edits_.back().label, "Command block");
    EXPECT_TRUE(static_cast<Gtk::ToggleButton&>(control("Command block")).get_active());

    // Centre, on the first line only, from the bar.
    pressKeys(*window_, {"ctrl+Home"});
    clickControl("Align center");
    EXPECT_EQ(editor_->body().attributesAt(0).alignment, SlideBodyAlignment::center);
    EXPECT_FALSE(editor_->body().attributesAt(6).alignment);

    // For a person to look at: a list, a wrapped item, a command block.
    bar_->setPalettes({"#D94F30", "#2E7D5B"}, {"#3366CC"});
    editor_->setBody(AttributedText::fromRuns(
        {{"Intro line\n\u2022 a bullet item long enough to wrap onto a second line of the field, hanging\n", {}},
         {"\t\u2022 deeper\n1. first\n", {}},
         {"ls -la\n", editor_->body().attributesAt(6)},
         {"after", {}}}));
    testing::screenshot("body_editor");
}

TEST_F(BodyEditorTest, PastedTextKeepsNothingOfItsOwn) {
    // Bold text copied from the editor itself carries its tags on the
    // clipboard; pasted at a plain caret it takes the plain look.
    AttributedText start = AttributedText::fromRuns({{"big", boldAttributes()}, {" end", {}}});
    editor_->setBody(start);
    pressKeys(*window_, {"ctrl+Home", "shift+Right", "shift+Right", "shift+Right", "ctrl+c", "ctrl+End", "ctrl+v"});
    ASSERT_TRUE(pumpUntil([&] { return editor_->body().string() == "big endbig"; }));
    EXPECT_EQ(editor_->body(), AttributedText::fromRuns({{"big", boldAttributes()}, {" endbig", {}}}));

    // Text from elsewhere: Windows newlines become paragraphs; a pasted
    // "- " is text, not a typed list marker.
    editor_->get_clipboard()->set_text("- x\r\ny");
    pressKeys(*window_, {"Return", "ctrl+v"});
    ASSERT_TRUE(pumpUntil([&] { return editor_->body().string().ends_with("y"); }));
    EXPECT_EQ(editor_->body().string(), "big endbig\n- x\ny");
    EXPECT_EQ(edits_.back().label, "Typing");
}

TEST_F(BodyEditorTest, KeystrokeInALongBodyIsQuick) {
    std::string text;
    for (int i = 0; i < 200; ++i) text += "\u2022 item number " + std::to_string(i) + " with some words\n";
    editor_->setBody(AttributedText(text));
    pressKeys(*window_, {"ctrl+End"});
    // The work of one key, as the text view does it: one user action.
    auto buffer = editor_->get_buffer();
    auto started = std::chrono::steady_clock::now();
    buffer->insert_interactive_at_cursor("x");
    double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
    std::printf("one key in a 200-line body: %.2f ms\n", ms);
    EXPECT_TRUE(editor_->body().string().ends_with("words\nx"));
    pressKeys(*window_, {"ctrl+Home", "Return"});
    EXPECT_TRUE(editor_->body().string().starts_with("\n\u2022 item number 0"));
}

}  // namespace
}  // namespace lectern
