#pragma once

#include "Platform/Defaults.h"

#include <QtCore/QHash>

#include <filesystem>
#include <string>
#include <vector>

namespace ferrobank {

/// The settings as one small file of `key=value` lines below `[General]`, by default
/// `$XDG_CONFIG_HOME/org.ferrobank.Ferrobank.conf`. Main thread.
///
/// The file is read at each question, so what another program or the user changed counts. It is replaced
/// whole and synced; lines that are not ours are kept. A file that is no settings file, or cannot be read,
/// reads as empty; before the first write it is moved aside to "<name>.broken" (".broken-2", …).
class SettingsFile final : public Defaults {
public:
    explicit SettingsFile(std::filesystem::path file = standardPlace());

    static std::filesystem::path standardPlace();

    [[nodiscard]] bool boolForKey(const QString& key) const override;
    bool setBool(const QString& key, bool value) override;

private:
    std::filesystem::path _file;
    QHash<QString, bool> _unwritten; ///< what did not reach the disk
};

} // namespace ferrobank
