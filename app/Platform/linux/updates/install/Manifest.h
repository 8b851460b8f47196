#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ferrobank::updates {

using Sha256 = std::array<unsigned char, 32>;

/// One file or link of a release.
struct ManifestEntry {
    bool isLink = false;
    bool isExecutable = false; ///< files: 0755, else 0644
    std::uint64_t size = 0;
    Sha256 sha256{};
    std::string target; ///< of a link

    friend bool operator==(const ManifestEntry&, const ManifestEntry&) = default;
};

/// What an archive says about itself: the list that lies in the bundle at kPath, the first entry of the
/// archive. It is covered by the archive's signature like everything else in it. Plain value.
struct Manifest {
    static constexpr std::string_view kPath = "Contents/Resources/update-manifest.json";
    static constexpr std::uint64_t kLargestFile = 8ULL * 1024 * 1024; ///< of the manifest itself, bytes
    static constexpr std::uint64_t kLargestTotal = 2ULL * 1024 * 1024 * 1024;
    static constexpr std::size_t kMostEntries = 20'000;

    std::string product;
    std::string version;
    std::string channel;
    std::string system;
    std::string minimumGlibc; ///< empty: none
    std::string minimumQt;
    std::uint64_t totalSize = 0;                  ///< bytes of all files
    std::map<std::string, ManifestEntry> entries; ///< by path inside the bundle, without the manifest itself
};

/// Reads the JSON text. Throws UpdateFailure (Archive) on anything missing, of the wrong kind, unsafe or over
/// the limits above.
[[nodiscard]] Manifest readManifest(std::string_view json);

/// What the archive must be. Plain value.
struct Expectation {
    std::string product;
    std::string version; ///< the feed's
    std::string installed;
    std::string channel;
    std::string system;
    std::string glibc; ///< of this machine
    std::string qt;
};

/// Throws UpdateFailure (Version) unless the manifest is of this product, channel and system, of exactly the
/// announced version, newer than the installed one, and content with this machine.
void expectManifest(const Manifest& manifest, const Expectation& expectation);

} // namespace ferrobank::updates
