#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QDebug>
#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <exception>
#include <utility>

namespace ferrobank {

namespace detail {

template <typename T>
QCoro::Task<> watch(QPointer<QObject> owner, QCoro::Task<T> task)
{
    try {
        co_await task;
    } catch (const std::exception& error) {
        if (owner) {
            qCritical("A task of %s threw: %s", owner->metaObject()->className(), error.what());
        }
    } catch (...) {
        if (owner) {
            qCritical("A task of %s threw something that is not an exception",
                      owner->metaObject()->className());
        }
    }
}

} // namespace detail

/// Lets a task run on without anybody waiting for it. Main thread.
///
/// The task is expected to handle its own failures. What it throws all the same is reported as a critical
/// message, unless `owner` is gone by then: nobody is left who could care. A task cannot be cancelled; it
/// ends by itself (see Lifeline).
template <typename T>
void spawn(QObject* owner, QCoro::Task<T> task)
{
    detail::watch(QPointer<QObject>(owner), std::move(task));
}

} // namespace ferrobank
