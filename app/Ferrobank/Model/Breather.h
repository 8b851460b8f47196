#pragma once

#include <QtCore/QElapsedTimer>

namespace ferrobank {

/// Tells a loop over many small pieces of work when to let the event loop have a turn, so that a flood of
/// them holds up neither the screen nor grows the stack (a compiler may nest resumptions of a generator that
/// never waits). Main thread; lives as long as the loop.
class Breather {
public:
    Breather() { restart(); }

    /// Counts one piece of work.
    [[nodiscard]] bool isDue()
    {
        ++_pieces;
        return _pieces % kLook == 0 && (_pieces >= kMostPieces || _timer.elapsed() >= kMostMilliseconds);
    }

    void restart()
    {
        _pieces = 0;
        _timer.start();
    }

private:
    static constexpr int kLook = 32;
    static constexpr int kMostPieces = 1024;
    static constexpr qint64 kMostMilliseconds = 8; ///< half a frame

    int _pieces = 0;
    QElapsedTimer _timer;
};

} // namespace ferrobank
