#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace ferrobank::test {

/// How a task ended, once it has.
template <typename T>
struct Settled {
    bool done = false;
    std::function<void()> whenDone;
    std::exception_ptr error;
    std::optional<T> value;
};

template <>
struct Settled<void> {
    bool done = false;
    std::function<void()> whenDone;
    std::exception_ptr error;
};

template <typename T>
QCoro::Task<> settle(QCoro::Task<T> task, std::shared_ptr<Settled<T>> result)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
        } else {
            result->value = co_await std::move(task);
        }
    } catch (...) {
        result->error = std::current_exception();
    }
    result->done = true;
    if (result->whenDone) {
        result->whenDone();
    }
}

/// Turns the event loop until the task has ended, and gives its result or throws what it threw. A task that
/// takes longer than the limit is an error.
template <typename T>
T await(QCoro::Task<T> task, int limitInMilliseconds = 60'000)
{
    const auto result = std::make_shared<Settled<T>>();
    const auto settling = settle(std::move(task), result);
    if (!result->done) {
        QEventLoop loop;
        result->whenDone = [&loop] { loop.quit(); };
        QTimer::singleShot(limitInMilliseconds, &loop, &QEventLoop::quit);
        loop.exec();
        result->whenDone = nullptr;
    }
    if (!result->done) {
        throw std::runtime_error("the task did not end in time");
    }
    if (result->error) {
        std::rethrow_exception(result->error);
    }
    if constexpr (!std::is_void_v<T>) {
        return *std::move(result->value);
    }
}

} // namespace ferrobank::test
