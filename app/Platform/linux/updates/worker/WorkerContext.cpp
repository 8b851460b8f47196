#include "Platform/linux/updates/worker/WorkerContext.h"

#include "Platform/linux/PropertyList.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"

#include <QtCore/QDir>
#include <QtCore/QSysInfo>

#include <gnu/libc-version.h>

namespace ferrobank::updates {

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestAuthority = std::size_t{256} * 1024;

} // namespace

QString systemName()
{
    const QString processor = QSysInfo::buildCpuArchitecture();
    return u"linux-"_s + (processor == "arm64"_L1 ? u"aarch64"_s : processor);
}

std::string glibcVersion()
{
    return ::gnu_get_libc_version();
}

UpdateConfiguration configurationOf(const fs::path& bundle)
{
    const auto list = PropertyList::read(bundle / "Contents/Info.plist");
    return list ? readConfiguration(*list) : UpdateConfiguration();
}

WorkerContext WorkerContext::of(const QJsonObject& request, std::function<void(const QJsonObject&)> tell)
{
    std::error_code error;
    const fs::path named = fs::canonical(request[u"bundle"_s].toString().toStdString(), error);
    WorkerContext context;
    if (!error) {
        context.place = InstallPlace::of(named);
        context.configuration = configurationOf(context.place.root);
    }
    if (error || context.configuration.version.isEmpty())
        throw UpdateFailure(Problem::Place, "This copy of the application is not complete.");
    context.request = request;
    context.tell = std::move(tell);
    context.verdict = judgePlace(context.place, QDir::homePath().toStdString());
    context.rules.userAgent = u"Ferrobank/%1"_s.arg(context.configuration.version);
    const auto authority =
        readSmallFile(context.place.root / "Contents/Resources/update-authority.pem", kLongestAuthority);
    if (authority)
        context.rules.authority = QByteArray::fromStdString(*authority);
    const qint64 stall = context.request[u"stall"_s].toInteger();
    if (stall > 0)
        context.rules.stall = std::chrono::milliseconds(stall);
    const qint64 total = context.request[u"total"_s].toInteger();
    if (total > 0)
        context.rules.total = std::chrono::milliseconds(total);
    return context;
}

TrustedKeys WorkerContext::keys() const
{
    if (!configuration.isOn())
        throw UpdateFailure(Problem::Off, "This copy was built without an address for updates.");
    return TrustedKeys(configuration.keys);
}

} // namespace ferrobank::updates
