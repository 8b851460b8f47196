// Any bytes in place of the drive's status: a whole record or a refusal, and the record's words survive being
// shown.

#include "Ferrobank/CLI/DecodingError.h"
#include "Ferrobank/CLI/DriveStatus.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    try {
        const auto status = ferrobank::DriveStatus::decode(bytes);
        // The same bytes always mean the same, and nothing is longer than what it was read from.
        if (status != ferrobank::DriveStatus::decode(bytes) || status.mountpoint.size() > bytes.size() ||
            status.log.size() > bytes.size())
            std::abort();
    } catch (const ferrobank::DecodingError&) {
        return 0;
    }
    return 0;
}
