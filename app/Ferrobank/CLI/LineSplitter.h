#pragma once

#include <QtCore/QByteArray>

#include <deque>
#include <optional>

namespace ferrobank {

/// Cuts a stream of bytes that comes in pieces into lines. Plain value, usable on any thread.
///
/// A line ends at LF, CR LF or a lone CR, which is not part of it; a CR LF may be torn apart by two pieces. A
/// line longer than kLongestLine is dropped without being kept, and the stream goes on behind it.
class LineSplitter {
public:
    static constexpr qsizetype kLongestLine = qsizetype{16} * 1024 * 1024; ///< bytes

    void append(const QByteArray& piece);

    /// No more pieces come: what is left is the last line.
    void end() { _ended = true; }

    /// The next line that is complete.
    [[nodiscard]] std::optional<QByteArray> next();

private:
    /// Distance from `_position` to the first line break of the front piece, or to its end.
    [[nodiscard]] qsizetype breakInFront();
    void advance(qsizetype count);
    void keep(qsizetype count);
    [[nodiscard]] std::optional<QByteArray> takeLine();

    std::deque<QByteArray> _pieces;
    qsizetype _position = 0;      ///< in the front piece
    qsizetype _nextLineFeed = -1; ///< in the front piece, or its size; -1 when not looked up yet
    qsizetype _nextReturn = -1;   ///< the same
    QByteArray _line;             ///< the beginning of a line whose end has not come
    bool _hasLine = false;
    bool _dropping = false;
    bool _afterReturn = false;
    bool _ended = false;
};

} // namespace ferrobank
