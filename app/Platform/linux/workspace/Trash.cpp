#include "Platform/linux/workspace/Trash.h"

#include "Platform/linux/login/UserFolders.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>

namespace ferrobank {

bool moveToTrash(const QString& path)
{
    // Qt 6.4 takes the current folder for the Trash, and reports success, when the user's data folder does
    // not exist.
    const auto folders = UserFolders::ofProcess();
    std::error_code error;
    if (!folders) {
        return false;
    }
    std::filesystem::create_directories(folders->data, error);
    if (error || !std::filesystem::is_directory(folders->data, error)) {
        return false;
    }
    QString place;
    return QFile::moveToTrash(QDir::cleanPath(path), &place) && QDir::isAbsolutePath(place) &&
           QFileInfo::exists(place);
}

} // namespace ferrobank
