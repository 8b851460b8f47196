#include "sharing/SharedRange.h"

#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kStep = 16U << 20U;

/// The kernel's request ends in an open array; this gives it room for one element. All bytes start as zeros.
template <typename Request, typename Element>
class RequestWithOne {
public:
    Request& operator*() { return *reinterpret_cast<Request*>(_bytes.data()); }

    Request* operator->() { return &**this; }

    Element& element() { return *reinterpret_cast<Element*>(_bytes.data() + sizeof(Request)); }

private:
    alignas(Request) std::array<std::byte, sizeof(Request) + sizeof(Element)> _bytes{};
};

bool endsThePass(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EROFS || error == ENOMEM;
}

ShareOutcome::End endFor(int error)
{
    return endsThePass(error) ? ShareOutcome::End::Failed : ShareOutcome::End::Refused;
}

} // namespace

ShareOutcome shareRange(FileRange source, FileRange target, std::uint64_t length, Throttle& throttle)
{
    ShareOutcome outcome;
    while (outcome.shared < length) {
        if (!throttle.goOn()) {
            outcome.end = ShareOutcome::End::Cancelled;
            return outcome;
        }
        RequestWithOne<file_dedupe_range, file_dedupe_range_info> request;
        request->src_offset = source.offset + outcome.shared;
        request->src_length = std::min(kStep, length - outcome.shared);
        request->dest_count = 1;
        file_dedupe_range_info& answer = request.element();
        answer.dest_fd = target.file;
        answer.dest_offset = target.offset + outcome.shared;
        if (::ioctl(source.file, FIDEDUPERANGE, &*request) != 0) {
            outcome.error = errno;
            outcome.end = endFor(outcome.error);
            return outcome;
        }
        if (answer.status < 0) {
            outcome.error = -answer.status;
            outcome.end = endFor(outcome.error);
            return outcome;
        }
        if (answer.status == FILE_DEDUPE_RANGE_DIFFERS || answer.bytes_deduped == 0) {
            outcome.end = ShareOutcome::End::Differs;
            return outcome;
        }
        outcome.shared += answer.bytes_deduped;
    }
    return outcome;
}

bool isInline(int file)
{
    RequestWithOne<fiemap, fiemap_extent> request;
    request->fm_length = 1;
    request->fm_extent_count = 1;
    return ::ioctl(file, FS_IOC_FIEMAP, &*request) == 0 && request->fm_mapped_extents == 1 &&
           (request.element().fe_flags & FIEMAP_EXTENT_DATA_INLINE) != 0;
}

std::uint64_t devicePlace(FileRange range)
{
    constexpr std::uint32_t kWithoutPlace =
        FIEMAP_EXTENT_UNKNOWN | FIEMAP_EXTENT_DELALLOC | FIEMAP_EXTENT_DATA_INLINE;
    RequestWithOne<fiemap, fiemap_extent> request;
    request->fm_start = range.offset;
    request->fm_length = 1;
    request->fm_extent_count = 1;
    if (::ioctl(range.file, FS_IOC_FIEMAP, &*request) != 0 || request->fm_mapped_extents == 0) {
        return 0;
    }
    const fiemap_extent& extent = request.element();
    if ((extent.fe_flags & kWithoutPlace) != 0 || extent.fe_logical > range.offset) {
        return 0;
    }
    if ((extent.fe_flags & FIEMAP_EXTENT_ENCODED) != 0) {
        // Inside a compressed extent only the extent itself has a place.
        return extent.fe_physical;
    }
    return extent.fe_physical + (range.offset - extent.fe_logical);
}

bool sharesAlready(FileRange one, FileRange other, std::uint64_t length)
{
    if (length == 0) {
        return false;
    }
    for (const std::uint64_t offset : {std::uint64_t{0}, length / 2, length - 1}) {
        const std::uint64_t place = devicePlace({one.file, one.offset + offset});
        if (place == 0 || place != devicePlace({other.file, other.offset + offset})) {
            return false;
        }
    }
    return true;
}

} // namespace ferrobank::drive
