#include "Ferrobank/Async/ThreadWorkQueue.h"

#include "Platform/Latch.h"

#include <exception>
#include <system_error>
#include <utility>

namespace ferrobank {

struct ThreadWorkQueue::Piece {
    std::function<void()> work;
    std::exception_ptr failure; ///< the thread's until the end is told, then the main thread's
    Latch ended;                ///< main thread only
};

ThreadWorkQueue::ThreadWorkQueue() = default;

ThreadWorkQueue::~ThreadWorkQueue()
{
    std::deque<std::shared_ptr<Piece>> dropped;
    {
        const std::scoped_lock lock(_mutex);
        _ends = true;
        dropped = std::exchange(_toDo, {});
    }
    _changed.notify_one();
    if (_thread.joinable()) {
        _thread.join();
    }
    for (const auto& piece : dropped) {
        piece->failure = std::make_exception_ptr(Dropped());
    }
    while (!_given.empty()) {
        endFirst();
    }
}

QCoro::Task<> ThreadWorkQueue::run(std::function<void()> work)
{
    const auto piece = std::make_shared<Piece>();
    piece->work = std::move(work);
    give(piece);
    return ending(piece);
}

QCoro::Task<> ThreadWorkQueue::ending(std::shared_ptr<Piece> piece)
{
    co_await piece->ended.wait();
    if (piece->failure) {
        std::rethrow_exception(piece->failure);
    }
}

void ThreadWorkQueue::give(const std::shared_ptr<Piece>& piece)
{
    try {
        if (!_thread.joinable()) {
            _thread = std::thread([this] { workOff(); });
        }
    } catch (const std::system_error&) { // no more threads
        piece->failure = std::current_exception();
        piece->ended.open();
        return;
    }
    _given.push_back(piece);
    {
        const std::scoped_lock lock(_mutex);
        _toDo.push_back(piece);
    }
    _changed.notify_one();
}

void ThreadWorkQueue::workOff()
{
    std::unique_lock lock(_mutex);
    for (;;) {
        _changed.wait(lock, [this] { return _ends || !_toDo.empty(); });
        if (_ends) {
            return;
        }
        const std::shared_ptr<Piece> piece = std::move(_toDo.front());
        _toDo.pop_front();
        lock.unlock();
        try {
            piece->work();
        } catch (...) {
            piece->failure = std::current_exception();
        }
        piece->work = nullptr;
        QMetaObject::invokeMethod(&_here, [this] { endFirst(); }, Qt::QueuedConnection);
        lock.lock();
    }
}

void ThreadWorkQueue::endFirst()
{
    // Who waits may give more work, or end this very queue.
    const std::shared_ptr<Piece> piece = std::move(_given.front());
    _given.pop_front();
    piece->ended.open();
}

} // namespace ferrobank
