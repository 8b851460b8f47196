#pragma once

#include "helper/Places.h"

#include <functional>
#include <string>

namespace ferrobank::drive {

/// /etc/fstab for somebody who has to change it: one at a time, in one step, with owner, mode, access list
/// and other attributes kept, and never over what another program has written meanwhile. A kill at any moment
/// leaves the old file or the new one, and at worst a hidden file beside it, which the next change removes.
/// Needs root.
class FstabFile {
public:
    explicit FstabFile(const Places& places) : _places(places) {}

    using Change = std::function<std::string(const std::string&)>;

    /// The text now; empty where there is no such file. Throws Failure when it is no plain file.
    [[nodiscard]] std::string read() const;
    /// Puts what `change` makes of the text in its place; it may be asked again when the file changes
    /// meanwhile. Throws Failure; the file is then as it was.
    void edit(const Change& change) const;

private:
    enum class Outcome { Done, ChangedMeanwhile };

    [[nodiscard]] Outcome editOnce(const Change& change) const;
    void removeLeftOvers() const;

    const Places& _places;
};

} // namespace ferrobank::drive
