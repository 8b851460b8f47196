#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank {

/// A property list whose root is a dictionary, in the XML or the binary form; the bundle describes itself and
/// its agent in such files. Plain value without copies, usable on any thread, free of Qt.
///
/// A key that is missing and a key whose value is of another type read the same: nothing.
class PropertyList {
public:
    /// Larger files are refused; those of a bundle have a few kilobytes.
    static constexpr std::size_t kSizeLimit = std::size_t{64} * 1024;

    /// Nothing if the file cannot be read or holds no dictionary.
    [[nodiscard]] static std::optional<PropertyList> read(const std::filesystem::path& file);
    [[nodiscard]] static std::optional<PropertyList> parse(std::string_view bytes);

    [[nodiscard]] std::optional<std::string> text(const char* key) const;
    [[nodiscard]] std::optional<bool> flag(const char* key) const;
    /// A whole number that is not negative.
    [[nodiscard]] std::optional<std::uint64_t> number(const char* key) const;
    /// The flag `key` of the dictionary under `dictionary`.
    [[nodiscard]] std::optional<bool> flag(const char* dictionary, const char* key) const;
    /// Nothing also if one element of the array is not a text.
    [[nodiscard]] std::optional<std::vector<std::string>> texts(const char* key) const;

private:
    struct Release {
        void operator()(void* node) const;
    };

    using Root = std::unique_ptr<void, Release>;

    explicit PropertyList(Root root);

    Root _root;
};

} // namespace ferrobank
