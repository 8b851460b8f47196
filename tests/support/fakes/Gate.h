#pragma once

#include <coroutine>
#include <memory>
#include <utility>
#include <vector>

namespace ferrobank {

/// A wait that a test ends. Who waits is resumed inside open(), or when the gate goes away.
class Gate {
    struct State {
        bool open = false;
        std::vector<std::coroutine_handle<>> waiting;
    };

public:
    class Passage {
    public:
        explicit Passage(std::shared_ptr<State> state) : _state(std::move(state)) {}

        [[nodiscard]] bool await_ready() const { return _state->open; }

        void await_suspend(std::coroutine_handle<> waiter) { _state->waiting.push_back(waiter); }

        void await_resume() const {}

    private:
        std::shared_ptr<State> _state;
    };

    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    ~Gate() { open(); }

    /// To be awaited. A gate that was opened lets everybody through until it is shut.
    [[nodiscard]] Passage passage() { return Passage(_state); }

    void open()
    {
        const auto state = _state;
        state->open = true;
        for (const std::coroutine_handle<> waiter : std::exchange(state->waiting, {})) {
            waiter.resume();
        }
    }

    void shut() { _state->open = false; }

    [[nodiscard]] bool isAwaited() const { return !_state->waiting.empty(); }

private:
    std::shared_ptr<State> _state = std::make_shared<State>();
};

} // namespace ferrobank
