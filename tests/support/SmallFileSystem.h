#pragma once

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

namespace ferrobank::test {

/// A file system in memory that is soon full and can be made read-only, seen by this test alone. Where the
/// machine allows no private mounts, isPossible() is false and the test skips.
class SmallFileSystem {
public:
    [[nodiscard]] static bool isPossible();

    explicit SmallFileSystem(int kilobytes);
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;
    ~SmallFileSystem();

    [[nodiscard]] QString path() const { return _folder.path(); }

    [[nodiscard]] QString file(const QString& name) const { return _folder.filePath(name); }

    /// Leaves no room for another byte.
    void fill() const;

    void makeReadOnly() const;

private:
    QTemporaryDir _folder;
};

} // namespace ferrobank::test
