#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Platform/PrivilegedLink.h"

#include <QCoro/QCoroTask>
#include <QtCore/QString>

#include <memory>
#include <stdexcept>

namespace ferrobank {

class Latch;

/// The command link that lets people run the drive tool from a terminal. It always points into the installed
/// application, so updating the application updates the command. Main thread.
class CommandLineTool {
public:
    /// The user dismissed the administrator prompt. Not an error to show.
    class Cancelled : public std::runtime_error {
    public:
        Cancelled() : std::runtime_error("cancelled") {}
    };

    static constexpr QStringView kLink = u"/usr/local/bin/ferrobank";

    /// `target` is the drive tool's location; `link` is where the command goes (a parameter for tests only).
    /// `privilegedLink` must outlive this object.
    CommandLineTool(QString target, PrivilegedLink& privilegedLink, QString link = kLink.toString());

    [[nodiscard]] const QString& link() const { return _link; }

    /// Whether the link's stored text is exactly the tool's path. The link is not followed.
    [[nodiscard]] bool isInstalled() const;

    /// Makes the link, as the user or, where that is not allowed, with administrator rights. Throws
    /// Cancelled, CLI::Failure with words for the user, or a file-system error. A call while another one is
    /// under way asks nobody again: it ends with that one, and is cancelled if that one made no link, of
    /// which the first caller tells.
    QCoro::Task<> install();

    enum class Removal { NotThere, Removed, Refused };

    /// Removes the link if it is ours, as the user: nobody is asked for a password. Refused where that is not
    /// allowed.
    [[nodiscard]] Removal remove() const;

private:
    QCoro::Task<> installOnce();
    QCoro::Task<> installAsAdmin();

    QString _target;
    PrivilegedLink& _privilegedLink;
    QString _link;
    std::shared_ptr<Latch> _underWay; ///< opens when the installation that runs has ended
    Lifeline _lifeline;
};

} // namespace ferrobank
