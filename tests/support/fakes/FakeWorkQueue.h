#pragma once

#include "Ferrobank/Async/WorkQueue.h"
#include "support/fakes/Gate.h"

#include <QtCore/QList>

#include <exception>
#include <memory>

namespace ferrobank {

/// A queue without a thread: work is done inside run(), or when the test says so. The end of the queue drops
/// what still waits.
class FakeWorkQueue : public WorkQueue {
public:
    FakeWorkQueue() = default;
    ~FakeWorkQueue() override;
    FakeWorkQueue(const FakeWorkQueue&) = delete;
    FakeWorkQueue& operator=(const FakeWorkQueue&) = delete;

    QCoro::Task<> run(std::function<void()> work) override;

    /// From now on work waits.
    void hold() { _held = true; }

    /// Does the piece that waits longest.
    void doNext();

    /// Does everything that waits, and from now on everything at once.
    void letGo();

    [[nodiscard]] int waiting() const { return static_cast<int>(_waiting.size()); }

private:
    struct Piece {
        std::function<void()> work;
        std::exception_ptr failure;
        Gate done;
    };

    static void perform(Piece& piece);
    static QCoro::Task<> ending(std::shared_ptr<Piece> piece);

    bool _held = false;
    QList<std::shared_ptr<Piece>> _waiting;
};

} // namespace ferrobank
