#include "support/ScriptedTool.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace ferrobank::test {

using namespace Qt::StringLiterals;

namespace {

QList<QJsonObject> recorded(const QString& path)
{
    QFile file(path);
    QList<QJsonObject> entries;
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            entries.append(QJsonDocument::fromJson(file.readLine()).object());
        }
    }
    return entries;
}

} // namespace

ScriptedTool::ScriptedTool() : _folder(u"%1/föld er-XXXXXX"_s.arg(QDir::tempPath()))
{
    if (!QFile::copy(QStringLiteral(SCRIPTED_DRIVE_TOOL), path())) {
        qFatal("cannot copy the scripted drive tool");
    }
    plays("[]");
}

QString ScriptedTool::path() const
{
    return file(u"ferrobank"_s);
}

QString ScriptedTool::file(const QString& name) const
{
    return _folder.filePath(name);
}

QByteArray ScriptedTool::quoted(const QString& name) const
{
    return '"' + file(name).toUtf8() + '"';
}

void ScriptedTool::plays(const QByteArray& steps) const
{
    scenario(R"({"runs": [{"play": )" + steps + "}]}");
}

void ScriptedTool::prints(const QByteArray& text, const QString& stream, int status) const
{
    const QJsonObject print{{stream, QString::fromUtf8(text)}};
    const QJsonObject exit{{u"exit"_s, status}};
    plays(QJsonDocument(QJsonArray{print, exit}).toJson(QJsonDocument::Compact));
}

void ScriptedTool::scenario(const QByteArray& document) const
{
    QFile scenario(file(u"ferrobank.scenario"_s));
    if (!scenario.open(QIODevice::WriteOnly) || scenario.write(document) != document.size()) {
        qFatal("cannot write the scenario");
    }
}

QList<QStringList> ScriptedTool::runs() const
{
    QList<QStringList> lists;
    for (const QJsonObject& entry : recorded(file(u"ferrobank.scenario.runs"_s))) {
        lists.append(entry[u"args"].toVariant().toStringList());
    }
    return lists;
}

QList<qint64> ScriptedTool::processes() const
{
    QList<qint64> processes;
    for (const QJsonObject& entry : recorded(file(u"ferrobank.scenario.runs"_s))) {
        processes.append(entry[u"pid"].toInteger());
    }
    return processes;
}

} // namespace ferrobank::test
