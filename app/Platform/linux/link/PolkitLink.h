#pragma once

#include "Platform/PrivilegedLink.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace ferrobank {

/// Asks for administrator rights through polkit's pkexec(1) and makes the link with them. Main thread; must
/// outlive its tasks.
///
/// Where the application's package is installed, a fixed helper of the package makes the link, and the
/// dialog shows the prompt as it is. A bundle that runs from any other folder cannot bring a text of its own
/// into that dialog: there the system's own mkdir and ln are run, and the prompt is shown beforehand by
/// `explain`, with a warning where the tool can be changed by others than root.
class PolkitLink final : public PrivilegedLink {
public:
    /// Shows the prompt and tells whether to go on; false counts as cancelled.
    using Explain = std::function<QCoro::Task<bool>(QString prompt)>;

    /// Where things are; parameters for tests only.
    struct Places {
        QString pkexec;
        QString installedTool; ///< the tool for which the installed helper makes the link
        QString helper;        ///< the installed helper
        QString installedLink; ///< the only place where that helper makes it
    };

    static Places installedPlaces();

    explicit PolkitLink(Places places = installedPlaces()) : _places(std::move(places)) {}

    /// Without it the system's own dialog comes without introduction.
    void setExplain(Explain explain) { _explain = std::move(explain); }

    QCoro::Task<PrivilegedOutcome> make(QString target, QString link, QString prompt) override;

private:
    [[nodiscard]] bool helperServes(const QString& target, const QString& link) const;
    QCoro::Task<PrivilegedOutcome> makeWithSystemTools(QString target, QString link, QString prompt);
    QCoro::Task<PrivilegedOutcome> asAdministrator(QStringList command);

    Places _places;
    Explain _explain;
};

} // namespace ferrobank
