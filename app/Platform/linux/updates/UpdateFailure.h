#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace ferrobank::updates {

/// Why an update did not happen; what the words are chosen by and what decides whether to try again.
enum class Problem {
    Off,       ///< this build has no feed or no key
    Network,   ///< not reached, refused, stalled, cut short
    Feed,      ///< unreadable feed
    Stale,     ///< genuine but old feed: somebody may be hiding newer versions
    Signature, ///< not signed by a trusted key, or changed since
    Version,   ///< the archive is not what the feed announced, or not newer
    Archive,   ///< an archive that is not safe or not complete
    Space,     ///< not enough room on the disk
    Place,     ///< this copy must not, or cannot, replace itself
    Busy,      ///< another process is updating this copy
    Install    ///< the replacement itself failed; the installed version is unchanged
};

/// The word that stands for a problem between the worker and the application, and back.
[[nodiscard]] std::string_view problemWord(Problem problem);
[[nodiscard]] Problem problemFromWord(std::string_view word); ///< Install for an unknown word

/// The error of everything in this folder. what() is a sentence for the user, UTF-8.
class UpdateFailure : public std::runtime_error {
public:
    UpdateFailure(Problem problem, const std::string& sentence)
        : std::runtime_error(sentence), _problem(problem)
    {}

    [[nodiscard]] Problem problem() const { return _problem; }

private:
    Problem _problem;
};

/// The same with the system's words for errno at its end: "… could not be written: No space left on device".
/// ENOSPC and EDQUOT become Problem::Space.
[[nodiscard]] UpdateFailure systemFailure(Problem problem, const std::string& sentence, int error);

} // namespace ferrobank::updates
