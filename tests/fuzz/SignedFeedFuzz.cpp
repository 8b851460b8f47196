// The signature block of any bytes is found or refused; what is found lies inside the file and before the
// block.

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/SignedFeed.h"

#include <cstdlib>

using namespace ferrobank::updates;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    try {
        const SignedFeed feed = splitSignedFeed(file);
        if (feed.content.data() != file.data() || feed.content.size() >= size || feed.signatures.empty())
            std::abort();
        for (const std::string_view signature : feed.signatures) {
            const bool isInside =
                signature.data() > file.data() && signature.data() + signature.size() <= file.data() + size;
            if (!signature.empty() && !isInside)
                std::abort();
        }
        static const TrustedKeys keys({"rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs="});
        static_cast<void>(verifiedFeedContent(file, keys));
        std::abort(); // nobody can sign by chance
    } catch (const UpdateFailure&) {
        return 0;
    }
}
