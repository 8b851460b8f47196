#pragma once

#include "Platform/SystemChanges.h"
#include "Platform/linux/desktop/FileWatch.h"

#include <QtCore/QTimer>

#include <filesystem>
#include <vector>

namespace ferrobank {

/// What the menu shows is all kept in files here, the state of a service included: the service manager reads
/// unit files and the links that enable or mask them whenever it is asked.
class LinuxSystemChanges : public SystemChanges {
    Q_OBJECT

public:
    explicit LinuxSystemChanges(std::vector<std::filesystem::path> files, QObject* parent = nullptr);

    /// The files of the present user, in the folders that the environment names. Every change of a login
    /// service, whoever makes it, is a change of one of them.
    static std::vector<std::filesystem::path> filesOfUser();

private:
    QTimer _settled;
    FileWatch _watch;
};

} // namespace ferrobank
