#include "Platform/linux/updates/install/InstallKind.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/install/Files.h"

#include <unistd.h>

#include <cstdlib>

namespace ferrobank::updates {
namespace {

std::string_view takeLine(std::string_view& text)
{
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
        line.remove_suffix(1);
    return line;
}

} // namespace

InstallKind readInstallKind(std::string_view marker)
{
    const std::string_view word = takeLine(marker);
    InstallKind kind;
    if (word == "folder")
        kind.word = InstallKind::Word::Folder;
    else if (word == "package")
        kind.word = InstallKind::Word::Package;
    else if (word == "store")
        kind.word = InstallKind::Word::Store;
    else if (word == "development")
        kind.word = InstallKind::Word::Development;
    kind.advice = takeLine(marker);
    return kind;
}

InstallKind installKindOf(const std::filesystem::path& bundle)
{
    const bool isSandbox = ::access("/.flatpak-info", F_OK) == 0 || std::getenv("SNAP_NAME");
    if (isSandbox)
        return {InstallKind::Word::Store, {}};
    const auto marker = readSmallFile(bundle / "Contents/Resources/install-kind", 4096);
    return marker ? readInstallKind(*marker) : InstallKind();
}

} // namespace ferrobank::updates
