#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

namespace ferrobank::test {

/// A copy of the scripted drive tool in a folder of its own, with its scenario beside it. README.md describes
/// the steps.
class ScriptedTool {
public:
    ScriptedTool();

    /// Where the tool is. The folder's name holds a space and letters beyond ASCII.
    [[nodiscard]] QString path() const;

    /// A path in the tool's folder, for files that steps touch or wait for.
    [[nodiscard]] QString file(const QString& name) const;

    /// The same as a JSON text, quotes included.
    [[nodiscard]] QByteArray quoted(const QString& name) const;

    /// Every run plays these steps, a JSON array.
    void plays(const QByteArray& steps) const;

    /// Every run writes the text and exits so.
    void prints(const QByteArray& text, const QString& stream = QStringLiteral("out"), int status = 0) const;

    /// The whole scenario, a JSON object.
    void scenario(const QByteArray& document) const;

    /// The argument lists of the runs so far, oldest first.
    [[nodiscard]] QList<QStringList> runs() const;

    /// Process ids of the runs so far.
    [[nodiscard]] QList<qint64> processes() const;

private:
    QTemporaryDir _folder;
};

} // namespace ferrobank::test
