#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ferrobank {

/// What programs without the toolkit say, in the language of who reads it: the drive tool, the updater's
/// worker, the login services. Their sources say everything in English; a sentence is looked up as a whole,
/// with `{}` in the place of each name or number, when it is shown. Plain value; usable on any thread.
///
/// The file of a language is lines of UTF-8 in pairs: a pattern, and under it the words for it, which hold
/// each `{}` of the pattern once, as `{1}`, `{2}` where their order is another. Empty lines and lines that
/// begin with `#` count for nothing.
class Sentences {
public:
    /// English as it stands in the sources.
    Sentences() = default;

    /// Everything stays in English where the file cannot be read; what it says wrong is left out.
    [[nodiscard]] static Sentences fromFile(const std::filesystem::path& file);
    [[nodiscard]] static Sentences fromText(std::string_view text);

    /// What `folder`, a bundle's "translations", has for who started this program: "sentences_LANGUAGE.txt".
    [[nodiscard]] static Sentences ofTheUser(const std::filesystem::path& folder);

    /// The sentence in that language. Several sentences that have no words together are looked up one by one,
    /// and each stays in English that has none.
    [[nodiscard]] std::string say(std::string_view english) const;

    [[nodiscard]] std::size_t size() const { return _entries.size(); }

private:
    struct Entry {
        std::vector<std::string> pieces; ///< what stands before, between and after the places
        std::string words;
        std::size_t letters = 0; ///< in the pieces: of two that fit, the one with more of them is meant
    };

    void add(std::string_view pattern, std::string_view words);
    [[nodiscard]] bool sayWhole(std::string_view english, std::string& said) const;

    std::vector<Entry> _entries;
};

} // namespace ferrobank
