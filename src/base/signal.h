#pragma once

#include <functional>
#include <map>
#include <memory>

namespace lectern {

// A list of callbacks. connect() returns a Connection that disconnects itself
// when destroyed, so an observer never outlives its subscription.
template <class... Args>
class Signal {
public:
    class Connection {
    public:
        Connection() = default;
        Connection(Connection&&) noexcept = default;
        Connection& operator=(Connection&& other) noexcept {
            disconnect();
            slots_ = std::move(other.slots_);
            id_ = other.id_;
            return *this;
        }
        ~Connection() { disconnect(); }
        void disconnect() {
            if (auto slots = slots_.lock()) slots->erase(id_);
            slots_.reset();
        }

    private:
        friend class Signal;
        Connection(std::weak_ptr<std::map<int, std::function<void(Args...)>>> slots, int id)
            : slots_(std::move(slots)), id_(id) {}
        std::weak_ptr<std::map<int, std::function<void(Args...)>>> slots_;
        int id_ = 0;
    };

    [[nodiscard]] Connection connect(std::function<void(Args...)> slot) {
        int id = nextId_++;
        slots_->emplace(id, std::move(slot));
        return Connection(slots_, id);
    }

    void emit(Args... args) const {
        // A copy, so that a slot may disconnect itself or others while running.
        auto slots = *slots_;
        for (auto& [id, slot] : slots) slot(args...);
    }

private:
    std::shared_ptr<std::map<int, std::function<void(Args...)>>> slots_ =
        std::make_shared<std::map<int, std::function<void(Args...)>>>();
    int nextId_ = 1;
};

}  // namespace lectern
