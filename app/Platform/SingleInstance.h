#pragma once

#include <QtCore/QString>

#include <functional>
#include <memory>

namespace ferrobank {

/// What another start of the program asks of the running one. Plain value.
struct InstanceRequest {
    QString action;          ///< name of a command; empty brings up the window
    QString activationToken; ///< lets a window take the focus on Wayland; empty where there is none
};

/// At most one running program for each session. Made before anything of the window system, so that a second
/// start needs no display. Main thread.
class SingleInstance {
public:
    enum class Role {
        First,      ///< this is the running program from now on
        Forwarded,  ///< another one runs and has done what was asked
        Unanswered, ///< another one runs, but does not answer
    };

    /// Returns when the request was carried out; false when it names an unknown command.
    using Handler = std::function<bool(const InstanceRequest&)>;

    virtual ~SingleInstance() = default;

    /// Becomes the running program or hands the request to it. Of any number of starts at once exactly one is
    /// the first.
    virtual Role claim(const InstanceRequest& request) = 0;

    /// Answers other starts from the event loop, those included that came since claim().
    virtual void serve(Handler handler) = 0;
};

} // namespace ferrobank
