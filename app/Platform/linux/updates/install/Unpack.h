#pragma once

#include "Platform/linux/updates/install/Manifest.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace ferrobank::updates {

/// The one top folder of every release archive, whatever the installed folder is called by now.
inline constexpr const char* kReleaseFolder = "Ferrobank.app";

/// Unpacks a verified archive into `folder`, which must be empty, private and ours: it then holds the
/// application's folder under `name`, complete, with the manifest's sizes, checksums and modes (0755, 0644),
/// forced to the disk.
///
/// The manifest comes first in the archive and is held against `expectation` before anything else is written;
/// an entry that it does not list, or one that it lists and that is missing, is refused. Files are made anew
/// and never followed through links; links are made last, when nothing is written any more. Throws
/// UpdateFailure (Version, Archive, Space); what was written so far is left for the caller to remove.
Manifest unpackArchive(int archive, std::uint64_t archiveSize, const std::filesystem::path& folder,
                       const std::string& name, const Expectation& expectation);

/// Holds an unpacked application's folder against its own manifest: every file, and no file more. Returns the
/// manifest; throws UpdateFailure (Archive).
Manifest checkTree(const std::filesystem::path& root);

} // namespace ferrobank::updates
