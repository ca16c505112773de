#include "present/presenter_keys.h"

#include <algorithm>

namespace lectern {

namespace {

// Shift, Control, Alt, Super, Caps Lock and the like: pressed alone they are
// on their way to a combination, not a key of their own.
bool isModifierKey(std::uint32_t key) {
    return (key >= 0xffe1 && key <= 0xffee) || (key >= 0xfe01 && key <= 0xfe13) || key == 0xff7e || key == 0xff7f;
}

std::optional<char> digitOf(std::uint32_t key) {
    if (key >= '0' && key <= '9') return static_cast<char>(key);
    if (key >= keys::keypad0 && key <= keys::keypad0 + 9) return static_cast<char>('0' + (key - keys::keypad0));
    return std::nullopt;
}

// The first and last slides a talk shows (every slide skipped: the ends).
std::int64_t firstShown(const std::vector<Slide>& slides) {
    auto found = std::find_if(slides.begin(), slides.end(), [](const Slide& slide) { return !slide.isSkipped; });
    return found == slides.end() ? 0 : found - slides.begin();
}

std::int64_t lastShown(const std::vector<Slide>& slides) {
    auto found = std::find_if(slides.rbegin(), slides.rend(), [](const Slide& slide) { return !slide.isSkipped; });
    return static_cast<std::int64_t>(slides.size()) - 1 - (found == slides.rend() ? 0 : found - slides.rbegin());
}

}  // namespace

PresenterKeys::PresenterKeys(PresentationState& state, Scheduler& scheduler) : state_(state), scheduler_(scheduler) {
    // Back in the editor, the stage is never covered and no number waits.
    stateConnection_ = state_.changed().connect([this](PresentationField field) {
        if (field != PresentationField::editorOpen || !state_.editorOpen()) return;
        setCover(StageCover::none);
        setTyped({});
        setMissing(std::nullopt);
    });
}

PresenterKeys::~PresenterKeys() {
    scheduler_.cancel(typingTimer_);
    scheduler_.cancel(noticeTimer_);
}

bool PresenterKeys::press(std::uint32_t key, KeyModifiers m, KeyFocus focus, const std::vector<Slide>& slides) {
    if (isModifierKey(key)) return false;
    // A covered stage: whatever the key, it only uncovers.
    if (cover_ != StageCover::none) {
        setCover(StageCover::none);
        return true;
    }
    const bool bare = !m.shift && !m.control && !m.alt && !m.super;
    const bool shiftOnly = m.shift && !m.control && !m.alt && !m.super;
    if (key == keys::f5 && (bare || shiftOnly)) {
        present(bare, slides);
        return true;
    }
    if (focus == KeyFocus::text) return false;

    const bool talk = !state_.editorOpen();
    if (talk && focus == KeyFocus::stage) {
        if (typeNumber(key, bare, slides)) return true;
        if (bare || shiftOnly) {
            switch (key) {
            case 'b': case 'B': case '.': setCover(StageCover::black); return true;
            case 'w': case 'W': case ',': setCover(StageCover::white); return true;
            default: break;
            }
        }
        // In the overview, Home and End move through the grid's tiles.
        if (bare && !state_.overview() && !slides.empty() && (key == keys::home || key == keys::end)) {
            jumpTo(key == keys::home ? firstShown(slides) : lastShown(slides));
            return true;
        }
    }
    // Presenter remotes: Page Down and Space forward, Page Up back, unless a
    // live page has the keyboard (typing a space, scrolling it).
    if (bare && focus != KeyFocus::livePage) {
        if (key == keys::pageDown || key == keys::space) key = keys::right;
        if (key == keys::pageUp) key = keys::left;
    }
    switch (keyCommand(key, m, state_.editorOpen())) {
    case KeyCommand::passOn: return false;
    case KeyCommand::next: state_.next(slides); return true;
    case KeyCommand::previous: state_.previous(slides); return true;
    case KeyCommand::toggleOverview: state_.toggleOverview(); return true;
    case KeyCommand::nextSlideDirect: state_.nextSlideDirect(slides); return true;
    case KeyCommand::previousSlideDirect: state_.previousSlideDirect(slides); return true;
    }
    return false;
}

bool PresenterKeys::typeNumber(std::uint32_t key, bool bare, const std::vector<Slide>& slides) {
    // Ctrl+0 and the like are commands, which end the number.
    auto digit = bare ? digitOf(key) : std::nullopt;
    if (digit) {
        if (typed_.size() < maxDigits) {
            setMissing(std::nullopt);
            setTyped(typed_ + *digit);
        }
        // Every digit gives the presenter another pause to go on.
        scheduler_.cancel(typingTimer_);
        typingTimer_ = scheduler_.after(numberTimeout, [this] {
            typingTimer_ = 0;
            setTyped({});
        });
        return true;
    }
    if (typed_.empty()) return false;
    if (bare && key == keys::backSpace) {
        setTyped(typed_.substr(0, typed_.size() - 1));
        return true;
    }
    if (bare && (key == keys::returnKey || key == keys::keypadEnter)) {
        std::int64_t number = std::stoll(typed_);
        setTyped({});
        if (number >= 1 && number <= static_cast<std::int64_t>(slides.size())) {
            jumpTo(number - 1);
            state_.setOverview(false);
        } else {
            setMissing(number);
        }
        return true;
    }
    // Escape drops the number; any other key drops it and does its own work.
    setTyped({});
    return bare && key == keys::escape;
}

void PresenterKeys::setTyped(std::string typed) {
    if (typed.empty()) {
        scheduler_.cancel(typingTimer_);
        typingTimer_ = 0;
    }
    if (typed == typed_) return;
    typed_ = std::move(typed);
    changed_.emit();
}

void PresenterKeys::setMissing(std::optional<std::int64_t> missing) {
    scheduler_.cancel(noticeTimer_);
    noticeTimer_ = 0;
    if (missing) {
        noticeTimer_ = scheduler_.after(noticeDuration, [this] {
            noticeTimer_ = 0;
            setMissing(std::nullopt);
        });
    }
    if (missing == missing_) return;
    missing_ = missing;
    changed_.emit();
}

bool PresenterKeys::click() {
    if (cover_ == StageCover::none) return false;
    setCover(StageCover::none);
    return true;
}

void PresenterKeys::setCover(StageCover cover) {
    if (cover != StageCover::none && state_.editorOpen()) return;
    if (cover == cover_) return;
    cover_ = cover;
    if (cover != StageCover::none) {
        setTyped({});
        state_.setOverview(false);
    }
    changed_.emit();
}

void PresenterKeys::jumpTo(std::int64_t index) {
    if (index != state_.current()) state_.goTo(index, true);
}

void PresenterKeys::present(bool fromStart, const std::vector<Slide>& slides) {
    if (!state_.presenting()) {
        // From the first slide: moved there first, so a talk that starts
        // after the consent question starts there too.
        if (fromStart && !slides.empty()) state_.goTo(firstShown(slides), false);
        if (startPresenting_) startPresenting_(); else state_.togglePresenting();
        return;
    }
    if (state_.editorOpen()) {
        if (closeEditor_) closeEditor_(); else state_.toggleEditor();
    }
    state_.setOverview(false);
}

}  // namespace lectern
