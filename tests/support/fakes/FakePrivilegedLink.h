#pragma once

#include "Platform/PrivilegedLink.h"
#include "support/fakes/Gate.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

namespace ferrobank {

/// An administrator prompt that the test answers. Makes no link.
class FakePrivilegedLink : public PrivilegedLink {
public:
    PrivilegedOutcome outcome;
    QList<QStringList> requests; ///< target, link, prompt
    Gate answered;               ///< open at first; shut it to keep the dialog open

    FakePrivilegedLink()
    {
        outcome.kind = PrivilegedOutcome::Kind::Done;
        answered.open();
    }

    QCoro::Task<PrivilegedOutcome> make(QString target, QString link, QString prompt) override
    {
        requests.append(QStringList{target, link, prompt});
        auto answer = answered.passage();
        co_await answer;
        co_return outcome;
    }
};

} // namespace ferrobank
