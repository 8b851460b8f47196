#pragma once

#include "mounting/BackEnd.h"
#include "platform/Paths.h"

#include <string>
#include <vector>

namespace ferrobank::drive {

/// For remote or inactive sessions and systems without udisks2: mount(8) and umount(8) by the drive's line in
/// /etc/fstab, which an administrator allowed once.
class FstabBackEnd : public BackEnd {
public:
    explicit FstabBackEnd(Paths paths);

    [[nodiscard]] std::string_view name() const override { return "fstab"; }

    [[nodiscard]] bool mountsAtHome() const override { return true; }

    /// The helper has prepared the image when it wrote the line; a later image needs it once more.
    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attachReadOnly(Interaction interaction) override;
    void detach(const Volume& volume) override;

private:
    Volume mount(const std::vector<std::string>& arguments);

    Paths _paths;
};

} // namespace ferrobank::drive
