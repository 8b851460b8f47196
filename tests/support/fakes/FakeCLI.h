#pragma once

#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DriveStatus.h"
#include "support/fakes/Gate.h"

#include <QtCore/QHash>
#include <QtCore/QList>

#include <memory>

namespace ferrobank {

/// The drive tool without a process: answers by argument list, at once or when the test says so.
///
/// A list of arguments that nobody scripted succeeds without output. Runs that still wait end with a failure
/// when the object goes away.
class FakeCLI : public CLI {
public:
    /// How a run ends.
    struct Answer {
        QString output;
        std::optional<QString> failure;       ///< the tool exits non-zero with these words
        std::optional<QString> launchFailure; ///< the tool cannot be started

        static Answer text(const QString& output) { return {output, {}, {}}; }

        static Answer fails(const QString& message) { return {{}, message, {}}; }

        static Answer missing() { return {{}, {}, QStringLiteral("No such file or directory")}; }
    };

    FakeCLI() = default;
    ~FakeCLI() override;

    [[nodiscard]] QString url() const override;
    QCoro::Task<QString> run(QStringList args) override;
    QCoro::AsyncGenerator<QString> lines(QStringList args) override;

    /// From now on runs with these arguments end so, at once.
    void answer(const QStringList& args, const Answer& answer);
    void answerStatus(const DriveStatus& status); ///< for "status --json"

    /// From now on runs with these arguments wait, until finish() ends the one that waits longest, or
    /// answer() ends them all.
    void hold(const QStringList& args);
    void finish(const QStringList& args, const Answer& answer);
    [[nodiscard]] int waiting(const QStringList& args) const;

    /// The next streams give these lines and end, with a failure if there is one.
    void streamLines(const QStringList& lines, std::optional<QString> launchFailure = {});

    /// The next streams give what is pushed to the latest of them, until it is ended.
    void holdLines();
    void pushLine(const QString& line);
    void endLines(std::optional<QString> failure = {});

    /// Every argument list, in the order of the runs.
    [[nodiscard]] const QList<QStringList>& calls() const { return _calls; }

    void forgetCalls() { _calls = {}; }

    [[nodiscard]] int callsOf(const QStringList& args) const;

    static const QStringList kStatus;
    static const QStringList kCheck;
    static const QStringList kRestart;
    static const QStringList kRestartKeepMounted;

private:
    struct Run {
        QStringList args;
        Answer answer;
        Gate ended;
    };

    struct Stream {
        QStringList lines;
        bool ended = false;
        std::optional<QString> failure;
        Gate more;
    };

    static QCoro::Task<QString> play(std::shared_ptr<Run> run);
    static QCoro::AsyncGenerator<QString> play(std::shared_ptr<Stream> stream);

    QHash<QStringList, Answer> _answers;
    QList<QStringList> _held;
    QList<std::shared_ptr<Run>> _waiting;
    QStringList _lines;
    std::optional<QString> _linesFailure;
    bool _linesHeld = false;
    std::shared_ptr<Stream> _stream;
    QList<QStringList> _calls;
};

/// The document of "status --json" for a status.
[[nodiscard]] QString toJson(const DriveStatus& status);

/// A line of "check --json" for a row.
[[nodiscard]] QString toJson(const CheckItem& row);

} // namespace ferrobank
