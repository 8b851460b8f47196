#pragma once

#include "mounting/BackEnd.h"
#include "mounting/SystemBus.h"
#include "platform/Failure.h"

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// For a user at the computer's own screen: udisks2 attaches and mounts for them without a password, below
/// `/media/$USER` or `/run/media/$USER`. Needs the system bus at each call only.
class UdisksBackEnd : public BackEnd {
public:
    static constexpr const char* kService = "org.freedesktop.UDisks2";

    explicit UdisksBackEnd(std::filesystem::path image);

    [[nodiscard]] std::string_view name() const override { return "udisks"; }

    [[nodiscard]] bool mountsAtHome() const override { return false; }

    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attachReadOnly(Interaction interaction) override;
    void detach(const Volume& volume) override;

private:
    std::filesystem::path _image;
};

/// What to tell where the service is missing.
[[nodiscard]] Failure noUdisks();

} // namespace ferrobank::drive
