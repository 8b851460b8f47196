#pragma once

#include <coroutine>
#include <memory>
#include <utility>
#include <vector>

namespace ferrobank {

/// An event that happens once and that coroutines wait for: `co_await latch.wait()`. One thread.
///
/// Copies are the same event. open() resumes those who wait, in the order in which they came, before it
/// returns; who comes later is not suspended. A coroutine that is destroyed while it waits is forgotten.
class Latch {
    struct State;

public:
    class Waiter {
    public:
        explicit Waiter(std::shared_ptr<State> state) : _state(std::move(state)) {}

        /// Another waiter for the same event: GCC 12 copies what is awaited before it suspends.
        Waiter(const Waiter& other) : _state(other._state) {}

        Waiter& operator=(const Waiter&) = delete;

        ~Waiter()
        {
            if (_coroutine) {
                std::erase(_state->waiters, this);
            }
        }

        [[nodiscard]] bool await_ready() const noexcept { return _state->open; }

        void await_suspend(std::coroutine_handle<> coroutine)
        {
            _coroutine = coroutine;
            _state->waiters.push_back(this);
        }

        void await_resume() const noexcept {}

    private:
        friend class Latch;

        std::shared_ptr<State> _state;
        std::coroutine_handle<> _coroutine;
    };

    [[nodiscard]] bool isOpen() const { return _state->open; }

    [[nodiscard]] Waiter wait() const { return Waiter(_state); }

    void open()
    {
        const auto state = _state; // a resumed coroutine may destroy this very object
        state->open = true;
        while (!state->waiters.empty()) {
            Waiter* const first = state->waiters.front();
            state->waiters.erase(state->waiters.begin());
            std::exchange(first->_coroutine, nullptr).resume();
        }
    }

private:
    struct State {
        bool open = false;
        std::vector<Waiter*> waiters;
    };

    std::shared_ptr<State> _state = std::make_shared<State>();
};

} // namespace ferrobank
