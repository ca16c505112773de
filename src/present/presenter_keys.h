#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/scheduler.h"
#include "base/signal.h"
#include "model/slide.h"
#include "present/key_monitor.h"
#include "present/presentation_state.h"

namespace lectern {

// What covers the stage: nothing, or black or white (the audience sees an
// empty screen while the presenter talks).
enum class StageCover { none, black, white };

// Where the window's keyboard focus is: the stage (or the presenter panel),
// a live web page on the stage, or a text field.
enum class KeyFocus { stage, livePage, text };

// The deck window's key monitor: every key press of the window (and of its
// presenter panel) comes here first. Beyond the arrows and Escape of
// keyCommand(), while the stage alone is shown:
// - B or . blacks the stage out, W or , whites it out; the next key of any
//   kind, or a click, only takes the cover away;
// - Home and End jump to the first and last slide (not skipped);
// - digits build a slide number, shown on the stage as it is typed: Return
//   jumps there, Backspace takes a digit back, Escape or a pause of
//   `numberTimeout` drops it; a number that names no slide says so for
//   `noticeDuration`;
// - Page Down and Space step forward and Page Up back, as presenter remotes
//   send them.
// F5 starts presenting from the first slide and Shift+F5 from the current
// one, anywhere; while presenting either brings the stage back (from the
// overview or the editor). Jumps push the jump history, as the slide's own
// routes do. Keys of a text field stay the field's; a live page keeps the
// keys it types and scrolls with.
class PresenterKeys {
public:
    static constexpr double numberTimeout = 4.0;
    static constexpr double noticeDuration = 2.5;
    static constexpr std::size_t maxDigits = 6;

    PresenterKeys(PresentationState& state, Scheduler& scheduler);
    ~PresenterKeys();
    PresenterKeys(const PresenterKeys&) = delete;
    PresenterKeys& operator=(const PresenterKeys&) = delete;

    // How F5 starts the talk and leaves the editor: by default straight away;
    // the window asks for consent first, in the editor, before full screen.
    void setLeaveEditor(std::function<void()> startPresenting, std::function<void()> closeEditor) {
        startPresenting_ = std::move(startPresenting);
        closeEditor_ = std::move(closeEditor);
    }

    // A key press (GDK key value); true when it was used.
    bool press(std::uint32_t key, KeyModifiers modifiers, KeyFocus focus, const std::vector<Slide>& slides);
    // A click on the stage: takes the cover away; true when there was one.
    bool click();

    StageCover cover() const { return cover_; }
    // Covers or uncovers the stage; only while the editor is closed (it
    // takes the overview away, which the cover would not hide).
    void setCover(StageCover cover);

    // The digits typed so far ("12"), empty when no number is being typed.
    const std::string& typedNumber() const { return typed_; }
    // A number that named no slide, while its notice is shown.
    std::optional<std::int64_t> missingNumber() const { return missing_; }

    // Announces every change of the cover, the typed number or the notice.
    Signal<>& changed() { return changed_; }

private:
    std::function<void()> startPresenting_;
    std::function<void()> closeEditor_;

    bool typeNumber(std::uint32_t key, bool bare, const std::vector<Slide>& slides);
    void setTyped(std::string typed);
    void setMissing(std::optional<std::int64_t> missing);
    void jumpTo(std::int64_t index);
    void present(bool fromStart, const std::vector<Slide>& slides);

    PresentationState& state_;
    Scheduler& scheduler_;
    StageCover cover_ = StageCover::none;
    std::string typed_;
    std::optional<std::int64_t> missing_;
    Scheduler::TimerId typingTimer_ = 0;
    Scheduler::TimerId noticeTimer_ = 0;
    Signal<> changed_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
