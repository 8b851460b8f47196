#pragma once

#include "Platform/SingleInstance.h"
#include "Platform/linux/Descriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QSocketNotifier>

#include <filesystem>
#include <memory>
#include <unordered_map>

namespace ferrobank {

/// For sessions without a bus: the running program holds a lock on a file in the runtime folder and listens
/// on a socket beside it. A request is one line, the action and the token with a tab between them; the answer
/// is the line "done" or "unknown". Only the same user gets through.
class SocketInstance : public SingleInstance {
public:
    /// `folder` is private to the user and exists. Without one (an empty path) this is the first of all
    /// programs, and nobody can find it.
    explicit SocketInstance(std::filesystem::path folder);

    /// $XDG_RUNTIME_DIR, or a private folder of the user's below the temporary folder, made if needed. Empty
    /// when there is neither.
    static std::filesystem::path runtimeFolder();

    Role claim(const InstanceRequest& request) override;
    void serve(Handler handler) override;

private:
    struct Caller {
        Descriptor socket;
        std::unique_ptr<QSocketNotifier> readable;
        QByteArray line;
    };

    [[nodiscard]] bool listenOnSocket();
    [[nodiscard]] Role forward(const InstanceRequest& request) const;
    void accept();
    void read(int caller);

    bool _hasFolder;
    std::filesystem::path _socketFile;
    std::filesystem::path _lockFile;
    Descriptor _lock;
    Descriptor _listener;
    Handler _handler;
    std::unique_ptr<QSocketNotifier> _acceptable;
    std::unordered_map<int, Caller> _callers;
};

} // namespace ferrobank
