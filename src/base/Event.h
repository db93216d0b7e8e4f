#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace corvane {

namespace detail {
struct SlotState {
    bool connected = true;
};
} // namespace detail

/// One listener's tie to an event. The listener is called no more once this object ends.
class Connection {
  public:
    Connection() = default;
    explicit Connection(std::shared_ptr<detail::SlotState> slot) : slot_(std::move(slot)) {}
    Connection(Connection&& other) noexcept : slot_(std::move(other.slot_)) {}
    Connection& operator=(Connection&& other) noexcept {
        if (this != &other) {
            disconnect();
            slot_ = std::move(other.slot_);
        }
        return *this;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { disconnect(); }

    void disconnect() {
        if (slot_)
            slot_->connected = false;
        slot_.reset();
    }

  private:
    std::shared_ptr<detail::SlotState> slot_;
};

/// What one object listens to. All of it ends with this, or with `clear`.
class Connections {
  public:
    template<class Event, class Reaction>
    void operator()(Event& event, Reaction react) {
        connections_.push_back(event.connect(std::move(react)));
    }
    void clear() { connections_.clear(); }

  private:
    std::vector<Connection> connections_;
};

/// A synchronous event. Listeners may come, go, or destroy the event itself while it is raised;
/// those that come during a raising are first called by the next one. One that throws keeps none of
/// the others from hearing, so that all of them go on knowing the same; the first of what was
/// thrown is passed on in the end.
template<class... Args>
class Event {
  public:
    using Listener = std::function<void(Args...)>;

    /// Listening changes nothing of what raises the event.
    [[nodiscard]] Connection connect(Listener listener) const {
        auto slot = std::make_shared<Slot>();
        slot->listener = std::move(listener);
        if (!list_)
            list_ = std::make_shared<List>();
        list_->dropDisconnected();
        list_->slots.push_back(slot);
        return Connection(std::move(slot));
    }

    void raise(Args... args) const {
        if (const std::exception_ptr failure = tell(args...); failure != nullptr)
            std::rethrow_exception(failure);
    }

    /// The same, with what was thrown first as the result.
    [[nodiscard]] std::exception_ptr tell(Args... args) const {
        if (!list_)
            return nullptr;
        const std::shared_ptr<List> list = list_;
        ++list->raising;
        const Lowered lowered{*list};
        std::exception_ptr failure;
        const std::size_t count = list->slots.size();
        for (std::size_t i = 0; i < count; ++i) {
            const std::shared_ptr<Slot> slot = list->slots[i];
            if (!slot->connected)
                continue;
            try {
                slot->listener(args...);
            } catch (...) {
                if (failure == nullptr)
                    failure = std::current_exception();
            }
        }
        return failure;
    }

  private:
    struct Slot : detail::SlotState {
        Listener listener;
    };
    struct List {
        std::vector<std::shared_ptr<Slot>> slots;
        int raising = 0;

        void dropDisconnected() {
            if (raising == 0)
                std::erase_if(slots, [](const auto& slot) { return !slot->connected; });
        }
    };
    struct Lowered {
        List& list;
        ~Lowered() { --list.raising; }
    };

    mutable std::shared_ptr<List> list_;
};

/// What is wanted of whoever listens. An event is raised by its owner alone, a request is made by
/// everyone who knows it.
template<class... Args>
class Request : public Event<Args...> {
  public:
    void operator()(Args... args) const { this->raise(args...); }
};

} // namespace corvane
