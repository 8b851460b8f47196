#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

namespace ferrobank {

/// A program could not be started. what() is the system's own text for the reason, as UTF-8.
class LaunchError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One child process and its output. Main thread; needs a running QCoreApplication.
///
/// The child inherits environment, working folder and standard input, and none of our other open files. Its
/// output is read while it runs, so it never waits for us. Dropping the object does not end the child: it
/// goes on, and what it still writes is read and discarded for as long as this process lives.
class ChildProcess {
public:
    enum class StandardError { Capture, Discard };

    /// Called on the main thread with each piece of output as it comes, and once with an empty piece when the
    /// output has reached its end. Never called after the object is gone, which a sink may bring about.
    using Sink = std::function<void(QByteArray)>;

    /// What to start. Plain value.
    struct Setup {
        QString program; ///< an absolute path
        QStringList arguments;
        Sink output;    ///< none: to the null device
        Sink errorText; ///< none: to the null device

        /// "NAME=value" each; none: ours.
        std::optional<QStringList> environment;

        /// The output of a child that ends within this time is read when it ends, in one go: a short run then
        /// wakes this process once. From then on, output is read as it comes.
        std::chrono::milliseconds patience{0};
    };

    virtual ~ChildProcess() = default;

    /// From now on children inherit the environment as it is at this moment, whatever this process or a
    /// library changes in its own. To be called when the program starts.
    static void keepEnvironment();

    /// Throws LaunchError.
    static std::unique_ptr<ChildProcess> launch(Setup setup);

    /// Starts `program`, an absolute path, with exactly these arguments. Throws LaunchError.
    static std::unique_ptr<ChildProcess> launch(const QString& program, const QStringList& arguments,
                                                StandardError standardError, Sink output, Sink errorText);

    /// Ends when the child has exited and what it left in its pipes has been read (a descendant that keeps a
    /// pipe open is waited for only a moment). The result is the exit status, or 128 + the signal's number.
    virtual QCoro::Task<int> finished() = 0;

    /// Ends when standard output has reached its end, whoever held it last.
    virtual QCoro::Task<> outputEnded() = 0;
};

} // namespace ferrobank
