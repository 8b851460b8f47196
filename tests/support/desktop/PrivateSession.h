#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

namespace ferrobank::test {

/// How a command ended, with what it wrote.
struct CommandResult {
    int status = -1; ///< -1: it did not start, was ended by a signal, or took longer than the limit
    QByteArray output;
    QByteArray errors;
};

/// Runs a command and waits for its end, half a minute at most.
[[nodiscard]] CommandResult runCommand(const QString& program, const QStringList& arguments);

/// A bus and, if wanted, a real user service manager of the test's own, without an X server. The home
/// folder's name holds a space and letters beyond ASCII. Everything ends with the object.
class PrivateSession {
public:
    enum class Manager { Real, None };

    /// `user`: whose session it is; empty for the user of this process. Another one needs root.
    explicit PrivateSession(Manager manager, const QString& user = {});
    ~PrivateSession();
    PrivateSession(const PrivateSession&) = delete;
    PrivateSession& operator=(const PrivateSession&) = delete;

    /// Why there is no session; empty if there is one. A machine without control groups cannot have a
    /// manager.
    [[nodiscard]] QString problem() const { return _problem; }

    /// Whether the machine cannot have it; otherwise a problem is a failure.
    [[nodiscard]] bool cannotBe() const { return _cannotBe; }

    [[nodiscard]] QString home() const;
    [[nodiscard]] QString runtimeFolder() const;

    /// Runs a command inside, as the session's user, with an environment of the session alone.
    [[nodiscard]] CommandResult run(const QStringList& command) const;

    /// Makes the environment of this process that of the session.
    void enter() const;

private:
    QTemporaryDir _folder;
    QString _problem;
    bool _cannotBe = false;
};

/// An account of the system for one test; removed with the object.
class TestAccount {
public:
    TestAccount();
    ~TestAccount();
    TestAccount(const TestAccount&) = delete;
    TestAccount& operator=(const TestAccount&) = delete;

    /// Empty where accounts cannot be made, that is without root.
    [[nodiscard]] QString name() const { return _name; }

    /// Gives the folder and everything in it to the account.
    void own(const QString& folder) const;

private:
    QString _name;
};

} // namespace ferrobank::test
