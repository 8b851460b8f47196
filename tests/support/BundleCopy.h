#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ferrobank::test {

/// What the headless commands need of the built bundle, in a folder of the test's own: the executable, the
/// agent's property list, and the scripted drive tool in place of the real one. The tool's process goes on
/// until it is ended, and records its runs.
class BundleCopy {
public:
    /// Makes `folder`/Ferrobank.app.
    explicit BundleCopy(const QString& folder);

    [[nodiscard]] QString root() const { return _root; }

    [[nodiscard]] QString executable() const;
    [[nodiscard]] QString driveTool() const;
    [[nodiscard]] QString agentPropertyList() const;

    /// A path beside the executable.
    [[nodiscard]] QString besideExecutable(const QString& name) const;

    /// Processes that run the drive tool with exactly these arguments now.
    [[nodiscard]] QList<int> processes(const QStringList& arguments = {QStringLiteral("serve")}) const;

    /// Takes the copy to another folder, as a user would.
    void moveTo(const QString& folder);

private:
    QString _root;
};

} // namespace ferrobank::test
