#include "mounting/BackEndChoice.h"

#include "mounting/DirectBackEnd.h"
#include "mounting/HelperBackEnd.h"
#include "mounting/MountHelper.h"
#include "mounting/SystemBus.h"
#include "mounting/UdisksBackEnd.h"
#include "platform/Program.h"

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
    static void refuse() { throw noUdisks(); }
};

} // namespace

std::unique_ptr<BackEnd> chooseBackEnd(const Paths& paths, int storeLock)
{
    if (::geteuid() == 0) {
        return std::make_unique<DirectBackEnd>(paths.image, paths.drive, paths.runtime / "top-level");
    }
    if (mayUseMountHelper(paths) && !findSystemProgram("pkexec").empty()) {
        return std::make_unique<HelperBackEnd>(paths, storeLock);
    }
    if (isNameAvailable(openSystemBus(), UdisksBackEnd::kService)) {
        return std::make_unique<UdisksBackEnd>(paths.image);
    }
    return std::make_unique<NoBackEnd>();
}

} // namespace ferrobank::drive
