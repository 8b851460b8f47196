// Any bytes in place of what the updater keeps on the disk and of the marker in the bundle: defaults or
// values within their bounds, and what was written is read back the same.

#include "Platform/linux/updates/install/InstallKind.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/session/UpdateState.h"

#include <cstdlib>

using namespace ferrobank::updates;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // What cannot be written as it was read (half a surrogate, parts of a second) is lost once and then no
    // more.
    const UpdateState read = readState(QByteArray(text.data(), static_cast<qsizetype>(size)));
    const UpdateState kept = readState(stateText(read));
    if (readState(stateText(kept)) != kept)
        std::abort();
    const auto trial = readTrial(text);
    if (trial && (trial->starts < 0 || readTrial(trialText(*trial)) != trial))
        std::abort();
    const InstallKind kind = readInstallKind(text);
    if (kind.word == InstallKind::Word::Folder && !text.starts_with("folder"))
        std::abort();
    return 0;
}
