#pragma once

#include <filesystem>
#include <vector>

namespace ferrobank::updates {

enum class Programs { MayRun, MayNotRun };

/// Takes away from this process, and from what it starts, what it does not need, for good: no more rights by
/// starting a program (no_new_privs); writing only below the folders named, which have to exist, and to
/// /dev/null (Landlock); none of the calls by which processes, mounts, modules, keys, clocks or other kernel
/// matters are reached, no sockets but local ones and those of the internet, and no programs unless they are
/// needed (a system call filter). What the kernel lacks is left out. Reading is not limited.
///
/// A process that is confined cannot look at the programs that others run, which is what decides whether an
/// old version may be removed: that has to be done before.
///
/// To be called before threads are started and before anything of the network is read. A build that is
/// instrumented is not confined: its instruments write and trace.
void confine(const std::vector<std::filesystem::path>& writable, Programs programs);

/// Whether this build confines itself at all.
[[nodiscard]] bool isConfinementBuilt();

} // namespace ferrobank::updates
