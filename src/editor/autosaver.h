#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/result.h"
#include "base/scheduler.h"
#include "base/signal.h"
#include "base/worker.h"
#include "editor/deck_document.h"

namespace lectern {

class RecoveryStore;

// Saves a document without stalling typing. The deck value is copied on the
// main loop (a cheap copy: image bytes are shared) and written, previews
// and all, on the worker; one write at a time, and a change made meanwhile
// is written after it. A deck with a package saves about a second after
// the last edit; a draft or a deck with unsaved changes also leaves a
// recovery copy every few seconds, removed once the deck is saved.
class Autosaver {
public:
    // Writes `deck` to `package`, on the worker's thread.
    using Write = std::function<Status(const Deck& deck, const std::filesystem::path& package)>;

    static constexpr double saveDelaySeconds = 1.0;
    static constexpr double recoverySeconds = 5.0;

    Autosaver(DeckDocument& document, Scheduler& scheduler, Worker& worker, Write write,
              std::shared_ptr<RecoveryStore> recovery);
    ~Autosaver();
    Autosaver(const Autosaver&) = delete;
    Autosaver& operator=(const Autosaver&) = delete;

    // Ctrl+S on a deck with a package: writes now (in the background).
    void saveNow();
    // Save As, or the first save of a draft: writes to `package`; the
    // document follows it once written. `done` gets the outcome on the
    // main loop.
    void saveAs(std::filesystem::path package, std::function<void(const Status&)> done = {});
    // Closing: waits for a write under way, then writes what is left here
    // and now. On success the recovery copy goes.
    Status flush();
    // The window is closing without its changes: the recovery copy goes.
    void discard();

    bool writing() const { return writing_; }
    // A background save that failed, with its message; the change stays in
    // the document and in the recovery copy.
    Signal<const Error&>& failed() { return failed_; }

private:
    void documentChanged(const DeckChange& change);
    void startWrite(std::filesystem::path package, std::function<void(const Status&)> done);
    void writeRecovery();
    void cancelTimers();

    DeckDocument& document_;
    Scheduler& scheduler_;
    Worker& worker_;
    Write write_;
    std::shared_ptr<RecoveryStore> recovery_;
    Scheduler::TimerId saveTimer_ = 0;
    Scheduler::TimerId recoveryTimer_ = 0;
    bool writing_ = false;
    bool writeAgain_ = false;  // a change came while writing
    bool recoveryWritten_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    Signal<const Error&> failed_;
    Signal<const DeckChange&>::Connection connection_;
};

}  // namespace lectern
