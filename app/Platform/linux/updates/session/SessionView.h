#pragma once

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/values/Offer.h"

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <cstdint>

namespace ferrobank::updates {

/// Where a session stands.
///
/// | stage       | what happens                            | left by                                |
/// |-------------|-----------------------------------------|----------------------------------------|
/// | Idle        | nothing                                 | schedule, user                         |
/// | Asking      | consent is asked for                    | the answer                             |
/// | Checking    | the feed is read                        | its end, Cancel                        |
/// | NothingNew  | the user reads that                     | Close                                  |
/// | Found       | the user decides                        | Install, Later, Skip                   |
/// | Downloading | the archive comes                       | its end, Cancel                        |
/// | Preparing   | it is verified and unpacked             | its end                                |
/// | Ready       | it waits for the application to quit    | install now, quit                      |
/// | Installing  | the worker waits for the application    | its end, or the worker's failure       |
/// | Replaced    | the user reads that another version is  | Relaunch, Close                        |
/// |             | installed already                       |                                        |
/// | Failed      | the user reads why                      | Close                                  |
enum class Stage {
    Idle,
    Asking,
    Checking,
    NothingNew,
    Found,
    Downloading,
    Preparing,
    Ready,
    Installing,
    Replaced,
    Failed
};

/// Why nothing is offered, as the worker tells it, with the release that this is about.
struct NothingNew {
    QString reason; ///< "onLatest", "newerThanLatest", "systemTooOld", "systemTooNew", "takenBack",
                    ///< "unknown"
    QString latest; ///< display version
    QUrl page;
    QUrl history;
};

/// All that the window's content depends on. Plain value.
struct SessionView {
    Stage stage = Stage::Idle;
    QString installed;
    QString replacement; ///< the version that somebody else has put in the place of the running one
    bool replacementIsOlder = false;
    Offer offer;
    NothingNew nothingNew;
    bool mayReplace = true;
    QString placeSentence; ///< why this copy is not replaced by itself
    QString advice;        ///< how it is updated instead
    std::int64_t bytes = 0;
    bool allowsAutomatic = true;
    bool automatic = false;
    Problem problem = Problem::Install;
    QString sentence; ///< of the failure
};

} // namespace ferrobank::updates
