#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

namespace ferrobank {

/// How an attempt with administrator rights ended. Plain value.
struct PrivilegedOutcome {
    enum class Kind { Done, Cancelled, Failed };

    Kind kind = Kind::Failed;
    QString message; ///< the system's words; only for Failed, and may be empty
};

/// Makes one symbolic link with administrator rights, after asking the user for them. Main thread.
class PrivilegedLink {
public:
    virtual ~PrivilegedLink() = default;

    /// Makes the folder of `link` if it is missing, and the link to `target`, replacing a link but nothing
    /// else. `prompt` is the sentence of the system's dialog. Waits as long as the dialog is open.
    virtual QCoro::Task<PrivilegedOutcome> make(QString target, QString link, QString prompt) = 0;
};

} // namespace ferrobank
