#pragma once

#include "Ferrobank/CLI/CLI.h"

namespace ferrobank {

class ToolJournal;

/// The drive tool as a real child process, started by its absolute location and given the arguments as they
/// are. Main thread; see CLI for the contract.
class ProcessCLI final : public CLI {
public:
    /// Failures are noted in the journal, which must outlive this object and what it has started.
    explicit ProcessCLI(QString tool, ToolJournal* journal = nullptr)
        : _tool(std::move(tool)), _journal(journal)
    {}

    [[nodiscard]] QString url() const override { return _tool; }

    QCoro::Task<QString> run(QStringList args) override;

    /// The tool is started before this returns; a failure to start waits for the reader.
    QCoro::AsyncGenerator<QString> lines(QStringList args) override;

private:
    void note(const QStringList& args, const QString& words);

    QString _tool;
    ToolJournal* _journal;
};

} // namespace ferrobank
