#include "exporting/Export.h"

#include "exporting/Copier.h"
#include "exporting/Snapshot.h"
#include "exporting/Verifier.h"
#include "figures/DisplayText.h"
#include "figures/Usage.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <utility>

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

/// Allocated bytes of what is not known to be in the copy already: what a stage has to read.
class WorkSum : public TreeVisitor {
public:
    explicit WorkSum(const KnownTree* known) : _known(known) {}

    void beginPart(const std::string& place)
    {
        _path.clear();
        _place = place;
    }

    bool enterFolder(const WalkedFolder& folder) override
    {
        _path.push_back(_path.empty() ? _place : pathOf(folder.name));
        return _usage.enterFolder(folder);
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override
    {
        if (_known == nullptr || !_known->isUnchanged(pathOf(entry.name), *entry.status)) {
            _usage.visit(entry);
        }
    }

    [[nodiscard]] std::uint64_t bytes() const { return _usage.usage().bytes; }

private:
    [[nodiscard]] std::string pathOf(const char* name) const
    {
        return _path.back().empty() ? name : _path.back() + "/" + name;
    }

    const KnownTree* _known;
    UsageSum _usage;
    std::string _place;
    std::vector<std::string> _path;
};

} // namespace

/// Where a stage reads from, and how it takes what it finds.
struct Export::Source {
    std::vector<DriveSnapshot::Part> parts;
    ExportStart start = ExportStart::Fresh;
    const KnownTree* known = nullptr;
    KnownTree* noted = nullptr;

    template <typename Visitor>
    WalkEnd walk(Visitor& visitor, const std::stop_token& stop) const
    {
        WalkEnd end = WalkEnd::Complete;
        for (const DriveSnapshot::Part& part : parts) {
            visitor.beginPart(part.place);
            const WalkEnd of = walkTree(part.folder, visitor, stop,
                                        part.place.empty() ? ToolFolder::Skip : ToolFolder::Visit);
            end = of == WalkEnd::Complete ? end : of;
        }
        return end;
    }
};

Export::Export(ExportRequest request, ProgressReceiver receive, std::stop_token stop)
    : _request(std::move(request)),
      _shown(displayName(_request.destination.string())),
      _receive(std::move(receive)),
      _stop(std::move(stop)),
      _start(checkDestination(_request, _stop))
{
    allowDeepFolders();
}

ExportResult Export::guarded(const std::function<void(ExportResult&)>& stage)
{
    ExportResult result;
    try {
        stage(result);
    } catch (const Failure& failure) {
        result.text = failure.text();
    } catch (const std::filesystem::filesystem_error& failure) {
        result.text = failure.what();
    }
    return result;
}

ExportResult Export::copy()
{
    return guarded([this](ExportResult& result) {
        _staging.emplace(_request.destination, _shown, volumeUuid(_request.drive));
        removeLeftoverSnapshots(_request.drive);
        // Asked before the snapshot is: what changes from now on may be in it or not.
        _known.emplace(_request.wallClock());
        const DriveSnapshot snapshot(_request.drive, _stop);
        Source source{.parts = snapshot.parts(), .start = _start, .known = nullptr, .noted = &*_known};
        run(source, result);
    });
}

ExportResult Export::bringUpToDate(const std::filesystem::path& drive)
{
    return guarded([this, &drive](ExportResult& result) {
        if (volumeUuid(drive) != volumeUuid(_request.drive) && !volumeUuid(_request.drive).empty()) {
            throw Failure("Another drive is mounted now; nothing was removed.", "other-drive");
        }
        run({.parts = {{std::string(), drive}},
             .start = ExportStart::Continue,
             .known = &*_known,
             .noted = nullptr},
            result);
    });
}

void Export::run(const Source& source, ExportResult& result)
{
    WorkSum work(source.known);
    source.walk(work, _stop);
    ProgressMeter progress(_receive, work.bytes());
    Differences differences;
    CopyRecord record;
    const int files = _staging->files();

    progress.start(ExportProgress::Phase::Copying);
    Copier copier({files, _shown, source.start}, {record, differences, _leftOut, progress}, _stop);
    if (source.known != nullptr) {
        copier.passOver(*source.known);
    }
    if (source.noted != nullptr) {
        copier.noteIn(*source.noted);
    }
    bool whole = source.walk(copier, _stop) == WalkEnd::Complete;
    if (!_stop.stop_requested()) {
        progress.finish();
        _staging->sync();
        progress.start(ExportProgress::Phase::Verifying);
        Verifier verifier(files, record, differences, progress, _stop);
        if (source.known != nullptr) {
            verifier.passOver(*source.known);
        }
        whole = source.walk(verifier, _stop) == WalkEnd::Complete && whole;
        verifier.finish();
        if (!_stop.stop_requested()) {
            progress.finish();
            if (differences.count() == 0 && (verifier.entries() != record.entries || !whole)) {
                differences.add(_request.destination.string(), "holds " + std::to_string(verifier.entries()) +
                                                                   " of " + std::to_string(record.entries) +
                                                                   " files and folders");
            }
        }
    }
    result.files = record.files;
    result.bytes = record.bytes;
    result.copied = record.copied;
    result.differences = differences.count();
    result.firstDifferences = differences.first();
    if (_stop.stop_requested()) {
        result.end = ExportResult::End::Cancelled;
        result.text = "The export was cancelled. Export into the same folder to go on.";
    } else if (differences.count() > 0) {
        result.end = ExportResult::End::Differences;
        result.text = sentenceFor(differences);
    } else {
        result.end = ExportResult::End::Verified;
    }
}

std::string Export::sentenceFor(const Differences& differences) const
{
    const std::uint64_t count = differences.count();
    std::string text = std::to_string(count) + (count == 1 ? " difference" : " differences") +
                       " between the drive and its copy in " + _shown + ":";
    for (const std::string& difference : differences.first()) {
        text += " " + difference;
    }
    return text;
}

void Export::publish()
{
    _staging->publish();
}

void Export::finish()
{
    _staging->finish();
}

ExportResult exportFiles(const ExportRequest& request, const ProgressReceiver& receive,
                         const std::stop_token& stop, LeftOut* leftOut)
{
    Export whole(request, receive, stop);
    ExportResult result = whole.copy();
    if (leftOut != nullptr) {
        *leftOut = whole.leftOut();
    }
    if (result.end != ExportResult::End::Verified && result.end != ExportResult::End::Differences) {
        return result;
    }
    try {
        // Also with differences: most files are there, and the user should find them.
        whole.publish();
        if (result.end == ExportResult::End::Verified) {
            whole.finish();
        }
    } catch (const Failure& failure) {
        result.end = ExportResult::End::Failed;
        result.text = result.text.empty() ? failure.text() : result.text + " " + failure.text();
    }
    return result;
}

} // namespace ferrobank::drive
