#pragma once

#include "Platform/SystemReport.h"
#include "Platform/linux/files/Elsewhere.h"

#include <filesystem>

namespace ferrobank {

/// Reads the session's environment, the mount table and, on a connection of its own, the session bus, all on
/// another thread. Starts no service by asking for it.
class LinuxSystemReport final : public SystemReport {
public:
    /// `bundle` is the application's folder.
    explicit LinuxSystemReport(std::filesystem::path bundle);

    QCoro::Task<SystemFacts> read(QString mountpoint) override;

private:
    std::filesystem::path _bundle;
    Elsewhere _elsewhere;
};

} // namespace ferrobank
