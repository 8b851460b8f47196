#pragma once

#include "Ferrobank/CLI/CLI.h"

namespace ferrobank {

/// The drive tool as a real child process, started by its absolute location and given the arguments as they
/// are. Main thread; see CLI for the contract.
class ProcessCLI final : public CLI {
public:
    explicit ProcessCLI(QString tool) : _tool(std::move(tool)) {}

    [[nodiscard]] QString url() const override { return _tool; }

    QCoro::Task<QString> run(QStringList args) override;

    /// The tool is started before this returns; a failure to start waits for the reader.
    QCoro::AsyncGenerator<QString> lines(QStringList args) override;

private:
    QString _tool;
};

} // namespace ferrobank
