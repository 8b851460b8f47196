#include "Platform/linux/Descriptor.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/SideBySide.h"
#include "Platform/linux/updates/install/Staging.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Swap.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/install/Unpack.h"
#include "Platform/linux/updates/values/Offer.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/Confinement.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QtGlobal>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

constexpr std::int64_t kLargestArchive = 500LL * 1024 * 1024;
constexpr std::int64_t kSpare = 50LL * 1024 * 1024;
constexpr std::int64_t kUsualExpansion = 4;
constexpr int kProbeLimit = 5000; ///< milliseconds

void expectUsable(const Offer& offer)
{
    if (offer.informational || offer.archive.isEmpty())
        throw UpdateFailure(Problem::Feed, "There is nothing to download for this update.");
    if (offer.length <= 0 || offer.length > kLargestArchive)
        throw UpdateFailure(Problem::Feed, "The list of updates gives no usable size for the download.");
    if (offer.unpackedLength < 0 || offer.unpackedLength > static_cast<std::int64_t>(Manifest::kLargestTotal))
        throw UpdateFailure(Problem::Feed,
                            "The list of updates gives no usable size for the unpacked update.");
    if (offer.signature.trimmed().isEmpty())
        throw UpdateFailure(Problem::Signature, "The update carries no signature.");
}

void expectRoom(const Offer& offer, const fs::path& folder)
{
    const std::int64_t unpacked =
        offer.unpackedLength > 0 ? offer.unpackedLength : offer.length * kUsualExpansion;
    const std::int64_t needed = offer.length + 2 * unpacked + kSpare;
    struct statvfs facts{};
    if (::statvfs(folder.c_str(), &facts) != 0)
        throw systemFailure(Problem::Place, "The disk could not be looked at", errno);
    const auto free = static_cast<std::int64_t>(facts.f_bavail * facts.f_frsize);
    if (free < needed) {
        const QString sentence =
            u"There is not enough room for the update: %1 MB are needed, %2 MB are free."_s;
        throw UpdateFailure(Problem::Space,
                            sentence.arg(needed / 1'000'000 + 1).arg(free / 1'000'000).toStdString());
    }
}

/// The bytes of an open file, mapped: what is verified is what is unpacked, whatever happens to the name.
class MappedFile {
public:
    MappedFile(int descriptor, std::size_t size)
        : _size(size), _data(::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0))
    {
        if (_data == MAP_FAILED)
            throw systemFailure(Problem::Install, "The downloaded update could not be read", errno);
    }

    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    ~MappedFile() { ::munmap(_data, _size); }

    [[nodiscard]] std::span<const std::byte> bytes() const { return {static_cast<std::byte*>(_data), _size}; }

private:
    std::size_t _size;
    void* _data;
};

struct stat factsOf(const Descriptor& file)
{
    struct stat facts{};
    if (!file.isOpen() || ::fstat(file.number(), &facts) != 0)
        throw systemFailure(Problem::Install, "The downloaded update could not be read", errno);
    return facts;
}

Descriptor openVerified(const fs::path& archive, const Offer& offer, const TrustedKeys& keys)
{
    Descriptor file(::open(archive.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    const struct stat before = factsOf(file);
    const bool isWhole = S_ISREG(before.st_mode) && before.st_size == offer.length;
    const bool isGenuine =
        isWhole && keys.haveSigned(MappedFile(file.number(), static_cast<std::size_t>(offer.length)).bytes(),
                                   offer.signature.toStdString());
    const struct stat after = factsOf(file);
    const bool isSame = before.st_size == after.st_size && before.st_mtim.tv_sec == after.st_mtim.tv_sec &&
                        before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
    if (!isGenuine || !isSame)
        throw UpdateFailure(Problem::Signature,
                            "The downloaded update is not signed by its maker, or was changed on the way.");
    return file;
}

Expectation expectationOf(const WorkerContext& context, const Offer& offer)
{
    Expectation expectation;
    expectation.product = context.configuration.product.toStdString();
    expectation.version = offer.version.toStdString();
    expectation.installed = context.configuration.version.toStdString();
    expectation.channel = offer.channel.toStdString();
    expectation.system = systemName().toStdString();
    expectation.glibc = glibcVersion();
    expectation.qt = qVersion();
    return expectation;
}

/// One to sign with and one that is left when that is lost; a single damaged one would switch its updates
/// off.
bool hasUsableKeys(const UpdateConfiguration& configuration)
{
    try {
        return TrustedKeys(configuration.keys).distinct() >= 2;
    } catch (const UpdateFailure&) {
        return false;
    }
}

/// The new version must be able to receive the one after it.
void expectUpdatable(const fs::path& bundle, const QString& version)
{
    const UpdateConfiguration next = configurationOf(bundle);
    const bool isUpdatable = next.isOn() && hasUsableKeys(next) && next.version == version &&
                             installKindOf(bundle).word == InstallKind::Word::Folder;
    if (!isUpdatable)
        throw UpdateFailure(Problem::Version, "The update was refused: it could not be updated again.");
}

/// The context's place, or the one among versions that its bundle moves to where folders cannot be exchanged.
InstallPlace placeThatCanBeReplaced(const WorkerContext& context)
{
    const InstallPlace& place = context.place;
    if (place.layout == InstallPlace::Layout::Versioned)
        return place;
    const StagingLock lock(place, std::chrono::milliseconds(0));
    if (trialAt(place))
        throw UpdateFailure(Problem::Busy, "The last update has not finished yet.");
    if (canExchange(place.staging()))
        return place;
    return moveSideBySide(place, context.configuration.version.toStdString());
}

/// Lets the new version load all its libraries once, before anything is replaced.
void expectStarts(const fs::path& bundle, const QString& version)
{
    QProcess probe;
    probe.setProcessChannelMode(QProcess::SeparateChannels);
    probe.start(QString::fromStdString((bundle / "Contents/Helpers/ferrobank-update").string()),
                QStringList{u"probe"_s});
    const bool ended = probe.waitForFinished(kProbeLimit) && probe.exitStatus() == QProcess::NormalExit &&
                       probe.exitCode() == 0;
    if (!ended) {
        probe.kill();
        probe.waitForFinished(kProbeLimit);
    }
    const QString answer = QString::fromUtf8(probe.readAllStandardOutput()).trimmed();
    if (!ended || answer != u"Ferrobank %1"_s.arg(version))
        throw UpdateFailure(Problem::Install, "The update was refused: it does not start on this computer.");
}

} // namespace

void runFetch(const WorkerContext& context)
{
    const TrustedKeys keys = context.keys();
    const Offer offer = offerFromJson(context.request[u"offer"_s].toObject());
    if (!context.verdict.mayReplace)
        throw UpdateFailure(Problem::Place, context.verdict.sentence);
    expectUsable(offer);
    const InstallPlace place = placeThatCanBeReplaced(context);

    const StagingLock lock(place, std::chrono::milliseconds(0));
    if (trialAt(place))
        throw UpdateFailure(Problem::Busy, "The last update has not finished yet.");
    Staging staging(place);
    staging.forgetStaged();
    staging.removeLeftovers(context.configuration.version.toStdString());
    expectRoom(offer, place.staging());
    // From here on bytes of the network are read. The new version is tried below, so programs may run.
    confine({place.staging()}, Programs::MayRun);

    try {
        const auto told = [&context, &offer](std::int64_t bytes) {
            context.tell(QJsonObject{{u"event"_s, u"progress"_s},
                                     {u"bytes"_s, qint64{bytes}},
                                     {u"length"_s, qint64{offer.length}}});
        };
        downloadArchive({offer.archive, offer.length, staging.archive(), staging.archiveNote(), told},
                        context.rules);
        context.tell(QJsonObject{{u"event"_s, u"verifying"_s}});
        const Descriptor archive = openVerified(staging.archive(), offer, keys);
        staging.beginUnpacking();
        const std::string name = place.root.filename().string();
        unpackArchive(archive.number(), static_cast<std::uint64_t>(offer.length), staging.unpacking(), name,
                      expectationOf(context, offer));
        expectUpdatable(staging.unpacking() / name, offer.version);
        expectStarts(staging.unpacking() / name, offer.version);
        const QByteArray item = QJsonDocument(offerToJson(offer)).toJson(QJsonDocument::Compact);
        staging.record({offer.version.toStdString(), item.toStdString()});
    } catch (const UpdateFailure& failure) {
        // Only a download that stopped on the way is worth keeping.
        if (failure.problem() != Problem::Network)
            staging.discardDownload();
        // Not more than that: a confined process does not see what others run, and old versions may be in
        // use.
        staging.dropUnfinished();
        throw;
    }
    context.tell(QJsonObject{{u"event"_s, u"staged"_s}});
}

} // namespace ferrobank::updates
