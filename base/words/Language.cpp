#include "words/Language.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace ferrobank {

namespace {

constexpr std::array<std::string_view, 5> kLanguages{"ar", "de", "es", "fr", "ja"};
constexpr std::array<std::string_view, 4> kSimplified{"zh", "zh_CN", "zh_SG", "zh_Hans"};

std::string_view valueOf(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? std::string_view(value) : std::string_view();
}

/// "de_AT" of "de_AT.UTF-8@euro".
std::string withoutEncoding(std::string_view name)
{
    return std::string(name.substr(0, name.find_first_of(".@")));
}

} // namespace

std::vector<std::string> wantedLanguages()
{
    std::vector<std::string> languages;
    std::string_view list = valueOf("LANGUAGE");
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        if (end > 0) {
            languages.push_back(withoutEncoding(list.substr(0, end)));
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    if (languages.empty()) {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            if (const std::string_view value = valueOf(name); !value.empty()) {
                languages.push_back(withoutEncoding(value));
                break;
            }
        }
    }
    return languages;
}

std::string chosenLanguage(const std::vector<std::string>& wanted)
{
    for (const std::string& name : wanted) {
        const std::string language = name.substr(0, name.find('_'));
        if (language == "en") {
            return {};
        }
        if (std::ranges::find(kLanguages, language) != kLanguages.end()) {
            return language;
        }
        if (std::ranges::find(kSimplified, name) != kSimplified.end()) {
            return "zh_CN";
        }
    }
    return {};
}

} // namespace ferrobank
