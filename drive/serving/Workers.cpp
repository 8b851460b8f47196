#include "serving/Workers.h"

namespace ferrobank::drive {

Workers::Workers(const Paths& paths, const Log& log, const Volume& volume, Mailbox& mailbox)
    : _space(volume.mountPoint, paths.reserve, log, [&mailbox](const SpaceState& space) {
        mailbox.post([space](State& state) { state.space = space; });
    })
{
}

} // namespace ferrobank::drive
