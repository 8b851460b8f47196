#pragma once

#include "Ferrobank/Async/WorkQueue.h"

#include <QtCore/QObject>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace ferrobank {

/// The queue with a thread of its own, which begins with the first piece of work and then stays.
class ThreadWorkQueue final : public WorkQueue {
public:
    ThreadWorkQueue();
    ~ThreadWorkQueue() override;
    ThreadWorkQueue(const ThreadWorkQueue&) = delete;
    ThreadWorkQueue& operator=(const ThreadWorkQueue&) = delete;

    QCoro::Task<> run(std::function<void()> work) override;

private:
    struct Piece;

    static QCoro::Task<> ending(std::shared_ptr<Piece> piece);
    void give(const std::shared_ptr<Piece>& piece);
    void workOff();
    void endFirst();

    QObject _here;                             ///< on the main thread; receives what is done
    std::deque<std::shared_ptr<Piece>> _given; ///< main thread only: what somebody may be waiting for
    std::mutex _mutex;                         ///< guards the two below
    std::deque<std::shared_ptr<Piece>> _toDo;
    bool _ends = false;
    std::condition_variable _changed;
    std::thread _thread;
};

} // namespace ferrobank
