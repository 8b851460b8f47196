// Makes the command link through polkit and prints how it ended, as one JSON line.
//
//   polkit-link-probe TARGET LINK

#include "Platform/LinkPlacement.h"
#include "Platform/linux/link/PolkitLink.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>

#include <cstdio>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

QString wordFor(PrivilegedOutcome::Kind kind)
{
    switch (kind) {
    case PrivilegedOutcome::Kind::Done:
        return u"done"_s;
    case PrivilegedOutcome::Kind::Cancelled:
        return u"cancelled"_s;
    case PrivilegedOutcome::Kind::Failed:
        return u"failed"_s;
    }
    Q_UNREACHABLE();
}

QCoro::Task<> probe(PolkitLink* polkit, QString target, QString link)
{
    const QString prompt = u"Ferrobank wants to add the ferrobank command to /usr/local/bin."_s;
    const PrivilegedOutcome outcome = co_await polkit->make(target, link, prompt);
    const auto text = storedLinkText(link.toStdString());
    const QJsonObject result{{u"kind"_s, wordFor(outcome.kind)},
                             {u"message"_s, outcome.message},
                             {u"link"_s, text ? QString::fromStdString(text->string()) : QString()}};
    std::puts(QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    PolkitLink polkit;
    QTimer::singleShot(0, [&polkit, &arguments] {
        const auto probing = probe(&polkit, arguments.value(1), arguments.value(2));
    });
    return QCoreApplication::exec();
}
