#pragma once

#include <filesystem>
#include <vector>

namespace ferrobank {

/// Places inside the application's folder. Plain value, usable on any thread, free of Qt.
///
/// The folder is found from the real path of the running executable, never from the environment, so it may be
/// moved anywhere, with spaces and any letters in its path.
class Bundle {
public:
    /// `root` is the folder "Ferrobank.app".
    explicit Bundle(std::filesystem::path root);

    /// The bundle of the running executable; resolved once, at the first call, so that it survives a
    /// replacement of the folder while the program runs.
    static const Bundle& main();

    /// The same bundle by the path that stays the same over updates, for everything that is written down
    /// outside of it: login entries, units, links. Where versions lie side by side, `<home>/versions/…`, that
    /// is `<home>/current/<name>`, or the folder `<name>` beside `.<name>-versions` if its programs are links
    /// to there. Elsewhere it is this bundle itself.
    [[nodiscard]] Bundle atStablePath() const;

    /// What has to go for this copy to be gone: the bundle, and where versions lie side by side, all of them
    /// with their links and the folder around them, unless it holds something that is not ours. Only what
    /// exists.
    [[nodiscard]] std::vector<std::filesystem::path> wholeCopy() const;

    [[nodiscard]] const std::filesystem::path& root() const { return _root; }

    [[nodiscard]] std::filesystem::path executable() const;
    [[nodiscard]] std::filesystem::path driveTool() const;         ///< Contents/Helpers/ferrobank
    [[nodiscard]] std::filesystem::path agentPropertyList() const; ///< Contents/Library/LaunchAgents/…
    [[nodiscard]] std::filesystem::path resource(const char* name) const;

private:
    std::filesystem::path _root;
};

} // namespace ferrobank
