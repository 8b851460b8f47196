#include "Ferrobank/CLI/LineSplitter.h"

#include <cstring>
#include <utility>

namespace ferrobank {

namespace {

/// Where the byte is first found from `position` on, or the size. What was found before holds until passed.
qsizetype found(const QByteArray& piece, char byte, qsizetype position, qsizetype before)
{
    if (before >= position) {
        return before;
    }
    const char* const begin = piece.constData() + position;
    const void* const hit = std::memchr(begin, byte, static_cast<std::size_t>(piece.size() - position));
    return hit == nullptr ? piece.size() : static_cast<const char*>(hit) - piece.constData();
}

} // namespace

void LineSplitter::append(const QByteArray& piece)
{
    if (!piece.isEmpty()) {
        _pieces.push_back(piece);
    }
}

std::optional<QByteArray> LineSplitter::next()
{
    while (!_pieces.empty()) {
        if (std::exchange(_afterReturn, false) && _pieces.front().at(_position) == '\n') {
            advance(1);
            continue;
        }
        const qsizetype length = breakInFront();
        const qsizetype left = _pieces.front().size() - _position;
        keep(length);
        if (length == left) {
            advance(length);
            continue;
        }
        _afterReturn = _pieces.front().at(_position + length) == '\r';
        advance(length + 1);
        if (auto line = takeLine()) {
            return line;
        }
    }
    if (_ended && _hasLine) {
        return takeLine();
    }
    return std::nullopt;
}

qsizetype LineSplitter::breakInFront()
{
    const QByteArray& front = _pieces.front();
    _nextLineFeed = found(front, '\n', _position, _nextLineFeed);
    _nextReturn = found(front, '\r', _position, _nextReturn);
    return std::min(_nextLineFeed, _nextReturn) - _position;
}

void LineSplitter::advance(qsizetype count)
{
    _position += count;
    if (_position == _pieces.front().size()) {
        _pieces.pop_front();
        _position = 0;
        _nextLineFeed = -1;
        _nextReturn = -1;
    }
}

void LineSplitter::keep(qsizetype count)
{
    _hasLine = true;
    if (_dropping || _line.size() + count > kLongestLine) {
        _dropping = true;
        _line = QByteArray();
        return;
    }
    _line.append(_pieces.front().constData() + _position, count);
}

std::optional<QByteArray> LineSplitter::takeLine()
{
    _hasLine = false;
    QByteArray line = std::exchange(_line, QByteArray());
    return std::exchange(_dropping, false) ? std::nullopt : std::optional(std::move(line));
}

} // namespace ferrobank
