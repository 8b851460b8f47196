#include "Platform/linux/updates/install/Manifest.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/install/SafePath.h"

#include <sodium.h>

#include <nlohmann/json.hpp>

namespace ferrobank::updates {
namespace {

using Json = nlohmann::json;

UpdateFailure unusable(const std::string& detail)
{
    return {Problem::Archive, "The update's list of files cannot be used: " + detail + "."};
}

Sha256 readHash(const std::string& hex)
{
    Sha256 hash{};
    std::size_t length = 0;
    const char* end = nullptr;
    const int status =
        sodium_hex2bin(hash.data(), hash.size(), hex.data(), hex.size(), nullptr, &length, &end);
    if (status != 0 || length != hash.size() || end != hex.data() + hex.size())
        throw unusable("a checksum is malformed");
    return hash;
}

ManifestEntry readEntry(const Json& json, const std::string& path)
{
    ManifestEntry entry;
    const std::string type = json.at("type");
    if (type == "link") {
        entry.isLink = true;
        entry.target = json.at("target").get<std::string>();
        if (!isSafeTarget(path, entry.target))
            throw unusable("a link leads out of the application's folder");
    } else if (type == "file") {
        entry.isExecutable = json.at("executable").get<bool>();
        if (!json.at("size").is_number_unsigned())
            throw unusable("a size is not a number");
        entry.size = json.at("size").get<std::uint64_t>();
        entry.sha256 = readHash(json.at("sha256"));
    } else
        throw unusable("an entry is neither a file nor a link");
    return entry;
}

void readEntries(const Json& json, Manifest& manifest)
{
    if (!json.is_array() || json.size() > Manifest::kMostEntries)
        throw unusable("it has too many entries");
    for (const Json& one : json) {
        const std::string path = one.at("path");
        if (!isSafePath(path) || path == Manifest::kPath)
            throw unusable("an entry has no usable path");
        ManifestEntry entry = readEntry(one, path);
        manifest.totalSize += entry.size;
        if (entry.size > Manifest::kLargestTotal || manifest.totalSize > Manifest::kLargestTotal)
            throw unusable("it is too large");
        if (!manifest.entries.emplace(path, std::move(entry)).second)
            throw unusable("an entry is there twice");
    }
}

/// A path that is both a file and a folder of another cannot be unpacked.
void expectNoEntryBelowAnother(const Manifest& manifest)
{
    for (const auto& [path, entry] : manifest.entries) {
        for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            if (manifest.entries.contains(path.substr(0, slash)))
                throw unusable("an entry lies below a file");
        }
    }
}

bool isOlder(const std::string& present, const std::string& needed)
{
    return !needed.empty() && compareVersions(present, needed) < 0;
}

} // namespace

Manifest readManifest(std::string_view json)
{
    if (json.size() > Manifest::kLargestFile)
        throw unusable("it is too large");
    try {
        const Json root = Json::parse(json);
        if (root.at("format").get<int>() != 1)
            throw unusable("it is of a later kind");
        Manifest manifest;
        manifest.product = root.at("product").get<std::string>();
        manifest.version = root.at("version").get<std::string>();
        if (!isUsableVersion(manifest.version))
            throw unusable("its version is of letters that none may have");
        manifest.channel = root.at("channel").get<std::string>();
        manifest.system = root.at("system").get<std::string>();
        const Json requires_ = root.value("requires", Json::object());
        manifest.minimumGlibc = requires_.value("glibc", std::string());
        manifest.minimumQt = requires_.value("qt", std::string());
        readEntries(root.at("entries"), manifest);
        expectNoEntryBelowAnother(manifest);
        return manifest;
    } catch (const Json::exception&) {
        throw unusable("something in it is missing or of the wrong kind");
    }
}

void expectManifest(const Manifest& manifest, const Expectation& expectation)
{
    const auto refuse = [](const std::string& sentence) -> UpdateFailure {
        return {Problem::Version, sentence};
    };
    if (manifest.product != expectation.product)
        throw refuse("The downloaded update is for another application.");
    if (manifest.system != expectation.system)
        throw refuse("The downloaded update is for another kind of computer.");
    if (manifest.channel != expectation.channel)
        throw refuse("The downloaded update is not of the kind that was announced.");
    if (manifest.version != expectation.version)
        throw refuse("The downloaded update is not the version that was announced.");
    if (!isNewer(manifest.version, expectation.installed))
        throw refuse("The downloaded update is not newer than the installed version.");
    if (isOlder(expectation.glibc, manifest.minimumGlibc) || isOlder(expectation.qt, manifest.minimumQt))
        throw refuse("The update needs a newer system than this one.");
}

} // namespace ferrobank::updates
