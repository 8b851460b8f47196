#pragma once

#include <memory>

namespace ferrobank {

/// How an object's coroutines learn that the object is gone.
///
/// A coroutine cannot be cancelled from outside: it is resumed by whatever it waits for, at the latest when
/// that goes away. The object keeps a Lifeline as a member; every coroutine of the object takes a Hold before
/// its first wait, and after each wait ends at once when the line is cut. Main thread.
class Lifeline {
    struct State {
        bool cut = false;
    };

public:
    class Hold {
    public:
        /// The object was destroyed; `this` must not be touched any more.
        [[nodiscard]] bool isCut() const { return _state->cut; }

    private:
        friend class Lifeline;

        explicit Hold(std::shared_ptr<const State> state) : _state(std::move(state)) {}

        std::shared_ptr<const State> _state;
    };

    Lifeline() = default;
    Lifeline(const Lifeline&) = delete;
    Lifeline& operator=(const Lifeline&) = delete;

    ~Lifeline() { _state->cut = true; }

    [[nodiscard]] Hold hold() const { return Hold(_state); }

    /// How many coroutines hold on at this moment.
    [[nodiscard]] long holds() const { return _state.use_count() - 1; }

    /// Expires once the object and the last of its coroutines are gone.
    [[nodiscard]] std::weak_ptr<const void> trace() const { return _state; }

private:
    std::shared_ptr<State> _state = std::make_shared<State>();
};

} // namespace ferrobank
