#include "support/fakes/FakeWorkQueue.h"

#include <utility>

namespace ferrobank {

FakeWorkQueue::~FakeWorkQueue()
{
    for (const auto& piece : std::exchange(_waiting, {})) {
        piece->failure = std::make_exception_ptr(Dropped());
        piece->done.open();
    }
}

QCoro::Task<> FakeWorkQueue::run(std::function<void()> work)
{
    const auto piece = std::make_shared<Piece>();
    piece->work = std::move(work);
    if (_held) {
        _waiting.append(piece);
    } else {
        perform(*piece);
    }
    return ending(piece);
}

void FakeWorkQueue::doNext()
{
    const auto piece = _waiting.takeFirst();
    perform(*piece);
}

void FakeWorkQueue::letGo()
{
    _held = false;
    while (!_waiting.isEmpty()) {
        doNext();
    }
}

void FakeWorkQueue::perform(Piece& piece)
{
    try {
        piece.work();
    } catch (const std::exception&) {
        piece.failure = std::current_exception();
    }
    piece.done.open();
}

QCoro::Task<> FakeWorkQueue::ending(std::shared_ptr<Piece> piece)
{
    co_await piece->done.passage();
    if (piece->failure) {
        std::rethrow_exception(piece->failure);
    }
}

} // namespace ferrobank
