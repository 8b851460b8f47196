#pragma once

#include <filesystem>

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

    [[nodiscard]] const std::filesystem::path& root() const { return _root; }

    [[nodiscard]] std::filesystem::path executable() const;
    [[nodiscard]] std::filesystem::path driveTool() const;         ///< Contents/Helpers/ferrobank
    [[nodiscard]] std::filesystem::path agentPropertyList() const; ///< Contents/Library/LaunchAgents/…
    [[nodiscard]] std::filesystem::path resource(const char* name) const;

private:
    std::filesystem::path _root;
};

} // namespace ferrobank
