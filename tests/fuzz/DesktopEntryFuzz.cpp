// Any bytes as an autostart entry, and any name as the program of one: what was written is read back.

#include "Platform/linux/login/DesktopEntry.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    static_cast<void>(ferrobank::parseDesktopEntry(bytes));
    if (bytes.find('\0') == std::string_view::npos) {
        const std::filesystem::path program = "/" + std::string(bytes);
        const std::string text =
            ferrobank::desktopEntryText({"Ferrobank", "Menu"}, {program, {std::string(bytes)}});
        if (ferrobank::parseDesktopEntry(text).program != program) {
            std::abort();
        }
    }
    return 0;
}
