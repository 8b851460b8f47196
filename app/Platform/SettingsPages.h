#pragma once

namespace ferrobank {

/// A page of the system's settings that a remedy leads to.
enum class SettingsPage {
    FilesAndFolders, ///< which programs may reach files and folders
    Storage,         ///< what fills this computer's disk
};

/// Opens pages of the desktop's settings. Main thread; returns at once.
class SettingsPages {
public:
    virtual ~SettingsPages() = default;

    /// Opens the page, or the nearest one that this desktop has.
    virtual void open(SettingsPage page) = 0;
};

} // namespace ferrobank
