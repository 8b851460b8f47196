#include "Platform/linux/login/DesktopEntry.h"

#include "Platform/linux/login/GroupedKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

namespace ferrobank {

namespace {

constexpr std::string_view kGroup = "Desktop Entry";

constexpr std::array<std::string_view, 3> kStarter{"/usr/bin/nice", "-n", "0"};

std::string escapedValue(std::string_view value)
{
    std::string result;
    for (const char character : value) {
        switch (character) {
        case '\\':
            result += R"(\\)";
            break;
        case '\n':
            result += R"(\n)";
            break;
        case '\t':
            result += R"(\t)";
            break;
        case '\r':
            result += R"(\r)";
            break;
        default:
            result += character;
        }
    }
    // White space at either end would be taken for none.
    if (result.starts_with(' ')) {
        result.replace(0, 1, R"(\s)");
    }
    if (result.ends_with(' ')) {
        result.replace(result.size() - 1, 1, R"(\s)");
    }
    return result;
}

std::string unescapedValue(std::string_view value)
{
    std::string result;
    for (std::size_t index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        constexpr std::string_view kLetters = "sntr\\";
        constexpr std::string_view kMeanings = " \n\t\r\\";
        const std::size_t known = kLetters.find(value[++index]);
        if (known == std::string_view::npos) {
            result += '\\';
            result += value[index];
        } else {
            result += kMeanings[known];
        }
    }
    return result;
}

std::string quotedArgument(std::string_view argument)
{
    std::string result = "\"";
    for (const char character : argument) {
        if (character == '"' || character == '`' || character == '$' || character == '\\') {
            result += '\\';
        } else if (character == '%') {
            result += '%';
        }
        result += character;
    }
    result += '"';
    return result;
}

/// The words of an Exec value; nothing if a quote is left open.
std::optional<std::vector<std::string>> splitExec(std::string_view exec)
{
    std::vector<std::string> words;
    bool inWord = false;
    bool inQuotes = false;
    for (std::size_t index = 0; index < exec.size(); ++index) {
        const char character = exec[index];
        const bool hasNext = index + 1 < exec.size();
        if (!inQuotes && (character == ' ' || character == '\t')) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (character == '"') {
            inQuotes = !inQuotes;
        } else if (inQuotes && character == '\\' && hasNext) {
            words.back() += exec[++index];
        } else if (character == '%' && hasNext && exec[index + 1] == '%') {
            words.back() += '%';
            ++index;
        } else {
            words.back() += character;
        }
    }
    return inQuotes ? std::nullopt : std::optional(std::move(words));
}

std::optional<std::filesystem::path> programOf(std::string_view exec)
{
    const std::optional<std::vector<std::string>> words = splitExec(exec);
    if (!words) {
        return std::nullopt;
    }
    const bool isStarted =
        words->size() > kStarter.size() && std::equal(kStarter.begin(), kStarter.end(), words->begin());
    const std::size_t index = isStarted ? kStarter.size() : 0;
    return words->size() <= index || words->at(index).empty()
               ? std::nullopt
               : std::optional<std::filesystem::path>(words->at(index));
}

/// Desktops look for the first word with its percent signs still doubled, and service managers refuse a
/// program whose path holds one of the others. Both accept them in an argument of another program, here of
/// one that changes nothing and becomes the program.
bool needsStarter(std::string_view program)
{
    return std::any_of(program.begin(), program.end(), [](char character) {
        return std::string_view("%\"'\\").find(character) != std::string_view::npos ||
               (character >= 0 && character < ' ') || character == '\x7f';
    });
}

bool isOneOf(const std::optional<std::string>& value, std::initializer_list<std::string_view> words)
{
    if (!value) {
        return false;
    }
    std::string lower = *value;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return std::find(words.begin(), words.end(), lower) != words.end();
}

} // namespace

std::string desktopEntryText(const EntryTitle& title, const CommandLine& command)
{
    std::string exec;
    if (needsStarter(command.program.native())) {
        for (const std::string_view word : kStarter) {
            exec += word;
            exec += ' ';
        }
    }
    exec += quotedArgument(command.program.native());
    for (const std::string& argument : command.arguments) {
        exec += ' ' + quotedArgument(argument);
    }
    std::string text = "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Version=1.0\n";
    text += "Name=" + std::string(title.name) + '\n';
    text += "Comment=" + std::string(title.comment) + '\n';
    text += "Icon=org.ferrobank.Ferrobank\n";
    text += "Exec=" + escapedValue(exec) + '\n';
    text += "TryExec=" + escapedValue(command.program.native()) + '\n';
    text += "Terminal=false\n"
            "X-GNOME-Autostart-enabled=true\n";
    return text;
}

DesktopEntry parseDesktopEntry(std::string_view text)
{
    const GroupedKeys keys(text);
    DesktopEntry entry;
    if (const auto exec = keys.value(kGroup, "Exec")) {
        entry.program = programOf(unescapedValue(*exec));
    }
    // Desktops also write the words of older versions of the format.
    entry.switchedOff = isOneOf(keys.value(kGroup, "Hidden"), {"true", "1", "yes", "on"}) ||
                        isOneOf(keys.value(kGroup, "X-GNOME-Autostart-enabled"), {"false", "0", "no", "off"});
    return entry;
}

} // namespace ferrobank
