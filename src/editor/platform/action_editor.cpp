#include "editor/platform/action_editor.h"

#include <glib/gi18n.h>

#include <adwaita.h>

#include <algorithm>
#include <cctype>

#include "base/platform/accessible.h"
#include "editor/deck_edits.h"
#include "present/platform/soup_http_transport.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

// The methods offered; a method read from a deck that is not among them is
// added to the list for that action.
const std::vector<Glib::ustring> standardMethods{"GET", "POST", "PUT", "PATCH", "DELETE", "HEAD"};

Gtk::Widget& withMargins(Gtk::Widget& widget) {
    widget.set_margin(10);
    return widget;
}

}  // namespace

ActionEditor::ActionEditor(DeckEditor& editor, Gtk::Window& parent, const Uuid& slideId, const Uuid& actionId)
    : editor_(editor),
      slideId_(slideId),
      actionId_(actionId),
      // Test runs read the cookies of the same stores the live pages use.
      runner_(makeActionRunner(
          std::shared_ptr<CookieSource>(&WebServices::shared().sessions(), [](CookieSource*) {}))),
      body_("{ \"key\": \"value\" }", 120, _("Body")),
      script_("document.querySelector(\"#refresh\").click()", 160, _("Script")),
      delay_(DraftStepper::delay(), _("Delay")),
      interval_(DraftStepper::interval(), _("Interval")),
      maxRuns_(DraftStepper::maxRuns(), _("Maximum runs")) {
    set_transient_for(parent);
    set_modal(true);
    set_destroy_with_parent(true);
    set_hide_on_close(true);
    set_default_size(480, 760);
    add_css_class("action-editor");
    build();

    // Undo and redo reach the document from the sheet too; Escape closes it.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint keyval, guint, Gdk::ModifierType modifiers) {
            auto mods = modifiers & Gtk::Accelerator::get_default_mod_mask();
            bool ctrl = (mods & Gdk::ModifierType::CONTROL_MASK) == Gdk::ModifierType::CONTROL_MASK;
            bool shift = (mods & Gdk::ModifierType::SHIFT_MASK) == Gdk::ModifierType::SHIFT_MASK;
            if (ctrl && (keyval == GDK_KEY_z || keyval == GDK_KEY_Z)) {
                shift ? editor_.redo() : editor_.undo();
                return true;
            }
            if (keyval == GDK_KEY_Escape && mods == Gdk::ModifierType{}) {
                close();
                return true;
            }
            return false;
        },
        false);
    add_controller(keys);

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange&) { refresh(); });
    runnerConnection_ = runner_->changed().connect([this] { refreshResult(); });
    refresh();
    refreshResult();

    // Requests are mostly about where they go: the URL has the keyboard
    // when the sheet comes up.
    signal_map().connect([this] {
        const SlideAction* current = action();
        if (current && current->kindCase == SlideActionKindCase::pageScript) {
            script_.view().grab_focus();
        } else {
            url_.grab_focus();
        }
    });
}

ActionEditor::~ActionEditor() = default;

const Slide* ActionEditor::slide() const {
    auto index = editor_.deck().indexOfSlide(slideId_);
    return index ? &editor_.deck().slides[*index] : nullptr;
}

const SlideAction* ActionEditor::action() const {
    const Slide* owner = slide();
    if (!owner) return nullptr;
    for (const auto& candidate : owner->actions) {
        if (candidate.id == actionId_) return &candidate;
    }
    return nullptr;
}

void ActionEditor::change(const std::string& label, const std::function<void(SlideAction&)>& fn,
                          const std::string& mergeKey) {
    if (refreshing_ || !action()) return;
    Uuid actionId = actionId_;
    editor_.edit(
        label,
        [&](Deck deck) {
            return edits::updateSlide(std::move(deck), slideId_, [&](Slide& slide) {
                for (auto& candidate : slide.actions) {
                    if (candidate.id == actionId) fn(candidate);
                }
            });
        },
        mergeKey.empty() ? std::string() : mergeKey + ":" + actionId.string(), slideId_);
}

void ActionEditor::build() {
    GtkWidget* header = adw_header_bar_new();
    heading_ = Gtk::make_managed<Gtk::Label>(_("Untitled Action"));
    heading_->add_css_class("title");
    heading_->set_ellipsize(Pango::EllipsizeMode::END);
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), GTK_WIDGET(heading_->gobj()));
    auto* done = Gtk::make_managed<Gtk::Button>(_("Done"));
    done->add_css_class("suggested-action");
    done->signal_clicked().connect([this] { close(); });
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(done->gobj()));
    gtk_window_set_titlebar(gobj(), header);

    form_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 18);
    form_->set_margin(18);

    // Name.
    name_.set_placeholder_text(_("Untitled Action"));
    name_.set_enable_undo(false);
    setAccessibleLabel(name_, _("Name"));
    name_.signal_changed().connect([this] {
        std::string text = name_.get_text();
        change(_("Typing"), [text](SlideAction& a) { a.name = text; }, "action-name");
    });
    form_->append(*actionFormSection(_("Name"), name_));

    // Kind: the other kind's fields are kept, only the case changes.
    auto* kinds = actionFormCard();
    scriptKind_.set_group(requestKind_);
    appendToCard(*kinds, *actionFormRow(_("API Request"), _("Sends an HTTP request to your backend"), requestKind_));
    appendToCard(*kinds, *actionFormRow(_("Page Script"), _("Runs JavaScript in the slide's live view"), scriptKind_));
    requestKind_.signal_toggled().connect([this] {
        if (!requestKind_.get_active()) return;
        change(_("Change Action Kind"), [](SlideAction& a) { a.kindCase = SlideActionKindCase::apiRequest; });
    });
    scriptKind_.signal_toggled().connect([this] {
        if (!scriptKind_.get_active()) return;
        change(_("Change Action Kind"), [](SlideAction& a) { a.kindCase = SlideActionKindCase::pageScript; });
    });
    form_->append(*actionFormSection(_("Kind"), *kinds));

    requestSections_ = buildRequestSections();
    form_->append(*requestSections_);

    script_.changed = [this](const std::string& text) {
        change(_("Typing"), [text](SlideAction& a) { a.script = text; }, "action-script");
    };
    scriptSection_ = actionFormSection(
        _("Script"), script_, _("Runs as an async function in the page. A returned value appears in the test result."));
    form_->append(*scriptSection_);

    // Behavior.
    auto* behavior = actionFormCard();
    appendToCard(*behavior,
                 *actionFormSwitch(_("Reload live view on success"),
                                   _("Refresh the slide's web page after the action succeeds"), reload_));
    reload_.property_active().signal_changed().connect([this] {
        bool on = reload_.get_active();
        change(_("Reload Live View"), [on](SlideAction& a) { a.reloadsLiveView = on; });
    });
    form_->append(*actionFormSection(_("Behavior"), *behavior));

    form_->append(*buildAutomation());

    // Test: the action as it stands, on the sheet's own runner. It stays
    // under the form, so the outcome is in view whatever is scrolled.
    test_.set_label(_("Test"));
    test_.set_tooltip_text(_("Run this action now with the current settings"));
    test_.set_halign(Gtk::Align::START);
    test_.signal_clicked().connect([this] { test(); });
    auto* help = Gtk::make_managed<Gtk::Label>(_("Run this action now with the current settings"));
    help->add_css_class("caption");
    help->add_css_class("dim-label");
    help->set_xalign(0);
    help->set_wrap(true);
    result_.set_xalign(0);
    result_.set_wrap(true);
    result_.set_selectable(true);
    result_.set_hexpand(true);
    result_.add_css_class("monospace");
    result_.add_css_class("caption");
    resultIcon_.set_valign(Gtk::Align::START);
    resultSpinner_.set_valign(Gtk::Align::START);
    auto* resultLine = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    resultLine->append(resultIcon_);
    resultLine->append(resultSpinner_);
    resultLine->append(result_);
    auto* testBox = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    testBox->append(test_);
    testBox->append(*help);
    testBox->append(*resultLine);
    testArea_ = testBox;

    auto* scroller = Gtk::make_managed<Gtk::ScrolledWindow>();
    scroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller->set_vexpand(true);
    // The form follows the keyboard focus, so a field reached with Tab is in view.
    auto* viewport = Gtk::make_managed<Gtk::Viewport>(Glib::RefPtr<Gtk::Adjustment>(), Glib::RefPtr<Gtk::Adjustment>());
    viewport->set_scroll_to_focus(true);
    viewport->set_child(*form_);
    scroller->set_child(*viewport);
    testBox->set_margin(18);
    testBox->set_margin_top(12);
    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    content->append(*scroller);
    content->append(*Gtk::make_managed<Gtk::Separator>(Gtk::Orientation::HORIZONTAL));
    content->append(*testBox);
    set_child(*content);
}

Gtk::Widget* ActionEditor::buildRequestSections() {
    auto* sections = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 18);

    // Method and URL.
    methods_ = Gtk::StringList::create(standardMethods);
    method_ = Gtk::make_managed<Gtk::DropDown>(methods_);
    setAccessibleLabel(*method_, _("Method"));
    method_->property_selected().signal_changed().connect([this] {
        auto selected = method_->get_selected();
        if (selected == GTK_INVALID_LIST_POSITION || selected >= methods_->get_n_items()) return;
        std::string method = methods_->get_string(selected);
        change(_("Change Method"), [method](SlideAction& a) { a.request.method = method; });
    });
    url_.set_placeholder_text("https://127.0.0.1:8000/api/…");
    url_.set_hexpand(true);
    url_.set_input_purpose(Gtk::InputPurpose::URL);
    url_.set_enable_undo(false);
    setAccessibleLabel(url_, _("URL"));
    url_.signal_changed().connect([this] {
        std::string text = url_.get_text();
        change(_("Typing"), [text](SlideAction& a) { a.request.urlString = text; }, "action-url");
    });
    auto* target = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    target->append(*method_);
    target->append(url_);
    sections->append(*actionFormSection(_("Request"), *target));

    // Headers.
    noHeaders_.set_text(_("No custom headers"));
    noHeaders_.add_css_class("dim-label");
    noHeaders_.set_xalign(0);
    auto* headers = actionFormCard();
    headers->append(withMargins(noHeaders_));
    headers->append(headerRows_);
    addHeader_.set_icon_name("list-add-symbolic");
    addHeader_.add_css_class("flat");
    addHeader_.set_tooltip_text(_("Add Header"));
    setAccessibleLabel(addHeader_, _("Add Header"));
    addHeader_.signal_clicked().connect(
        [this] { change(_("Add Header"), [](SlideAction& a) { a.request.headers.push_back({}); }); });
    sections->append(*actionFormSection(_("Headers"), *headers, {}, &addHeader_));

    // Body.
    body_.changed = [this](const std::string& text) {
        change(_("Typing"), [text](SlideAction& a) { a.request.body = text; }, "action-body");
    };
    sections->append(
        *actionFormSection(_("Body"), body_, _("Sent as application/json unless a Content-Type header is set.")));

    auto* cookies = actionFormCard();
    appendToCard(*cookies, *actionFormSwitch(_("Send profile cookies"),
                                             _("Attach the slide's browser-profile cookies for this URL"), cookies_));
    cookies_.property_active().signal_changed().connect([this] {
        bool on = cookies_.get_active();
        change(_("Send Profile Cookies"), [on](SlideAction& a) { a.request.useProfileCookies = on; });
    });
    sections->append(*cookies);
    return sections;
}

Gtk::Widget* ActionEditor::buildAutomation() {
    auto* card = actionFormCard();
    appendToCard(*card, *actionFormSwitch(_("Run when slide appears"), _("Only while presenting"), autoRun_));
    autoRun_.property_active().signal_changed().connect([this] {
        bool on = autoRun_.get_active();
        change(_("Run Automatically"), [on](SlideAction& a) { a.autoRun = on; });
    });
    appendToCard(*card, *actionFormRow(_("Delay"), {}, delay_));
    delay_.committed = [this](double value) {
        change(_("Change Delay"), [value](SlideAction& a) { a.autoRunDelaySeconds = value; });
    };
    appendToCard(*card, *actionFormSwitch(_("Repeat"), {}, repeats_));
    repeats_.property_active().signal_changed().connect([this] {
        bool on = repeats_.get_active();
        change(_("Repeat"), [on](SlideAction& a) { a.repeats = on; });
    });
    appendToCard(*card, *actionFormRow(_("Interval"), {}, interval_));
    interval_.committed = [this](double value) {
        change(_("Change Interval"), [value](SlideAction& a) { a.repeatIntervalSeconds = value; });
    };
    appendToCard(*card, *actionFormRow(_("Maximum runs"), _("0 repeats until the slide changes"), maxRuns_));
    maxRuns_.committed = [this](double value) {
        auto runs = static_cast<std::int64_t>(value);
        change(_("Change Maximum Runs"), [runs](SlideAction& a) { a.repeatMaxRuns = runs; });
    };
    return actionFormSection(_("Automation"), *card);
}

void ActionEditor::refresh() {
    const SlideAction* current = action();
    if (!current) {
        // The slide or the action was deleted underneath the sheet.
        form_->set_visible(false);
        testArea_->set_visible(false);
        heading_->set_text("");
        return;
    }
    form_->set_visible(true);
    testArea_->set_visible(true);
    refreshing_ = true;
    heading_->set_text(current->name.empty() ? _("Untitled Action") : current->name);
    set_title(heading_->get_text());
    if (std::string(name_.get_text()) != current->name) name_.set_text(current->name);
    bool request = current->kindCase == SlideActionKindCase::apiRequest;
    (request ? requestKind_ : scriptKind_).set_active(true);
    requestSections_->set_visible(request);
    scriptSection_->set_visible(!request);

    const APIRequestSpec& spec = current->request;
    std::string method = spec.method;
    for (char& c : method) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    guint position = GTK_INVALID_LIST_POSITION;
    for (guint i = 0; i < methods_->get_n_items(); ++i) {
        if (std::string(methods_->get_string(i)) == method) position = i;
    }
    if (position == GTK_INVALID_LIST_POSITION && !method.empty()) {
        methods_->append(method);
        position = methods_->get_n_items() - 1;
    }
    if (position != GTK_INVALID_LIST_POSITION && method_->get_selected() != position) method_->set_selected(position);
    if (std::string(url_.get_text()) != spec.urlString) url_.set_text(spec.urlString);
    refreshHeaders(spec);
    body_.setText(spec.body);
    cookies_.set_active(spec.useProfileCookies);
    script_.setText(current->script);
    reload_.set_active(current->reloadsLiveView);
    autoRun_.set_active(current->autoRun);
    delay_.setValue(current->autoRunDelaySeconds);
    repeats_.set_active(current->repeats);
    interval_.setValue(current->repeatIntervalSeconds);
    maxRuns_.setValue(static_cast<double>(current->repeatMaxRuns));
    refreshing_ = false;
}

void ActionEditor::refreshHeaders(const APIRequestSpec& request) {
    std::vector<Uuid> ids;
    for (const auto& header : request.headers) ids.push_back(header.id);
    if (ids != shownHeaders_) {
        // Rows come and go only when headers do, so typing keeps its field.
        while (auto* child = headerRows_.get_first_child()) headerRows_.remove(*child);
        headerFields_.clear();
        shownHeaders_ = ids;
        for (std::size_t i = 0; i < ids.size(); ++i) {
            Uuid id = ids[i];
            auto edit = [this, id](const char* key, std::function<void(HTTPHeaderField&)> fn) {
                change(_("Typing"),
                       [id, fn](SlideAction& a) {
                           for (auto& header : a.request.headers) {
                               if (header.id == id) fn(header);
                           }
                       },
                       std::string(key) + id.string());
            };
            auto* name = Gtk::make_managed<Gtk::Entry>();
            name->set_placeholder_text(_("Name"));
            name->set_enable_undo(false);
            setAccessibleLabel(*name, _("Header Name"));
            name->signal_changed().connect([name, edit] {
                std::string text = name->get_text();
                edit("header-name:", [text](HTTPHeaderField& h) { h.name = text; });
            });
            auto* value = Gtk::make_managed<Gtk::Entry>();
            value->set_placeholder_text(_("Value"));
            value->set_hexpand(true);
            value->set_enable_undo(false);
            setAccessibleLabel(*value, _("Header Value"));
            value->signal_changed().connect([value, edit] {
                std::string text = value->get_text();
                edit("header-value:", [text](HTTPHeaderField& h) { h.value = text; });
            });
            auto* remove = Gtk::make_managed<Gtk::Button>();
            remove->set_icon_name("list-remove-symbolic");
            remove->add_css_class("flat");
            remove->set_tooltip_text(_("Remove Header"));
            setAccessibleLabel(*remove, _("Remove Header"));
            remove->signal_clicked().connect([this, id] {
                change(_("Remove Header"), [id](SlideAction& a) {
                    std::erase_if(a.request.headers, [id](const HTTPHeaderField& h) { return h.id == id; });
                });
            });
            auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
            row->set_margin(6);
            row->append(*name);
            row->append(*value);
            row->append(*remove);
            if (i > 0) headerRows_.append(*Gtk::make_managed<Gtk::Separator>(Gtk::Orientation::HORIZONTAL));
            headerRows_.append(*row);
            headerFields_.push_back({name, value});
        }
    }
    for (std::size_t i = 0; i < headerFields_.size(); ++i) {
        const auto& header = request.headers[i];
        if (std::string(headerFields_[i].name->get_text()) != header.name) headerFields_[i].name->set_text(header.name);
        if (std::string(headerFields_[i].value->get_text()) != header.value) headerFields_[i].value->set_text(header.value);
    }
    noHeaders_.set_visible(ids.empty());
    headerRows_.set_visible(!ids.empty());
}

void ActionEditor::test() {
    const Slide* owner = slide();
    const SlideAction* current = action();
    if (!owner || !current) return;
    // The fields commit first, so a number still being typed counts.
    delay_.commit();
    interval_.commit();
    maxRuns_.commit();
    owner = slide();
    current = action();
    if (!owner || !current) return;
    runner_->run(*current, *owner, editor_.state().liveWebViews().get());
}

void ActionEditor::refreshResult() {
    using Kind = ActionRunner::RunState::Kind;
    auto state = runner_->state(actionId_);
    resultSpinner_.set_visible(state.kind == Kind::running);
    resultSpinner_.set_spinning(state.kind == Kind::running);
    resultIcon_.set_visible(state.kind == Kind::success || state.kind == Kind::failure);
    resultIcon_.set_from_icon_name(state.kind == Kind::success ? "object-select-symbolic" : "window-close-symbolic");
    setAccessibleLabel(resultIcon_, state.kind == Kind::success ? _("Succeeded") : _("Failed"));
    for (const char* name : {"success", "error", "dim-label"}) {
        result_.remove_css_class(name);
        resultIcon_.remove_css_class(name);
    }
    const char* style = state.kind == Kind::success ? "success" : state.kind == Kind::failure ? "error" : "dim-label";
    result_.add_css_class(style);
    resultIcon_.add_css_class(style);
    result_.set_visible(state.kind != Kind::idle);
    result_.set_text(state.kind == Kind::running ? _("Running…") : state.text);
}

}  // namespace lectern
