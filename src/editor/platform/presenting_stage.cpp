#include "editor/platform/presenting_stage.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>

#include "editor/deck_edits.h"
#include "base/platform/accessible.h"
#include "base/platform/style.h"
#include "base/translation.h"
#include "editor/platform/stage_editing.h"
#include "present/platform/hud_bar.h"
#include "slides/platform/overview_grid.h"
#include "slides/platform/stage_view.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

const char* const style = R"(
.stage-cover.black { background-color: #000000; }
.stage-cover.white { background-color: #ffffff; }
.slide-number { padding: 8px 16px; margin: 24px; border-radius: 10px; font-size: 1.25em; }
)";

}  // namespace

PresentingStage::PresentingStage(DeckEditor& editor, Scheduler& scheduler, Worker& worker, PresenterHud& hudController)
    : editor_(editor), state_(editor.state()), hudController_(hudController), keys_(state_, scheduler) {
    installStyleOnce(style);
    stage_ = Gtk::make_managed<StageView>();
    cardConnection_ = stage_->cardClicked().connect([this](const std::string& target) {
        // In the editor a click on a card selects it; the jump is the talk's.
        if (!state_.editorOpen()) state_.route(target, editor_.deck().slides);
    });
    cardChosenConnection_ = stage_->cardChosen().connect([this](std::size_t index) {
        const Slide* slide = editor_.currentSlide();
        if (state_.editorOpen() && slide && index < slide->links.size()) stage_->setSelectedCard(slide->links[index].id);
    });
    hud_ = Gtk::make_managed<HudBar>(state_, [this]() -> const Deck& { return editor_.deck(); });
    hud_->set_margin_bottom(24);
    hudHoverConnection_ = hud_->hovering().connect([this](bool hovering) { hudController_.setHovering(hovering); });

    auto& web = WebServices::shared();
    webCard_ = Gtk::make_managed<WebCard>(web.pages(), scheduler, &web.prefetcher(), state_.windowId(),
                                          state_.liveWebViews());
    webCard_->setPictures(&web.pictures());
    webZoomConnection_ = webCard_->zoomRequested().connect([this](double zoom) { setCurrentWebZoom(zoom); });
    webAddressConnection_ = webCard_->addressCommitted().connect([this](std::optional<std::string> url) {
        editor_.editCurrentSlide(_("Set Web Address"), [&url](Slide& slide) { slide.url = url; });
    });
    webCard_->setProfileNames([this](const Uuid& id) {
        const BrowserProfile* profile = editor_.deck().profile(id);
        return profile ? profile->name : std::string();
    });
    webCardStyle_ = Gtk::CssProvider::create();
    webCard_->get_style_context()->add_provider(webCardStyle_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

    auto* stageOverlay = Gtk::make_managed<Gtk::Overlay>();
    stageOverlay->set_vexpand(true);
    stageOverlay->set_hexpand(true);
    stageOverlay->set_child(*stage_);
    // The live page lies over the slide's web area; the editing fields over
    // the texts they edit; the HUD over everything.
    stageOverlay->add_overlay(*webCard_);
    editing_ = std::make_unique<StageEditing>(editor_, *stageOverlay, *stage_, worker, [this] { return paintOptions(); });
    editingLooksConnection_ = editing_->looksChanged().connect([this] { showCurrentSlide(); });
    stageOverlay->add_overlay(*hud_);
    // The slide number being typed, in a corner; the cover over all of it,
    // the live page and the HUD too. A click on the cover takes it away.
    numberBox_ = Gtk::make_managed<Gtk::Label>();
    numberBox_->add_css_class("osd");
    numberBox_->add_css_class("slide-number");
    numberBox_->add_css_class("numeric");
    numberBox_->set_halign(Gtk::Align::END);
    numberBox_->set_valign(Gtk::Align::END);
    numberBox_->set_can_target(false);
    stageOverlay->add_overlay(*numberBox_);
    cover_ = Gtk::make_managed<Gtk::Box>();
    cover_->add_css_class("stage-cover");
    setAccessibleLabel(*cover_, _("Stage blanked"));
    auto coverClick = Gtk::GestureClick::create();
    coverClick->signal_released().connect([this](int, double, double) { keys_.click(); });
    cover_->add_controller(coverClick);
    stageOverlay->add_overlay(*cover_);
    keysConnection_ = keys_.changed().connect([this] { refreshKeys(); });
    keys_.setLeaveEditor([this] { state_.togglePresentingAsking(editor_.deck()); },
                         [this] { state_.toggleEditorAsking(editor_.deck()); });
    refreshKeys();
    stageOverlay->signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& allocation) {
            if (child != webCard_) return false;
            placeWebCard(allocation);
            return true;
        },
        false);
    // The HUD comes up when the pointer nears the bottom edge of the stage
    // alone, and goes two seconds after it leaves.
    auto motion = Gtk::EventControllerMotion::create();
    auto moved = [this, stageOverlay](double, double y) {
        if (!state_.editorOpen()) hudController_.pointerMoved(stageOverlay->get_height() - y);
    };
    motion->signal_enter().connect(moved);
    motion->signal_motion().connect(moved);
    motion->signal_leave().connect([this] {
        if (!state_.editorOpen()) hudController_.pointerMoved(-1);
    });
    stageOverlay->add_controller(motion);

    overview_ = Gtk::make_managed<OverviewGrid>();
    tileConnection_ = overview_->tileChosen().connect([this](std::int64_t index) {
        state_.select(index, static_cast<std::int64_t>(editor_.deck().slides.size()));
    });

    set_transition_type(Gtk::StackTransitionType::CROSSFADE);
    set_transition_duration(200);
    add(*stageOverlay, "stage");
    add(*overview_, "overview");
    set_visible_child("stage");
    set_vexpand(true);
    set_hexpand(true);
    refreshOverview();
}

// The window takes the live page down before its widgets go; by the time
// the stage is destroyed its children (the web card among them) are gone.
PresentingStage::~PresentingStage() = default;

SlidePaintOptions PresentingStage::paintOptions() const {
    const Deck& deck = editor_.deck();
    SlidePaintOptions options;
    options.theme = deck.theme;
    options.deckAccentHex = deck.accentHex;
    options.deckTitle = deck.title.value_or("");
    return options;
}

void PresentingStage::showCurrentSlide() {
    const Slide* slide = editor_.currentSlide();
    // The fields first, so that the stage paints around the ones in use.
    editing_->update(state_.editorOpen() && !state_.presenting());
    SlidePaintOptions options = editing_->paintOptions();
    // The live page covers the web area: the painter leaves it empty.
    options.drawWebPlaceholder = !(slide && slide->layout == SlideLayout::web);
    if (slide && state_.editorOpen()) {
        // The editor shows the whole slide: every step, every card.
        Slide whole = *slide;
        whole.reveal = RevealMode::all;
        stage_->show(&whole, 0, options);
    } else {
        stage_->show(slide, state_.revealIndex(), options);
    }
    // A selection belongs to the slide it was made on, and to the editor.
    bool keepsSelection = slide && state_.editorOpen() && stage_->selectedCard() &&
                          std::any_of(slide->links.begin(), slide->links.end(),
                                      [&](const SlideLink& link) { return link.id == *stage_->selectedCard(); });
    if (!keepsSelection) stage_->setSelectedCard(std::nullopt);
    refreshWebPage();
}

void PresentingStage::refreshWebPage() {
    webCard_->setTheme(editor_.deck().theme);
    webCard_->show(editor_.currentSlide(), state_.editorOpen());
    webCard_->queue_resize();
}

void PresentingStage::refreshChrome() {
    stage_->setFramed(state_.editorOpen());
    showCurrentSlide();
}

void PresentingStage::refreshOverview() {
    // The grid makes a tile per slide: it follows the deck only while it is
    // shown (a move in a long deck would otherwise rebuild every tile).
    if (state_.overview()) {
        if (overviewStale_) {
            // Web slides show their pages as they last looked.
            overview_->setDeck(editor_.deck(), paintOptions(),
                               [](const Slide& slide) { return WebServices::shared().pictures().pageOf(slide); });
        }
        overviewStale_ = false;
        overview_->setCurrent(state_.current());
    }
    set_visible_child(state_.overview() ? "overview" : "stage");
}

void PresentingStage::deckChanged() {
    overviewStale_ = true;
    refreshOverview();
}

void PresentingStage::refreshKeys() {
    StageCover cover = keys_.cover();
    cover_->set_visible(cover != StageCover::none);
    cover_->remove_css_class(cover == StageCover::white ? "black" : "white");
    if (cover != StageCover::none) cover_->add_css_class(cover == StageCover::white ? "white" : "black");
    std::string text;
    if (!keys_.typedNumber().empty()) {
        // TRANSLATORS: shown while the presenter types a slide number to jump to.
        text = formatText(_("Go to slide %s"), keys_.typedNumber().c_str());
    } else if (auto missing = keys_.missingNumber()) {
        text = formatText(_("There is no slide %s"), std::to_string(*missing).c_str());
    }
    numberBox_->set_text(text);
    numberBox_->set_visible(!text.empty());
}

void PresentingStage::placeWebCard(Gdk::Rectangle& allocation) {
    auto area = stage_->webArea();
    if (!area) {
        allocation = Gdk::Rectangle(0, 0, 1, 1);
        return;
    }
    WebServices::shared().pages().setHiddenSize(static_cast<int>(area->rect.width), static_cast<int>(area->rect.height));
    allocation = Gdk::Rectangle(static_cast<int>(area->rect.x), static_cast<int>(area->rect.y),
                                std::max(1, static_cast<int>(area->rect.width)),
                                std::max(1, static_cast<int>(area->rect.height)));
    // The page's corners follow the slide's rounded media frame at any size.
    double radius = std::round(area->radius);
    if (radius != webCardRadius_) {
        webCardRadius_ = radius;
        webCardStyle_->load_from_data(".web-card { border-radius: " + std::to_string(static_cast<int>(radius)) + "px; }");
    }
}

void PresentingStage::setCurrentWebZoom(double zoom) {
    const Slide* slide = editor_.currentSlide();
    if (!slide || slide->layout != SlideLayout::web || slide->webZoom == zoom) return;
    editor_.editCurrentSlide(_("Change Page Zoom"), [zoom](Slide& changed) { changed.webZoom = zoom; });
}

}  // namespace lectern
