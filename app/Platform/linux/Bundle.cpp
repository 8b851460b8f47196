#include "Platform/Bundle.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

/// The kernel's word behind the path of a program whose file was replaced while it runs.
constexpr std::string_view kReplaced = " (deleted)";

std::filesystem::path runningExecutable()
{
    std::filesystem::path link = std::filesystem::read_symlink("/proc/self/exe");
    const std::string& text = link.native();
    std::error_code ignored; // a file that cannot be asked about is as good as gone
    if (text.ends_with(kReplaced) && !std::filesystem::exists(link, ignored)) {
        return text.substr(0, text.size() - kReplaced.size());
    }
    return link;
}

/// False as well for a folder that cannot be read.
bool holdsNothingBut(const std::vector<std::filesystem::path>& known, const std::filesystem::path& folder)
{
    std::error_code unreadable;
    std::filesystem::directory_iterator entry(folder, unreadable);
    while (!unreadable && entry != std::filesystem::directory_iterator()) {
        if (std::ranges::count(known, entry->path()) == 0) {
            return false;
        }
        entry.increment(unreadable);
    }
    return !unreadable;
}

} // namespace

Bundle::Bundle(std::filesystem::path root) : _root(std::move(root)) {}

const Bundle& Bundle::main()
{
    // <root>/Contents/Linux/Ferrobank
    static const Bundle bundle(runningExecutable().parent_path().parent_path().parent_path());
    return bundle;
}

Bundle Bundle::atStablePath() const
{
    namespace fs = std::filesystem;
    const fs::path versions = _root.parent_path().parent_path();
    const fs::path home = versions.parent_path();
    std::error_code ignored; // what cannot be looked at is no such place
    if (versions.filename() != "versions" || !fs::is_symlink(home / "current", ignored)) {
        return *this;
    }
    Bundle former(home.parent_path() / _root.filename());
    if (home.filename() == "." + _root.filename().string() + "-versions" &&
        fs::is_symlink(former.executable(), ignored))
    {
        return former;
    }
    return Bundle(home / "current" / _root.filename());
}

std::vector<std::filesystem::path> Bundle::wholeCopy() const
{
    namespace fs = std::filesystem;
    std::error_code ignored; // what cannot be looked at stays where it is
    const fs::path name = _root.filename();
    const std::string staging = "." + name.string() + "-update";
    const fs::path stable = atStablePath()._root;
    const fs::path home =
        stable == _root ? _root.parent_path() : _root.parent_path().parent_path().parent_path();

    std::vector<fs::path> whole;
    if (stable == _root) {
        whole = {_root, home / staging};
    } else if (stable.parent_path() == home.parent_path()) {
        whole = {stable, home};
    } else {
        // The archive's folder: versions, the link to the one in use, and a link to its program. What is
        // called like the latter and is none may be the user's drive.
        whole = {_root, home / "current", home / staging};
        const fs::path link = home / name.stem();
        if (fs::read_symlink(link, ignored).native().starts_with("current/")) {
            whole.push_back(link);
        }
        std::vector<fs::path> ours = whole;
        ours.push_back(home / "versions");
        if (holdsNothingBut(ours, home)) {
            whole = {home};
        }
    }
    std::erase_if(whole,
                  [&](const fs::path& path) { return !fs::exists(fs::symlink_status(path, ignored)); });
    return whole;
}

std::filesystem::path Bundle::executable() const
{
    return _root / "Contents/Linux/Ferrobank";
}

std::filesystem::path Bundle::driveTool() const
{
    return _root / "Contents/Helpers/ferrobank";
}

std::filesystem::path Bundle::agentPropertyList() const
{
    return _root / "Contents/Library/LaunchAgents/org.ferrobank.Ferrobank.agent.plist";
}

std::filesystem::path Bundle::resource(const char* name) const
{
    return _root / "Contents/Resources" / name;
}

} // namespace ferrobank
