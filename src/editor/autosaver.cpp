#include "editor/autosaver.h"

#include <utility>

#include "editor/recovery_store.h"

namespace lectern {

Autosaver::Autosaver(DeckDocument& document, Scheduler& scheduler, Worker& worker, Write write,
                     std::shared_ptr<RecoveryStore> recovery)
    : document_(document), scheduler_(scheduler), worker_(worker), write_(std::move(write)),
      recovery_(std::move(recovery)) {
    connection_ = document_.changed().connect([this](const DeckChange& change) { documentChanged(change); });
    // A recovered deck opens with changes: keep its copy until it is saved.
    if (document_.isDirty()) documentChanged(DeckChange{});
}

Autosaver::~Autosaver() {
    *alive_ = false;
    cancelTimers();
}

void Autosaver::cancelTimers() {
    if (saveTimer_) scheduler_.cancel(std::exchange(saveTimer_, 0));
    if (recoveryTimer_) scheduler_.cancel(std::exchange(recoveryTimer_, 0));
}

void Autosaver::documentChanged(const DeckChange& change) {
    if (change.kind == DeckChange::Kind::saved) return;
    if (document_.package()) {
        if (saveTimer_) scheduler_.cancel(saveTimer_);
        saveTimer_ = scheduler_.after(saveDelaySeconds, [this] {
            saveTimer_ = 0;
            saveNow();
        });
    }
    if (recovery_ && !recoveryTimer_ && document_.isDirty()) {
        recoveryTimer_ = scheduler_.after(recoverySeconds, [this] {
            recoveryTimer_ = 0;
            writeRecovery();
        });
    }
}

void Autosaver::saveNow() {
    if (saveTimer_) scheduler_.cancel(std::exchange(saveTimer_, 0));
    if (!document_.package()) return;
    if (writing_) {
        writeAgain_ = true;
        return;
    }
    if (!document_.isDirty()) return;
    startWrite(*document_.package(), {});
}

void Autosaver::saveAs(std::filesystem::path package, std::function<void(const Status&)> done) {
    if (writing_) worker_.finish();  // the write under way ends first; its package stays whole
    startWrite(std::move(package), std::move(done));
}

void Autosaver::startWrite(std::filesystem::path package, std::function<void(const Status&)> done) {
    writing_ = true;
    auto deck = std::make_shared<Deck>(document_.deck());  // the main loop's whole share of the save
    auto status = std::make_shared<Status>(Status(Done{}));
    worker_.run([write = write_, deck, package, status] { *status = write(*deck, package); },
                [this, alive = alive_, deck, package, status, done = std::move(done)] {
                    if (!*alive) return;
                    writing_ = false;
                    if (*status) {
                        document_.markSaved(*deck, package);
                        if (!document_.isDirty() && recovery_ && recoveryWritten_) {
                            recovery_->remove(deck->id);
                            recoveryWritten_ = false;
                        }
                    } else {
                        failed_.emit(status->error());
                    }
                    if (done) done(*status);
                    if (std::exchange(writeAgain_, false) && *status) saveNow();
                });
}

void Autosaver::writeRecovery() {
    if (!recovery_ || !document_.isDirty()) return;
    auto deck = std::make_shared<Deck>(document_.deck());
    auto package = document_.package();
    recoveryWritten_ = true;
    worker_.run([recovery = recovery_, deck, package] { (void)recovery->write(*deck, package); }, [] {});
}

Status Autosaver::flush() {
    worker_.finish();
    cancelTimers();
    Status status = Status(Done{});
    if (document_.package() && document_.isDirty()) {
        Deck deck = document_.deck();
        status = write_(deck, *document_.package());
        if (status) document_.markSaved(deck, *document_.package()); else failed_.emit(status.error());
    }
    if (status && !document_.isDirty() && recovery_) recovery_->remove(document_.deck().id);
    return status;
}

void Autosaver::discard() {
    worker_.finish();
    cancelTimers();
    if (recovery_) recovery_->remove(document_.deck().id);
}

}  // namespace lectern
