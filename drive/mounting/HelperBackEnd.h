#pragma once

#include "mounting/BackEnd.h"
#include "platform/Paths.h"

#include <string>

namespace ferrobank::drive {

/// For remote or inactive sessions and systems without udisks2, once an administrator has allowed it: the
/// mount helper, which is root's, attaches and mounts the image below `/run/ferrobank/UID`. The store's lock
/// is handed to it, so that nobody takes the store while it works, even where whoever started it has been
/// killed.
class HelperBackEnd : public BackEnd {
public:
    HelperBackEnd(Paths paths, int storeLock);

    [[nodiscard]] std::string_view name() const override { return "helper"; }

    [[nodiscard]] bool mountsAtHome() const override { return false; }

    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attachReadOnly(Interaction interaction) override;
    void detach(const Volume& volume) override;

private:
    [[nodiscard]] Volume mounted() const;
    /// Throws Failure unless the helper did it; `mountPoint` is for the names of those who use it.
    void run(const std::string& wish, const std::filesystem::path& mountPoint) const;

    Paths _paths;
    int _storeLock;
};

/// Takes back what an administrator allowed this user, and lines of former versions in fstab; does nothing
/// when there is neither. Throws Failure.
void forgetMountHelper(const Paths& paths);

} // namespace ferrobank::drive
