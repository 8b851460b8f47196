#include "Platform/linux/login/ServiceUnit.h"

#include "Platform/linux/login/GroupedKeys.h"

#include <cstddef>

namespace ferrobank {

namespace {

// Settings and sections with this prefix are left alone by systemd.
constexpr std::string_view kOurSection = "X-Ferrobank";
constexpr std::string_view kProgramKey = "Program";

constexpr std::string_view kHexDigits = "0123456789abcdef";

bool isControl(char character)
{
    const auto value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7f;
}

/// Whether every sequence is as long as its first byte says: what the manager asks of a line.
bool isUtf8(std::string_view text)
{
    std::size_t following = 0;
    for (const char character : text) {
        const auto value = static_cast<unsigned char>(character);
        const bool continues = (value & 0xc0U) == 0x80U;
        if (continues != (following > 0)) {
            return false;
        }
        if (continues) {
            --following;
        } else if (value >= 0x80U) {
            following = value < 0xe0U ? 1 : value < 0xf0U ? 2 : 3;
        }
    }
    return following == 0;
}

/// One word in double quotes with the escapes of the C language; a percent sign is a specifier unless
/// doubled.
std::string quotedWord(std::string_view word)
{
    const bool asciiOnly = !isUtf8(word);
    std::string result = "\"";
    for (const char character : word) {
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (character == '%') {
            result += "%%";
        } else if (isControl(character) || (asciiOnly && character < 0)) {
            const auto value = static_cast<unsigned char>(character);
            result += "\\x";
            result += kHexDigits[value >> 4U];
            result += kHexDigits[value & 0xfU];
        } else {
            result += character;
        }
    }
    result += '"';
    return result;
}

std::optional<std::string> unquotedWord(std::string_view text)
{
    if (text.size() < 2 || !text.starts_with('"') || !text.ends_with('"')) {
        return std::nullopt;
    }
    text = text.substr(1, text.size() - 2);
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char character = text[index];
        const std::string_view rest = text.substr(index + 1);
        if (character == '%') {
            if (!rest.starts_with('%')) {
                return std::nullopt;
            }
            result += '%';
            ++index;
        } else if (character == '\\') {
            if (rest.starts_with('"') || rest.starts_with('\\')) {
                result += rest.front();
                ++index;
                continue;
            }
            const std::size_t high = rest.size() > 2 ? kHexDigits.find(rest[1]) : std::string_view::npos;
            const std::size_t low = rest.size() > 2 ? kHexDigits.find(rest[2]) : std::string_view::npos;
            if (!rest.starts_with('x') || high == std::string_view::npos || low == std::string_view::npos) {
                return std::nullopt;
            }
            result += static_cast<char>(high << 4U | low);
            index += 3;
        } else if (character == '"') {
            return std::nullopt;
        } else {
            result += character;
        }
    }
    return result;
}

/// The manager refuses the path of a program that holds one of these, however it is quoted.
bool needsStarter(std::string_view program)
{
    for (const char character : program) {
        if (character == '"' || character == '\'' || character == '\\' || isControl(character)) {
            return true;
        }
    }
    return false;
}

std::string execStart(const CommandLine& command)
{
    // The colon keeps "$" as it is. What the manager refuses as a program it accepts as an argument of
    // another, here of one that changes nothing and becomes the program.
    const std::string& program = command.program.native();
    std::string line =
        needsStarter(program) ? ":/usr/bin/nice -n 0 " + quotedWord(program) : quotedWord(":" + program);
    for (const std::string& argument : command.arguments) {
        line += ' ' + quotedWord(argument);
    }
    return line;
}

std::string_view restartWord(KeepAlive keepAlive)
{
    switch (keepAlive) {
    case KeepAlive::Never:
        return "no";
    case KeepAlive::AfterFailure:
        return "on-failure";
    case KeepAlive::Always:
        return "always";
    }
    return "no";
}

} // namespace

std::string serviceUnitText(const AgentDescription& agent)
{
    std::string text = "# Written by Ferrobank when its drive was registered to start at login.\n"
                       "[Unit]\n"
                       "Description=Ferrobank drive\n"
                       "StartLimitIntervalSec=0\n"
                       "\n"
                       "[Service]\n"
                       "Type=exec\n";
    text += "ExecStart=" + execStart(agent.command) + '\n';
    text += "Restart=";
    text += restartWord(agent.keepAlive);
    text += "\n"
            "RestartSec=2\n"
            "KillMode=mixed\n"
            // The drive's space guard is a file without a name: kept here, it outlives a crash of the server.
            // The manager listens to nobody in units of this type unless told so.
            "NotifyAccess=main\n"
            "FileDescriptorStoreMax=1\n"
            "TimeoutStopSec=60\n"
            "\n"
            "[Install]\n"
            "WantedBy=default.target\n"
            "\n";
    text += '[';
    text += kOurSection;
    text += "]\n";
    text += kProgramKey;
    text += '=' + quotedWord(agent.command.program.native()) + '\n';
    return text;
}

std::optional<std::filesystem::path> programOfServiceUnit(std::string_view text)
{
    const std::optional<std::string> program = GroupedKeys(text).value(kOurSection, kProgramKey);
    return program ? unquotedWord(*program) : std::nullopt;
}

} // namespace ferrobank
