#include "exporting/Export.h"

#include "exporting/Copier.h"
#include "exporting/IncompleteMark.h"
#include "exporting/Snapshot.h"
#include "exporting/Verifier.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "figures/Usage.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace ferrobank::drive {

namespace {

/// Copying holds two descriptors for each folder it is inside of.
void allowDeepFolders()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

class Exporter {
public:
    Exporter(const ExportRequest& request, ExportStart start, const ProgressReceiver& receive,
             const std::stop_token& stop)
        : _request(request),
          _shown(displayName(request.destination.string())),
          _start(start),
          _receive(receive),
          _stop(stop)
    {}

    void run(ExportResult& result)
    {
        openDestination();
        removeLeftoverSnapshots(_request.drive);
        const DriveSnapshot snapshot(_request.drive, _stop);
        ProgressMeter progress(_receive, totalBytes(snapshot));
        Differences differences;
        const CopyRecord record = copy(snapshot, differences, progress);
        if (!_stop.stop_requested() && ::syncfs(_destination.get()) != 0) {
            throw systemFailure(_shown + " cannot be written", errno);
        }
        if (!_stop.stop_requested()) {
            verify(snapshot, record, differences, progress);
        }
        result.files = record.files;
        result.bytes = record.bytes;
        result.differences = differences.count();
        result.firstDifferences = differences.first();
        if (_stop.stop_requested()) {
            result.end = ExportResult::End::Cancelled;
            result.text = "The export was cancelled. Export into the same folder to go on.";
        } else if (differences.count() > 0) {
            result.end = ExportResult::End::Differences;
            result.text = sentenceFor(differences);
        } else {
            removeMark();
            result.end = ExportResult::End::Verified;
        }
    }

private:
    void openDestination()
    {
        std::filesystem::create_directory(_request.destination);
        _destination =
            FileDescriptor(::open(_request.destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const FileDescriptor drive(::open(_request.drive.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const auto volume = drive ? volumeState(drive.get()) : std::nullopt;
        if (!_destination || !volume) {
            throw systemFailure(_shown + " cannot be written", errno);
        }
        const std::string text = incompleteMark(volume->uuid);
        const FileDescriptor mark(::openat(_destination.get(), kIncompleteMark,
                                           O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (!mark || ::write(mark.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
            ::fsync(mark.get()) != 0)
        {
            throw systemFailure(_shown + " cannot be written", errno);
        }
    }

    void removeMark() const
    {
        if (::unlinkat(_destination.get(), kIncompleteMark, 0) != 0 || ::syncfs(_destination.get()) != 0) {
            throw systemFailure(_shown + " cannot be written", errno);
        }
    }

    std::uint64_t totalBytes(const DriveSnapshot& snapshot) const
    {
        UsageSum sum;
        for (const DriveSnapshot::Part& part : snapshot.parts()) {
            walkTree(part.folder, sum, _stop);
        }
        return sum.usage().bytes;
    }

    template <typename Visitor>
    void walkParts(const DriveSnapshot& snapshot, Visitor& visitor) const
    {
        for (const DriveSnapshot::Part& part : snapshot.parts()) {
            visitor.beginPart(part.place);
            walkTree(part.folder, visitor, _stop, part.place.empty() ? ToolFolder::Skip : ToolFolder::Visit);
        }
    }

    CopyRecord copy(const DriveSnapshot& snapshot, Differences& differences, ProgressMeter& progress) const
    {
        CopyRecord record;
        progress.start(ExportProgress::Phase::Copying);
        Copier copier({_destination.get(), _shown, _start}, record, differences, progress, _stop);
        walkParts(snapshot, copier);
        if (!_stop.stop_requested()) {
            progress.finish();
        }
        return record;
    }

    void verify(const DriveSnapshot& snapshot, const CopyRecord& record, Differences& differences,
                ProgressMeter& progress) const
    {
        progress.start(ExportProgress::Phase::Verifying);
        Verifier verifier(_destination.get(), record, differences, progress, _stop);
        walkParts(snapshot, verifier);
        verifier.finish();
        if (_stop.stop_requested()) {
            return;
        }
        progress.finish();
        if (verifier.entries() != record.entries && differences.count() == 0) {
            differences.add(_request.destination.string(), "holds " + std::to_string(verifier.entries()) +
                                                               " of " + std::to_string(record.entries) +
                                                               " files and folders");
        }
    }

    std::string sentenceFor(const Differences& differences) const
    {
        const std::uint64_t count = differences.count();
        std::string text = std::to_string(count) + (count == 1 ? " difference" : " differences") +
                           " between the drive and its copy in " + _shown + ":";
        for (const std::string& difference : differences.first()) {
            text += " " + difference;
        }
        return text;
    }

    const ExportRequest& _request;
    std::string _shown;
    ExportStart _start;
    const ProgressReceiver& _receive;
    const std::stop_token& _stop;
    FileDescriptor _destination;
};

} // namespace

ExportResult exportFiles(const ExportRequest& request, const ProgressReceiver& receive,
                         const std::stop_token& stop)
{
    const ExportStart start = checkDestination(request, stop);
    allowDeepFolders();
    ExportResult result;
    try {
        Exporter(request, start, receive, stop).run(result);
    } catch (const Failure& failure) {
        result.text = failure.text();
    } catch (const std::filesystem::filesystem_error& failure) {
        result.text = failure.what();
    }
    return result;
}

} // namespace ferrobank::drive
