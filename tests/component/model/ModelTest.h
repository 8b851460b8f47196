#pragma once

#include "Ferrobank/Async/Spawn.h"
#include "support/fakes/FakeSeam.h"

#include <QtCore/QCoreApplication>
#include <QtTest/QtTest>

#include <memory>
#include <optional>

namespace ferrobank {

/// Base of the model's tests: each test has a seam and a model of its own, and fails when a coroutine of the
/// model outlives both, or when an operation throws.
class ModelTest : public QObject {
    Q_OBJECT

protected:
    using State = CheckItem::State;

    FakeSeam& seam() { return *_seam; }

    AppModel& model() { return *_model; }

    /// Makes the model from the seam as it is now; nothing has run yet.
    void create() { create(_seam->cli); }

    /// The same with another runner of the drive tool, which has to outlive the model.
    void create(CLI& cli)
    {
        _model.emplace(_seam->collaborators(cli));
        _trace = _model->lifeline().trace();
    }

    /// Makes the model and lets its start-up task and its first poll begin. With tool answers that come at
    /// once, the poll sleeps afterwards and nothing else is at work.
    void start()
    {
        create();
        letEventsIn();
    }

    void destroyModel() { _model.reset(); }

    static void letEventsIn() { QCoreApplication::processEvents(); }

    void advance(VirtualClock::Milliseconds duration) { seam().clock.advance(duration); }

    /// Only the poll is left, and it sleeps.
    [[nodiscard]] bool isIdle() { return model().lifeline().holds() == 1; }

    void runSetup() { spawn(&model(), model().runSetup()); }

    void runChecks() { spawn(&model(), model().runChecks()); }

    void fix(FixAction action) { spawn(&model(), model().fix(action)); }

    static CheckItem row(const QString& id, State state, std::optional<QString> detail = {})
    {
        return {.id = id, .title = id.toUpper(), .state = state, .detail = detail, .fix = {}, .action = {}};
    }

    static QString line(const QString& id, State state) { return toJson(row(id, state)); }

    /// For example "login pass, mount running".
    static QString summary(const QList<CheckItem>& rows)
    {
        QStringList words;
        for (const CheckItem& each : rows) {
            words.append(each.id + QLatin1Char(' ') + rawValue(each.state));
        }
        return words.join(QLatin1String(", "));
    }

    QString checks() { return summary(model().checks()); }

    QString setupTasks() { return summary(model().setupTasks()); }

    CheckItem setupTask(const QString& id)
    {
        for (const CheckItem& each : model().setupTasks()) {
            if (each.id == id) {
                return each;
            }
        }
        return {};
    }

private Q_SLOTS:

    void init()
    {
        _criticalMessages.clear();
        _formerHandler = qInstallMessageHandler(noteCriticalMessages);
        _seam = std::make_unique<FakeSeam>();
    }

    void cleanup()
    {
        _model.reset();
        _seam.reset();
        letEventsIn();
        qInstallMessageHandler(_formerHandler);
        QVERIFY2(_trace.expired(), "a coroutine of the model was lost");
        QCOMPARE(_criticalMessages, QStringList()); // an exception escaped
    }

private:
    static void noteCriticalMessages(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (type == QtCriticalMsg) {
            _criticalMessages.append(text);
        }
        _formerHandler(type, context, text);
    }

    static inline QStringList _criticalMessages;
    static inline QtMessageHandler _formerHandler = nullptr;

    std::unique_ptr<FakeSeam> _seam;
    std::optional<AppModel> _model;
    std::weak_ptr<const void> _trace; ///< of the model and its coroutines
};

} // namespace ferrobank
