#include "figures/IdlePriority.h"

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ferrobank::drive {

namespace {

// ioprio_set(2). Some releases of <linux/ioprio.h> are no C++: a parameter is called "class".
constexpr int kWhoProcess = 1;
constexpr int kClassIdle = 3;
constexpr int kClassShift = 13;

} // namespace

IdlePriority useIdlePriority()
{
    constexpr int kCallingThread = 0;
    const sched_param parameters{};
    IdlePriority granted;
    granted.processor = ::sched_setscheduler(kCallingThread, SCHED_IDLE, &parameters) == 0;
    granted.disk = ::syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, kClassIdle << kClassShift) == 0;
    return granted;
}

} // namespace ferrobank::drive
