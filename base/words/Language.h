#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ferrobank {

/// The languages that somebody wants to read, best first, as the variables LANGUAGE, LC_ALL, LC_MESSAGES and
/// LANG name them
/// ("de_AT", "de"), in the order in which the window of the application believes them too: LANGUAGE is a list
/// and wins.
[[nodiscard]] std::vector<std::string> wantedLanguages();

/// Of those, the first one that there are words in ("de", "zh_CN"); empty for the English of the sources,
/// which is also for everybody who wants none of them. Chinese is what is written with simplified characters.
[[nodiscard]] std::string chosenLanguage(const std::vector<std::string>& wanted);

} // namespace ferrobank
