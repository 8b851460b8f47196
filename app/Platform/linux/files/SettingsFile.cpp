#include "Platform/linux/files/SettingsFile.h"

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/login/UserFolders.h"

#include <QtCore/QByteArrayList>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace ferrobank {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostBytes = std::size_t{64} * 1024;
constexpr int kMostBrokenFiles = 100;
const QByteArray kSection = "[General]";

/// The lines of a settings file, and where its keys are.
class Lines {
public:
    /// No value for what is no settings file.
    static std::optional<Lines> parse(const QByteArray& text)
    {
        Lines lines;
        bool inSection = true; // keys before the first section belong to it
        for (QByteArray& line : text.split('\n')) {
            const QByteArray trimmed = line.trimmed();
            const bool section = trimmed.startsWith('[') && trimmed.endsWith(']');
            const bool remark = trimmed.isEmpty() || trimmed.startsWith(';') || trimmed.startsWith('#');
            if (trimmed.contains('\0') || (!section && !remark && trimmed.indexOf('=') < 1)) {
                return std::nullopt;
            }
            inSection = section ? trimmed == kSection : inSection;
            lines._all.append(line);
            lines._keys.append(inSection && !section && !remark ? trimmed.left(trimmed.indexOf('=')).trimmed()
                                                                : QByteArray());
        }
        while (!lines._all.isEmpty() && lines._all.last().trimmed().isEmpty()) {
            lines._all.removeLast();
            lines._keys.removeLast();
        }
        return lines;
    }

    [[nodiscard]] QByteArray value(const QByteArray& key) const
    {
        const qsizetype at = _keys.lastIndexOf(key);
        return at < 0 ? QByteArray() : _all[at].mid(_all[at].indexOf('=') + 1).trimmed();
    }

    void set(const QByteArray& key, const QByteArray& value)
    {
        const QByteArray line = key + '=' + value;
        if (const qsizetype at = _keys.lastIndexOf(key); at >= 0) {
            _all[at] = line;
            return;
        }
        const auto found = std::find_if(_all.begin(), _all.end(), [](const QByteArray& candidate) {
            return candidate.trimmed() == kSection;
        });
        const qsizetype section = found - _all.begin();
        if (section == _all.size()) {
            _all.append(kSection);
            _keys.append(QByteArray());
        }
        const qsizetype at = section + 1;
        _all.insert(at, line);
        _keys.insert(at, key);
    }

    [[nodiscard]] std::string text() const { return (_all.join('\n') + '\n').toStdString(); }

private:
    QByteArrayList _all;
    QByteArrayList _keys; ///< of the same line; empty where there is none of ours
};

/// No value for a file that is there but is not ours to understand.
std::optional<Lines> read(const fs::path& file)
{
    struct stat facts{};
    if (::stat(file.c_str(), &facts) != 0 && (errno == ENOENT || errno == ENOTDIR)) {
        return Lines();
    }
    const auto content = readSmallFile(file, kMostBytes);
    return content ? Lines::parse(QByteArray::fromStdString(*content)) : std::nullopt;
}

/// Under a name that nothing has yet.
bool moveAside(const fs::path& file)
{
    for (int i = 1; i <= kMostBrokenFiles; ++i) {
        fs::path aside = file;
        aside += i == 1 ? std::string(".broken") : ".broken-" + std::to_string(i);
        if (::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0) {
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

/// The renaming survives a power cut only once the folder is written.
bool syncFolder(const fs::path& folder)
{
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor.isOpen() && ::fsync(descriptor.number()) == 0;
}

} // namespace

SettingsFile::SettingsFile(fs::path file) : _file(std::move(file)) {}

fs::path SettingsFile::standardPlace()
{
    const auto folders = UserFolders::ofProcess();
    return folders ? folders->config / "org.ferrobank.Ferrobank.conf" : fs::path();
}

bool SettingsFile::boolForKey(const QString& key) const
{
    if (const auto unwritten = _unwritten.constFind(key); unwritten != _unwritten.constEnd()) {
        return *unwritten;
    }
    const auto lines = read(_file);
    const QByteArray value = lines ? lines->value(key.toUtf8()) : QByteArray();
    return value == "true" || value == "1";
}

bool SettingsFile::setBool(const QString& key, bool value)
{
    _unwritten.insert(key, value);
    auto lines = read(_file);
    if (!lines && !moveAside(_file)) {
        return false;
    }
    Lines fresh = lines ? *std::move(lines) : Lines();
    for (const auto& [name, wish] : _unwritten.asKeyValueRange()) {
        fresh.set(name.toUtf8(), wish ? "true" : "false");
    }
    try {
        std::error_code ignored;
        const fs::path real =
            fs::canonical(_file, ignored); // a settings file may be a link to another folder
        const fs::path target = real.empty() ? _file : real;
        replaceSmallFile(target, fresh.text());
        if (!syncFolder(target.parent_path())) {
            return false;
        }
    } catch (const std::exception&) {
        return false;
    }
    _unwritten.clear();
    return true;
}

} // namespace ferrobank
