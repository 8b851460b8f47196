#include "commands/StatusReport.h"

#include "commands/ServedVolume.h"
#include "figures/DeviceCounters.h"
#include "platform/ToolPrograms.h"
#include "state/Figures.h"
#include "state/Work.h"
#include "store/Superblock.h"

#include <nlohmann/json.hpp>

namespace ferrobank::drive {

bool isReplaced(const State& state)
{
    const std::optional<FileIdentity> there = identityOf(driveProgramOf(state.executablePath));
    return there && *there != state.executable;
}

StatusReport StatusReport::gather(const Paths& paths)
{
    StatusReport report;
    report.mountpoint = paths.drive.string();
    report.log = paths.log.string();

    const std::optional<Superblock> superblock = readSuperblock(paths.image);
    report.installed = superblock.has_value();
    const ServerProbe server = ServerProbe::probe(paths);
    const std::optional<Volume> volume = findServedVolume(paths, server);
    report.mounted = volume && !volume->readOnly;
    report.store_bytes = allocatedBytes(paths.image);

    const std::optional<Figures> figures = Figures::read(paths.figures);
    if (figures && report.installed) {
        report.volume_used = figures->volumeUsed;
        report.saved = figures->saved;
    }
    if (server.state) {
        if (server.state->volumeUsed) {
            report.volume_used = server.state->volumeUsed;
            report.saved = server.state->saved;
        }
        if (!report.mounted && server.state->attachError) {
            report.attach_error = server.state->attachError->text;
        }
        report.update_pending = isReplaced(*server.state);
    }
    if (const std::optional<Work> work = Work::atWork(paths)) {
        report.work = work->command;
        report.work_phase = phaseWord(work->phase);
        report.work_done = work->done;
        report.work_total = work->total;
    }
    // What is not known yet is not shown as saved.
    if (report.volume_used && !report.saved) {
        report.saved = 0;
    }
    return report;
}

std::string StatusReport::toJson() const
{
    nlohmann::ordered_json root;
    root["installed"] = installed;
    root["mounted"] = mounted;
    root["mountpoint"] = mountpoint;
    const auto add = [&root](const char* key, const auto& value) {
        if (value) {
            root[key] = *value;
        }
    };
    add("volume_used", volume_used);
    add("store_bytes", store_bytes);
    add("saved", saved);
    add("attach_error", attach_error);
    if (update_pending) {
        root["update_pending"] = true;
    }
    add("work", work);
    add("work_phase", work_phase);
    add("work_done", work_done);
    add("work_total", work_total);
    root["log"] = log;
    return root.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace ferrobank::drive
