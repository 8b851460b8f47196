#include "support/updates/TestRelease.h"

#include "Platform/linux/updates/worker/WorkerContext.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <archive.h>
#include <archive_entry.h>
#include <sodium.h>

#include <algorithm>

namespace ferrobank {
namespace {

using namespace Qt::StringLiterals;

constexpr const char* kTop = "Ferrobank.app/";
constexpr const char* kManifest = "Contents/Resources/update-manifest.json";

/// Of nobody: what it would sign with was thrown away.
const QString kSpareKey = u"rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs="_s;

QByteArray propertyList(const QString& version, const QString& feed, const QStringList& keys)
{
    QString list;
    for (const QString& key : keys)
        list += u"<string>%1</string>"_s.arg(key);
    const QString text = uR"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>org.ferrobank.Ferrobank</string>
<key>CFBundleVersion</key><string>%1</string>
<key>SUFeedURL</key><string>%2</string>
<key>SUPublicEDKeys</key><array>%3</array>
<key>SUEnableAutomaticChecks</key><true/>
<key>SUAutomaticallyUpdate</key><true/>
</dict></plist>
)"_s;
    return text.arg(version, feed, list).toUtf8();
}

std::string hex(const QByteArray& content)
{
    std::array<unsigned char, 32> hash{};
    crypto_hash_sha256(hash.data(), reinterpret_cast<const unsigned char*>(content.constData()),
                       static_cast<unsigned long long>(content.size()));
    return QByteArray::fromRawData(reinterpret_cast<const char*>(hash.data()), hash.size())
        .toHex()
        .toStdString();
}

void check(int status, archive* writer)
{
    if (status != ARCHIVE_OK)
        qFatal("The test archive cannot be made: %s", archive_error_string(writer));
}

} // namespace

TestRelease::TestRelease(QString version, const QString& feed, const SigningKey& key)
    : _version(std::move(version))
{
    const QByteArray number = _version.toUtf8();
    setConfiguration(feed, {QString::fromStdString(key.publicBase64()), kSpareKey});
    setFile("Contents/Resources/install-kind", "folder\n\n");
    setFile("Contents/Linux/Ferrobank", "#!/bin/sh\necho " + number + " \"$@\" >> \"$RELEASE_LOG\"\n", true);
    setFile("Contents/Helpers/ferrobank-update", "#!/bin/sh\necho Ferrobank " + number + "\n", true);
    setFile("Contents/Linux/libferrobank-app.so", QByteArray(50'000, 'x') + number);
    setFile("Contents/Resources/Grüße & more.txt", "text " + number);
}

void TestRelease::setConfiguration(const QString& feed, const QStringList& keys)
{
    setFile("Contents/Info.plist", propertyList(_version, feed, keys));
}

void TestRelease::setFile(const std::string& path, const QByteArray& content, bool isExecutable)
{
    removeFile(path);
    _files.push_back({path, content, isExecutable});
}

void TestRelease::removeFile(const std::string& path)
{
    std::erase_if(_files, [&path](const File& file) { return file.path == path; });
}

void TestRelease::editManifest(std::function<void(nlohmann::json&)> edit)
{
    _edit = std::move(edit);
}

void TestRelease::add(TestEntry entry)
{
    _added.push_back(std::move(entry));
}

QByteArray TestRelease::manifest() const
{
    nlohmann::json entries = nlohmann::json::array();
    for (const File& file : _files)
        entries.push_back({{"path", file.path},
                           {"type", "file"},
                           {"size", static_cast<std::uint64_t>(file.content.size())},
                           {"executable", file.isExecutable},
                           {"sha256", hex(file.content)}});
    entries.push_back({{"path", "Contents/Linux/alias"}, {"type", "link"}, {"target", "Ferrobank"}});
    nlohmann::json json{
        {"format", 1},   {"product", "org.ferrobank.Ferrobank"},          {"version", _version.toStdString()},
        {"channel", ""}, {"system", updates::systemName().toStdString()}, {"entries", entries}};
    if (_edit)
        _edit(json);
    return QByteArray::fromStdString(json.dump());
}

QByteArray TestRelease::archive() const
{
    std::vector<TestEntry> entries;
    entries.push_back(
        {.path = kTop, .content = {}, .type = 040000, .mode = 0755, .target = {}, .hardLink = {}});
    const auto addFile = [&entries](const std::string& path, const QByteArray& content, unsigned mode) {
        entries.push_back({.path = kTop + path,
                           .content = content,
                           .type = 0100000,
                           .mode = mode,
                           .target = {},
                           .hardLink = {}});
    };
    addFile(kManifest, manifest(), 0644);
    for (const File& file : _files)
        addFile(file.path, file.content, file.isExecutable ? 0755 : 0644);
    entries.push_back({.path = std::string(kTop) + "Contents/Linux/alias",
                       .content = {},
                       .type = 0120000,
                       .mode = 0777,
                       .target = "Ferrobank",
                       .hardLink = {}});
    entries.insert(entries.end(), _added.begin(), _added.end());
    return packArchive(entries);
}

void TestRelease::installAt(const QString& root) const
{
    const auto write = [&root](const std::string& path, const QByteArray& content, bool isExecutable) {
        const QString name = root + u'/' + QString::fromStdString(path);
        QDir().mkpath(QFileInfo(name).path());
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("The test copy cannot be written.");
        const auto readable = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;
        const auto executable = QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
        file.setPermissions(isExecutable ? readable | executable : readable);
    };
    write(kManifest, manifest(), false);
    for (const File& file : _files)
        write(file.path, file.content, file.isExecutable);
    QFile::link(u"Ferrobank"_s, root + u"/Contents/Linux/alias"_s);
}

QByteArray packArchive(const std::vector<TestEntry>& entries, bool isCompressed)
{
    std::vector<char> buffer(64 * 1024 * 1024);
    std::size_t used = 0;
    archive* const writer = archive_write_new();
    check(archive_write_set_format_pax(writer), writer);
    if (isCompressed)
        check(archive_write_add_filter_zstd(writer), writer);
    check(archive_write_set_bytes_in_last_block(writer, 1), writer);
    check(archive_write_open_memory(writer, buffer.data(), buffer.size(), &used), writer);
    for (const TestEntry& one : entries) {
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, one.path.c_str());
        archive_entry_set_filetype(entry, one.type);
        archive_entry_set_perm(entry, static_cast<mode_t>(one.mode));
        archive_entry_set_size(entry, one.content.size());
        if (!one.target.empty())
            archive_entry_set_symlink(entry, one.target.c_str());
        if (!one.hardLink.empty())
            archive_entry_set_hardlink(entry, one.hardLink.c_str());
        check(archive_write_header(writer, entry), writer);
        if (!one.content.isEmpty())
            archive_write_data(writer, one.content.constData(), static_cast<std::size_t>(one.content.size()));
        archive_entry_free(entry);
    }
    check(archive_write_close(writer), writer);
    archive_write_free(writer);
    return {buffer.data(), static_cast<qsizetype>(used)};
}

QByteArray feedOf(const QList<TestItem>& items, const QString& validUntil)
{
    QString feed = uR"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"
     xmlns:fb="https://ferrobank.org/xml-namespaces/updates">
<channel><title>Ferrobank</title>
)"_s;
    if (!validUntil.isEmpty())
        feed += u"<fb:validUntil>%1</fb:validUntil>\n"_s.arg(validUntil);
    for (const TestItem& item : items) {
        feed += u"<item><title>%1</title><sparkle:version>%1</sparkle:version><pubDate>%2</pubDate>%3"_s.arg(
            item.version, item.date, item.more);
        if (!item.url.isEmpty())
            feed += u"<enclosure url=\"%1\" length=\"%2\" sparkle:edSignature=\"%3\" sparkle:os=\"linux\"/>"_s
                        .arg(item.url, QString::number(item.length), item.signature);
        feed += u"</item>\n"_s;
    }
    return (feed + u"</channel></rss>\n"_s).toUtf8();
}

} // namespace ferrobank
