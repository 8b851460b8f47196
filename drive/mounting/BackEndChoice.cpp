#include "mounting/BackEndChoice.h"

#include "mounting/DirectBackEnd.h"
#include "mounting/FstabBackEnd.h"
#include "mounting/FstabLine.h"
#include "mounting/SystemBus.h"
#include "mounting/UdisksBackEnd.h"
#include "platform/Failure.h"
#include "platform/Files.h"

#include <unistd.h>

namespace ferrobank::drive {

namespace {

/// Stands in where nothing can mount for this user; a drive that is mounted all the same can be adopted.
class NoBackEnd : public BackEnd {
public:
    [[nodiscard]] std::string_view name() const override { return "none"; }

    [[nodiscard]] bool mountsAtHome() const override { return false; }

    void prepare(const std::optional<LoopDevice>&, Interaction) override { refuse(); }

    Volume attach(const std::optional<LoopDevice>&, Interaction) override
    {
        refuse();
        return {};
    }

    Volume attachReadOnly(Interaction) override
    {
        refuse();
        return {};
    }

    void detach(const Volume&) override { refuse(); }

private:
    static void refuse()
    {
        throw Failure(
            "This system has no udisks2 service. Install the package udisks2 or run: pkexec ferrobank "
            "helper-fstab add",
            "no-udisks");
    }
};

} // namespace

std::unique_ptr<BackEnd> chooseBackEnd(const Paths& paths)
{
    if (::geteuid() == 0) {
        return std::make_unique<DirectBackEnd>(paths.image, paths.drive, paths.runtime / "top-level");
    }
    if (holdsFstabLine(readSmallFile(kFstab).value_or(std::string()), fstabLine(paths))) {
        return std::make_unique<FstabBackEnd>(paths);
    }
    if (isNameAvailable(openSystemBus(), UdisksBackEnd::kService)) {
        return std::make_unique<UdisksBackEnd>(paths.image);
    }
    return std::make_unique<NoBackEnd>();
}

} // namespace ferrobank::drive
