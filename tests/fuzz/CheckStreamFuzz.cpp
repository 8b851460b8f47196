// Any bytes in place of the stream of checks, cut anywhere: the same lines come out however the bytes arrive,
// none of them holds a line break, and each is a row or is refused.

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DecodingError.h"
#include "Ferrobank/CLI/LineSplitter.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace ferrobank;

namespace {

std::vector<QByteArray> linesOf(const QByteArray& bytes, qsizetype piece)
{
    std::vector<QByteArray> lines;
    LineSplitter splitter;
    const auto drain = [&] {
        while (auto line = splitter.next())
            lines.push_back(*line);
    };
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        splitter.append(bytes.mid(at, piece));
        drain();
    }
    splitter.end();
    drain();
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    const std::vector<QByteArray> lines = linesOf(bytes, std::max<qsizetype>(bytes.size(), 1));
    if (lines != linesOf(bytes, 1 + data[0] % 16))
        std::abort();
    for (const QByteArray& line : lines) {
        if (line.contains('\n') || line.contains('\r'))
            std::abort();
        try {
            const CheckItem item = CheckItem::decode(line);
            if (checkStateFromRawValue(rawValue(item.state)) != item.state)
                std::abort();
        } catch (const DecodingError&) {
            continue;
        }
    }
    return 0;
}
