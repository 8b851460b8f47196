#pragma once

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// `~/Ferrobank` itself: a link to where the drive is mounted, or the folder it is mounted on. What belongs
/// to somebody else there (a file, a folder with content, a link that leads elsewhere) is never touched.
class HomeEntry {
public:
    /// `user` names the folder below /media and /run/media whose entries count as our own link targets, as
    /// the mount helper's place for this process's user does.
    HomeEntry(std::filesystem::path path, std::string user);

    enum class Kind { Absent, OwnLink, EmptyFolder, Foreign };

    [[nodiscard]] Kind kind() const;

    /// Throws Failure ("home-occupied") when something foreign is there.
    void requireFree() const;
    /// Makes an empty folder of mode 0555, into which nothing can be written while no drive is mounted on it.
    void becomeMountPoint() const;
    /// Points a link at `target`, replacing our own old one in one step.
    void becomeLinkTo(const std::filesystem::path& target) const;
    /// Removes our link or our empty folder; anything else stays.
    void removeIfOwn() const;

private:
    [[nodiscard]] bool leadsToAMount(const std::string& target) const;

    std::filesystem::path _path;
    std::string _user;
};

/// This user's login name, for HomeEntry.
[[nodiscard]] std::string loginName();

} // namespace ferrobank::drive
