#pragma once

#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "support/fakes/FakeCLI.h"
#include "support/fakes/FakeDefaults.h"
#include "support/fakes/FakePrivilegedLink.h"
#include "support/fakes/FakeRegistry.h"
#include "support/fakes/FakeSettingsPages.h"
#include "support/fakes/FakeVolumes.h"
#include "support/fakes/FakeWorkQueue.h"
#include "support/fakes/FakeWorkspace.h"
#include "support/fakes/VirtualClock.h"

#include <QtCore/QTemporaryDir>

namespace ferrobank {

/// Everything that an AppModel works with, as fakes. Has to outlive the model.
///
/// The home folder is "/home/anna", which need not exist. Only the command link is a real one, in a folder of
/// its own; it cannot be made there while `linkFolder` is missing.
class FakeSeam {
public:
    FakeSeam();

    [[nodiscard]] ModelCollaborators collaborators() { return collaborators(cli); }

    /// With another runner of the drive tool.
    [[nodiscard]] ModelCollaborators collaborators(CLI& otherCli);

    /// A finished setup: recorded, and the agent enabled.
    void finishSetup();

    /// Empties all records of what was asked so far.
    void forgetCalls();

    /// The folder of the command link goes away, so that the user alone cannot make the link.
    void removeLinkFolder();

    static const QString kHome;
    static const QString kMountpoint;
    static const QString kStore; ///< where the drive's data is kept

    QTemporaryDir folder;
    FakeRegistry registry;
    FakeWorkQueue registryWork; ///< the background in which the registry is asked
    LoginServices loginServices{registry, registryWork};
    FakeDefaults defaults;
    FakeVolumes volumes;
    FakeSettingsPages settingsPages;
    FakePrivilegedLink privilegedLink;
    FakeWorkspace workspace;
    FakeCLI cli;
    CommandLineTool commandLineTool;
    VirtualClock clock;
};

/// A status as the drive tool would report it at this moment.
[[nodiscard]] DriveStatus mountedStatus();
[[nodiscard]] DriveStatus unmountedStatus();
[[nodiscard]] DriveStatus attachErrorStatus(const QString& error);

} // namespace ferrobank
