#pragma once

#include <gtkmm.h>

#include <memory>
#include <vector>

#include "editor/deck_editor.h"
#include "editor/platform/action_editor_fields.h"
#include "present/action_runner.h"

namespace lectern {

// The sheet that edits one demo action of one slide in place: name, kind,
// the request or the script, reloading, automation, and a test run on a
// runner of its own. Every change is an edit of the document, so there is
// nothing to save and closing keeps the changes. The action is found again
// by its slide and its id on every change; when either is gone the sheet
// shows nothing and edits nothing.
class ActionEditor : public Gtk::Window {
public:
    ActionEditor(DeckEditor& editor, Gtk::Window& parent, const Uuid& slideId, const Uuid& actionId);
    ~ActionEditor() override;

    // The slide and the action as they stand in the deck, if still there.
    const Slide* slide() const;
    const SlideAction* action() const;

    // Runs the action as it stands now; the result line shows the outcome.
    void test();
    ActionRunner& runner() { return *runner_; }

    Gtk::Entry& nameField() { return name_; }
    Gtk::CheckButton& requestKind() { return requestKind_; }
    Gtk::CheckButton& scriptKind() { return scriptKind_; }
    Gtk::DropDown& methodField() { return *method_; }
    Gtk::Entry& urlField() { return url_; }
    Gtk::Button& addHeaderButton() { return addHeader_; }
    ActionCodeEditor& bodyField() { return body_; }
    Gtk::Switch& cookiesSwitch() { return cookies_; }
    ActionCodeEditor& scriptField() { return script_; }
    Gtk::Switch& reloadSwitch() { return reload_; }
    Gtk::Switch& autoRunSwitch() { return autoRun_; }
    StepperField& delayField() { return delay_; }
    Gtk::Switch& repeatSwitch() { return repeats_; }
    StepperField& intervalField() { return interval_; }
    StepperField& maxRunsField() { return maxRuns_; }
    Gtk::Button& testButton() { return test_; }
    Gtk::Label& resultLine() { return result_; }
    // The form (the test area under it goes with it); hidden once the
    // action is gone.
    Gtk::Widget& form() { return *form_; }

private:
    void build();
    Gtk::Widget* buildRequestSections();
    Gtk::Widget* buildAutomation();
    void refresh();
    void refreshHeaders(const APIRequestSpec& request);
    void refreshResult();
    // Changes the action in the deck (nothing once it is gone).
    void change(const std::string& label, const std::function<void(SlideAction&)>& fn,
                const std::string& mergeKey = {});

    DeckEditor& editor_;
    Uuid slideId_;
    Uuid actionId_;
    std::unique_ptr<ActionRunner> runner_;
    bool refreshing_ = false;  // the fields are being set from the deck

    Gtk::Box* form_ = nullptr;
    Gtk::Widget* testArea_ = nullptr;  // the test button and its result line
    Gtk::Label* heading_ = nullptr;
    Gtk::Entry name_;
    Gtk::CheckButton requestKind_;
    Gtk::CheckButton scriptKind_;
    Gtk::Widget* requestSections_ = nullptr;
    Gtk::Widget* scriptSection_ = nullptr;
    Glib::RefPtr<Gtk::StringList> methods_;
    Gtk::DropDown* method_ = nullptr;
    Gtk::Entry url_;
    Gtk::Box headerRows_{Gtk::Orientation::VERTICAL};
    Gtk::Label noHeaders_;
    Gtk::Button addHeader_;
    std::vector<Uuid> shownHeaders_;  // the header ids the rows show, in order
    struct HeaderRow {
        Gtk::Entry* name = nullptr;
        Gtk::Entry* value = nullptr;
    };
    std::vector<HeaderRow> headerFields_;
    ActionCodeEditor body_;
    Gtk::Switch cookies_;
    ActionCodeEditor script_;
    Gtk::Switch reload_;
    Gtk::Switch autoRun_;
    StepperField delay_;
    Gtk::Switch repeats_;
    StepperField interval_;
    StepperField maxRuns_;
    Gtk::Button test_;
    Gtk::Image resultIcon_;
    Gtk::Spinner resultSpinner_;
    Gtk::Label result_;
    Signal<const DeckChange&>::Connection deckConnection_;
    Signal<>::Connection runnerConnection_;
};

}  // namespace lectern
