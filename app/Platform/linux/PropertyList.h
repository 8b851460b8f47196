#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank {

/// A property list whose root is a dictionary, in the XML form that the document type of PropertyList-1.0.dtd
/// describes; the bundle describes itself and its agent in such files. Plain value, usable on any thread,
/// free of Qt.
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
    friend class PropertyListReader;

    /// One value. `words` is what stands between its tags; containers have values instead, those of a
    /// dictionary with keys.
    struct Node {
        enum class Kind { Text, Integer, True, False, Array, Dictionary, Other };

        Kind kind = Kind::Other;
        std::string key;
        std::string words;
        std::vector<Node> values;

        [[nodiscard]] const Node* entry(std::string_view name) const;
        [[nodiscard]] std::optional<bool> flag() const;
    };

    explicit PropertyList(Node root);

    Node _root;
};

} // namespace ferrobank
