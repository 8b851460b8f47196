// Any bytes as the mark that an export has left in a folder, by name and content: this drive's, or none.

#include "FuzzFolder.h"
#include "exporting/IncompleteMark.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace ferrobank::drive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const FuzzFolder folder;
    static const std::string drive = "0d3adc11-1111-2222-3333-444455556666";
    const std::string text(reinterpret_cast<const char*>(data), size);
    static_cast<void>(folder.write(kIncompleteMark, data, size));
    if (hasIncompleteMark(folder.path(), drive) != (text == incompleteMark(drive)))
        std::abort();
    // A drive may have any name: what was written for it is found again.
    const std::string own = incompleteMark(text);
    static_cast<void>(
        folder.write(kIncompleteMark, reinterpret_cast<const std::uint8_t*>(own.data()), own.size()));
    if (!hasIncompleteMark(folder.path(), text) || hasIncompleteMark(folder.path(), text + "x"))
        std::abort();
    return 0;
}
