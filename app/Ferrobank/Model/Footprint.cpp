#include "Ferrobank/Model/Footprint.h"

#include "Ferrobank/Model/ByteCount.h"

#include <QtCore/QCoreApplication>

#include <algorithm>

namespace ferrobank {

Footprint Footprint::of(const DriveStatus& status)
{
    return {.filesOnDrive = status.volume_used.value_or(0),
            .onDisk = status.store_bytes.value_or(0),
            .saved = status.saved.value_or(0)};
}

double Footprint::fraction() const
{
    const auto files = static_cast<double>(std::max<quint64>(filesOnDrive, 1));
    return std::min(static_cast<double>(onDisk) / files, 1.0);
}

QString Footprint::ratio(const QLocale& locale) const
{
    return locale.toString(static_cast<double>(filesOnDrive) / static_cast<double>(onDisk), 'f', 1);
}

QString Footprint::sentence(const QLocale& locale) const
{
    return QCoreApplication::translate("Footprint", "%1 of files take %2 on disk, %3× smaller.")
        .arg(byteCount(filesOnDrive, locale), byteCount(onDisk, locale), ratio(locale));
}

} // namespace ferrobank
