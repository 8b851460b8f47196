#pragma once

#include "Platform/linux/updates/worker/WorkerContext.h"

namespace ferrobank::updates {

// The worker's commands. Each tells its result as events and throws UpdateFailure when it cannot be had.

/// What waits here: the verdict on the place, the version that is staged, whether this one is on trial.
/// Removes what earlier attempts left.
void runStatus(const WorkerContext& context);

/// Fetches the feed and chooses; writes nothing. A scheduled check on a connection that is paid by volume
/// tells "metered" instead.
void runCheck(const WorkerContext& context);

/// Downloads, verifies, unpacks and stages the request's offer.
void runFetch(const WorkerContext& context);

/// Waits for the application to end, replaces the bundle and starts the new version if asked to.
void runInstall(const WorkerContext& context);

/// Waits for the application to end and starts the version that is in its place, whoever put it there.
void runRelaunch(const WorkerContext& context);

/// The running version works: ends its trial and removes the old one.
void runHealthy(const WorkerContext& context);

} // namespace ferrobank::updates
