#include "commands/FullReading.h"

#include "commands/ServedVolume.h"
#include "control/ControlClient.h"
#include "figures/DisplayText.h"
#include "figures/TreeWalk.h"
#include "figures/Usage.h"
#include "platform/Failure.h"

#include <algorithm>
#include <chrono>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::milliseconds kProgressStep{200};
constexpr std::size_t kMostLogged = 100;

void require(const std::optional<Reply>& reply)
{
    if (!reply) {
        throw Failure("The drive's background process did not answer. The log may name the reason.",
                      "no-answer");
    }
    if (!reply->ok) {
        throw Failure(reply->text, reply->code);
    }
}

} // namespace

ReadingResult readEverything(const Paths& paths, const Log& log, const ServerProbe& server,
                             const Volume& volume, const ReadingProgress& progress,
                             const std::stop_token& stop)
{
    UsageSum sum;
    walkTree(volume.mountPoint, sum, stop);
    ReadingSettings settings;
    settings.root = volume.mountPoint;
    settings.processorShare = 1;
    auto told = std::chrono::steady_clock::time_point();
    settings.onProgress = [&](std::uint64_t done) {
        const auto now = std::chrono::steady_clock::now();
        if (now - told >= kProgressStep) {
            told = now;
            progress(done, std::max(done, sum.usage().bytes));
        }
    };
    const ReadingResult result = readAllFiles(settings, stop);
    if (!result.error.empty()) {
        throw Failure(result.error, "reading");
    }
    if (result.cancelled) {
        return result;
    }
    log.write("All " + std::to_string(result.files) + " files were read on request; " +
              std::to_string(result.unreadableFiles) + " of them cannot be.");
    for (std::size_t index = 0; index < std::min(result.unreadable.size(), kMostLogged); ++index) {
        log.write("Cannot be read: " + displayName(result.unreadable[index]));
    }
    writeUnreadableList(paths.unreadable, result.unreadable);
    require(ask(server.socket(), {.operation = Operation::FilesRead, .total = result.unreadableFiles},
                kPingLimit));
    return result;
}

Acknowledgement acknowledge(const Paths& paths)
{
    const ServerProbe server = ServerProbe::probe(paths);
    if (!server.running || !server.state) {
        throw Failure("The drive's background process is not running. To start it, run: ferrobank restart",
                      "not-serving");
    }
    Acknowledgement result;
    const IntegrityState& known = server.state->integrity;
    const bool isOther = server.state->attachError && server.state->attachError->code == "store-other";
    if (known.olderImage || isOther) {
        require(ask(server.socket(), {.operation = Operation::Accept}, kRestartLimit));
        result.settled.emplace_back("The store that is there is used from now on.");
    }
    const std::optional<Volume> volume = findServedVolume(paths, server);
    if (known.unreadableFiles == 0 || !volume) {
        return result;
    }
    std::vector<std::string> left = readUnreadableList(paths.unreadable);
    if (left.size() < known.unreadableFiles) {
        throw Failure("There are more damaged files than were noted one by one. Run: ferrobank check --full",
                      "too-many");
    }
    std::erase_if(left, [&](const std::string& file) { return isReadable(volume->mountPoint, file); });
    writeUnreadableList(paths.unreadable, left);
    require(ask(server.socket(), {.operation = Operation::Replaced, .total = left.size()}, kPingLimit));
    const std::uint64_t replaced = known.unreadableFiles - left.size();
    if (replaced > 0) {
        result.settled.push_back(
            std::to_string(replaced) +
            (replaced == 1 ? " file that could not be read is" : " files that could not be read are") +
            " replaced or gone.");
    }
    for (const std::string& file : left) {
        result.unreadable.push_back(displayName(file));
    }
    return result;
}

} // namespace ferrobank::drive
