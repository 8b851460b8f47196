#pragma once

#include "mounting/BackEnd.h"
#include "mounting/LoopSetup.h"

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// For root: the loop device and mount(2) by our own hand, with direct I/O below the loop, which halves the
/// time of big transfers and which only root may ask for. Containers and tests use it.
class DirectBackEnd : public BackEnd {
public:
    /// `scratch` is a private folder in which the top level of a new image is mounted for a moment; the drive
    /// is mounted read-only beside it.
    DirectBackEnd(std::filesystem::path image, std::filesystem::path mountPoint,
                  std::filesystem::path scratch);

    [[nodiscard]] std::string_view name() const override { return "direct"; }

    [[nodiscard]] bool mountsAtHome() const override { return true; }

    void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) override;
    Volume attachReadOnly(Interaction interaction) override;
    void detach(const Volume& volume) override;

private:
    std::filesystem::path _image;
    std::filesystem::path _mountPoint;
    std::filesystem::path _scratch;
};

/// Unmounts without force. Throws Failure, "busy" with the names of the processes when it is in use.
void unmountOrName(const std::filesystem::path& mountPoint);

/// Waits until the loop device no longer uses any file, at most five seconds; false when it still does. The
/// device lets go by itself when it was set to at its last unmount, and is told to otherwise.
bool releaseLoop(const std::string& device);

/// Mounts a loop device for the time of a preparation and makes the `files` subvolume for `owner`.
void prepareOnLoop(const std::string& device, const std::filesystem::path& scratch, uid_t owner, gid_t group);

} // namespace ferrobank::drive
