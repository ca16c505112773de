#include "editor/platform/action_list.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "editor/platform/action_editor.h"
#include "present/action_trust.h"
#include "present/platform/soup_http_transport.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

Gtk::Button* iconButton(const char* icon, const char* label) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    button->set_tooltip_text(label);
    setAccessibleLabel(*button, label);
    button->set_valign(Gtk::Align::CENTER);
    button->add_css_class("flat");
    return button;
}

const char* kindName(SlideActionKindCase kind) {
    return kind == SlideActionKindCase::apiRequest ? _("API Request") : _("Page Script");
}

}  // namespace

ActionList::ActionList(DeckEditor& editor)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 6),
      editor_(editor),
      // Requests read the cookies of the same stores the live pages use.
      runner_(makeActionRunner(
          std::shared_ptr<CookieSource>(&WebServices::shared().sessions(), [](CookieSource*) {}))) {
    add_css_class("action-list");
    set_margin_start(12);
    set_margin_end(12);

    auto* title = Gtk::make_managed<Gtk::Label>(_("Actions"));
    title->add_css_class("heading");
    title->set_xalign(0);
    title->set_hexpand(true);

    append(*title);

    rows_.add_css_class("boxed-list");
    rows_.set_selection_mode(Gtk::SelectionMode::NONE);
    // A double click (or Enter) on a row opens its editor.
    rows_.set_activate_on_single_click(false);
    rows_.signal_row_activated().connect([this](Gtk::ListBoxRow* row) {
        auto index = static_cast<std::size_t>(row->get_index());
        if (index < rowStates_.size()) openEditor(rowStates_[index].id);
    });
    setAccessibleLabel(rows_, _("Actions"));
    append(rows_);

    empty_.set_text(_("No actions on this slide"));
    empty_.add_css_class("dim-label");
    empty_.add_css_class("caption");
    empty_.set_xalign(0);
    append(empty_);

    // Adding: a request or a page script, side by side under the list.
    auto* adding = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    adding->set_homogeneous(true);
    for (auto* button : {&addRequest_, &addScript_}) {
        auto kind = button == &addRequest_ ? SlideActionKindCase::apiRequest : SlideActionKindCase::pageScript;
        auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
        content->set_halign(Gtk::Align::CENTER);
        auto* icon = Gtk::make_managed<Gtk::Image>();
        icon->set_from_icon_name("list-add-symbolic");
        content->append(*icon);
        content->append(*Gtk::make_managed<Gtk::Label>(kindName(kind)));
        button->set_child(*content);
        button->set_tooltip_text(std::string(_("Add ")) + kindName(kind));
        setAccessibleLabel(*button, std::string(_("Add ")) + kindName(kind));
        button->signal_clicked().connect([this, kind] { addAction(kind); });
        adding->append(*button);
    }
    append(*adding);

    deckConnection_ = editor_.deckChanged().connect([this](const DeckChange&) { refresh(); });
    stateConnection_ = editor_.state().changed().connect([this](PresentationField field) {
        if (field == PresentationField::current) refresh();
    });
    runnerConnection_ = runner_->changed().connect([this] { refreshRunStates(); });
    refresh();
}

ActionList::~ActionList() = default;

const SlideAction* ActionList::find(const Uuid& actionId) const {
    const Slide* slide = editor_.currentSlide();
    if (!slide) return nullptr;
    for (const auto& action : slide->actions) {
        if (action.id == actionId) return &action;
    }
    return nullptr;
}

void ActionList::addAction(SlideActionKindCase kind) {
    SlideAction action;
    action.kindCase = kind;
    Uuid id = action.id;
    if (editor_.editCurrentSlide(_("Add Action"), [&](Slide& slide) { slide.actions.push_back(action); })) {
        openEditor(id);
    }
}

void ActionList::openEditor(const Uuid& actionId) {
    const Slide* slide = editor_.currentSlide();
    if (!slide || !find(actionId)) return;
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    if (!window) return;
    sheet_ = std::make_unique<ActionEditor>(editor_, *window, slide->id, actionId);
    sheet_->signal_hide().connect([this] {
        // Let go of the sheet once its own signal handlers are done.
        Glib::signal_idle().connect_once(sigc::track_obj(
            [this] {
                if (sheet_ && !sheet_->get_visible()) sheet_.reset();
            },
            *this));
    });
    sheet_->present();
}

void ActionList::testRun(const Uuid& actionId) {
    const Slide* slide = editor_.currentSlide();
    const SlideAction* action = find(actionId);
    if (!slide || !action) return;
    auto fingerprint = ActionTrust::fingerprint(*action, *slide);
    if (!fingerprint || !ActionTrust::trustedFingerprints(editor_.preferences()).contains(*fingerprint)) {
        editor_.state().setActionsAwaitingTrust(ActionTrust::requests(editor_.deck(), editor_.preferences()));
        return;
    }
    runner_->run(*action, *slide, editor_.state().liveWebViews().get());
}

void ActionList::moveAction(const Uuid& actionId, int offset) {
    editor_.editCurrentSlide(_("Move Action"), [&](Slide& slide) {
        auto& actions = slide.actions;
        for (std::size_t i = 0; i < actions.size(); ++i) {
            if (actions[i].id != actionId) continue;
            auto target = static_cast<std::ptrdiff_t>(i) + offset;
            if (target < 0 || target >= static_cast<std::ptrdiff_t>(actions.size())) return;
            std::swap(actions[i], actions[static_cast<std::size_t>(target)]);
            return;
        }
    });
}

void ActionList::removeAction(const Uuid& actionId) {
    editor_.editCurrentSlide(_("Remove Action"), [&](Slide& slide) {
        std::erase_if(slide.actions, [&](const SlideAction& action) { return action.id == actionId; });
    });
}

Gtk::ListBoxRow* ActionList::makeRow(const Slide& slide, const SlideAction& action, std::size_t index) {
    auto* name = Gtk::make_managed<Gtk::Label>(ActionRunner::displayName(action));
    name->set_xalign(0);
    name->set_ellipsize(Pango::EllipsizeMode::END);
    auto* kind = Gtk::make_managed<Gtk::Label>(kindName(action.kindCase));
    kind->set_xalign(0);
    kind->add_css_class("caption");
    kind->add_css_class("dim-label");
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
    texts->set_hexpand(true);
    texts->set_valign(Gtk::Align::CENTER);
    texts->append(*name);
    texts->append(*kind);
    if (action.autoRun) {
        auto* automatic = Gtk::make_managed<Gtk::Label>(_("Runs automatically while presenting"));
        automatic->set_xalign(0);
        automatic->set_wrap(true);
        automatic->add_css_class("caption");
        automatic->add_css_class("accent");
        texts->append(*automatic);
    }
    auto* outcome = Gtk::make_managed<Gtk::Label>();
    outcome->set_xalign(0);
    outcome->set_ellipsize(Pango::EllipsizeMode::END);
    outcome->add_css_class("caption");
    texts->append(*outcome);

    auto* spinner = Gtk::make_managed<Gtk::Spinner>();
    spinner->set_valign(Gtk::Align::CENTER);
    Uuid id = action.id;
    auto* run = iconButton("media-playback-start-symbolic", _("Test Run"));
    run->signal_clicked().connect([this, id] { testRun(id); });
    auto* edit = iconButton("document-edit-symbolic", _("Edit Action"));
    edit->signal_clicked().connect([this, id] { openEditor(id); });

    // Less frequent: moving and removing, in a menu of their own.
    auto* more = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    auto* popover = Gtk::make_managed<Gtk::Popover>();
    auto menuItem = [&](const char* label, std::function<void()> act, bool enabled) {
        auto* item = Gtk::make_managed<Gtk::Button>(label);
        item->add_css_class("flat");
        item->set_sensitive(enabled);
        item->signal_clicked().connect([this, popover, act = std::move(act)] {
            popover->popdown();
            // After the popover is gone: the edit rebuilds the rows.
            Glib::signal_idle().connect_once(sigc::track_obj(act, *this));
        });
        more->append(*item);
    };
    menuItem(_("Move Up"), [this, id] { moveAction(id, -1); }, index > 0);
    menuItem(_("Move Down"), [this, id] { moveAction(id, 1); }, index + 1 < slide.actions.size());
    menuItem(_("Remove"), [this, id] { removeAction(id); }, true);
    popover->set_child(*more);
    auto* menu = Gtk::make_managed<Gtk::MenuButton>();
    menu->set_icon_name("view-more-symbolic");
    menu->set_tooltip_text(_("More"));
    setAccessibleLabel(*menu, _("More"));
    menu->set_valign(Gtk::Align::CENTER);
    menu->add_css_class("flat");
    menu->set_popover(*popover);

    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 4);
    box->set_margin_start(10);
    box->set_margin_end(4);
    box->set_margin_top(6);
    box->set_margin_bottom(6);
    box->append(*texts);
    box->append(*spinner);
    box->append(*run);
    box->append(*edit);
    box->append(*menu);
    auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
    row->set_child(*box);
    setAccessibleLabel(*row, ActionRunner::displayName(action));
    rowStates_.push_back({id, outcome, spinner});
    return row;
}

void ActionList::refresh() {
    while (auto* row = rows_.get_row_at_index(0)) rows_.remove(*row);
    rowStates_.clear();
    const Slide* slide = editor_.currentSlide();
    set_sensitive(slide != nullptr);
    if (slide) {
        for (std::size_t i = 0; i < slide->actions.size(); ++i) {
            rows_.append(*makeRow(*slide, slide->actions[i], i));
        }
    }
    rows_.set_visible(!rowStates_.empty());
    empty_.set_visible(rowStates_.empty());
    refreshRunStates();
}

void ActionList::refreshRunStates() {
    using Kind = ActionRunner::RunState::Kind;
    for (const auto& row : rowStates_) {
        auto state = runner_->state(row.id);
        row.spinner->set_visible(state.kind == Kind::running);
        row.spinner->set_spinning(state.kind == Kind::running);
        row.outcome->set_visible(state.kind != Kind::idle);
        row.outcome->set_text(state.kind == Kind::running ? _("Running…") : state.text);
        row.outcome->set_tooltip_text(state.text);
        for (const char* name : {"dim-label", "success", "error"}) row.outcome->remove_css_class(name);
        row.outcome->add_css_class(state.kind == Kind::success   ? "success"
                                   : state.kind == Kind::failure ? "error"
                                                                 : "dim-label");
    }
}

}  // namespace lectern
