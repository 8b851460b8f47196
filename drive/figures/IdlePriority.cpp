#include "figures/IdlePriority.h"

#include <linux/ioprio.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ferrobank::drive {

IdlePriority useIdlePriority()
{
    constexpr int kCallingThread = 0;
    const sched_param parameters{};
    IdlePriority granted;
    granted.processor = ::sched_setscheduler(kCallingThread, SCHED_IDLE, &parameters) == 0;
    granted.disk = ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, kCallingThread,
                             IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0)) == 0;
    return granted;
}

} // namespace ferrobank::drive
