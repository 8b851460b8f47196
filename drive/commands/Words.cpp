#include "commands/Words.h"

#include "figures/DisplayText.h"

#include <unistd.h>

#include <cstdlib>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kLabelWidth = 14;

} // namespace

std::string row(const std::string& label, const std::string& value)
{
    std::string text = label;
    text.resize(std::max(text.size() + 1, kLabelWidth), ' ');
    return text + value + "\n";
}

std::string sizeOrDash(const std::optional<std::uint64_t>& bytes)
{
    return bytes ? displayBytes(*bytes) : "\u2014";
}

std::string toned(const std::string& text, Tone tone, bool colours)
{
    if (!colours) {
        return text;
    }
    switch (tone) {
    case Tone::Plain:
        return text;
    case Tone::Good:
        return "\033[32m" + text + "\033[0m";
    case Tone::Bad:
        return "\033[31m" + text + "\033[0m";
    case Tone::Quiet:
        return "\033[2m" + text + "\033[0m";
    }
    return text;
}

bool wantsColours()
{
    const char* forbidden = std::getenv("NO_COLOR");
    return ::isatty(STDOUT_FILENO) == 1 && (forbidden == nullptr || forbidden[0] == '\0');
}

} // namespace ferrobank::drive
