#include "Ferrobank/CLI/DriveStatus.h"

#include "Ferrobank/CLI/JsonRecord.h"

namespace ferrobank {

DriveStatus DriveStatus::decode(const QByteArray& json)
{
    const JsonRecord record(json);
    DriveStatus status;
    status.installed = record.boolean("installed");
    status.mounted = record.boolean("mounted");
    status.mountpoint = record.text("mountpoint");
    status.volume_used = record.optionalCount("volume_used");
    status.store_bytes = record.optionalCount("store_bytes");
    status.saved = record.optionalCount("saved");
    status.attach_error = record.optionalText("attach_error");
    status.update_pending = record.optionalBoolean("update_pending");
    status.log = record.text("log");
    return status;
}

} // namespace ferrobank
