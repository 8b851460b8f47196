#pragma once

#include "Ferrobank/CLI/CLI.h"

namespace ferrobank {

class ToolJournal;

/// The drive tool as another runner runs it, with every failed run noted in a journal. Main thread; both must
/// outlive this object and what it has started. A run whose lines are read is passed on as it is: nobody
/// looks at how it ends.
class NotingCLI final : public CLI {
public:
    NotingCLI(CLI& cli, ToolJournal& journal) : _cli(cli), _journal(journal) {}

    [[nodiscard]] QString url() const override { return _cli.url(); }

    QCoro::Task<QString> run(QStringList args) override;

    QCoro::AsyncGenerator<QString> lines(QStringList args) override { return _cli.lines(args); }

private:
    CLI& _cli;
    ToolJournal& _journal;
};

} // namespace ferrobank
