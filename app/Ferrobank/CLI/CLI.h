#pragma once

#include <QCoro/QCoroAsyncGenerator>
#include <QCoro/QCoroTask>
#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <exception>
#include <optional>
#include <stdexcept>

namespace ferrobank {

/// The drive tool, run as a child process. Main thread; several runs may be in flight at a time, nothing
/// serialises them, and nothing is retried. Must outlive what it has started.
class CLI {
public:
    /// The tool ran but exited with a non-zero status or was ended by a signal. The message is what the user
    /// reads.
    class Failure : public std::runtime_error {
    public:
        explicit Failure(const QString& message);

        [[nodiscard]] const QString& message() const { return _message; }

    private:
        QString _message;
    };

    virtual ~CLI() = default;

    /// The tool inside the bundle of the running executable.
    static CLI& shared();

    /// The tool's absolute location.
    [[nodiscard]] virtual QString url() const = 0;

    /// Runs the tool to its end. The result is its standard output, unchanged. Throws Failure with the tool's
    /// trimmed standard error (or "ferrobank <args> failed" when that is empty), or LaunchError.
    virtual QCoro::Task<QString> run(QStringList args) = 0;

    /// Starts the tool and yields its standard output line by line, without the line breaks, while it runs.
    /// Throws LaunchError from the first step. Ends when the output ends; the exit status is not looked at. A
    /// reader that leaves early does not end the tool.
    virtual QCoro::AsyncGenerator<QString> lines(QStringList args) = 0;

    /// Runs the tool and decodes its output as one record with `Record::decode(const QByteArray&)`. No value
    /// on any failure; never throws.
    template <typename Record>
    QCoro::Task<std::optional<Record>> json(QStringList args)
    {
        QString text;
        try {
            text = co_await run(args);
            co_return Record::decode(text.toUtf8());
        } catch (const std::exception&) {
            co_return std::nullopt;
        }
    }
};

} // namespace ferrobank
