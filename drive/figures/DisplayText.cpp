#include "figures/DisplayText.h"

#include <array>

namespace ferrobank::drive {

namespace {

unsigned char byteAt(std::string_view text, std::size_t position)
{
    return static_cast<unsigned char>(text[position]);
}

bool continues(std::string_view text, std::size_t position)
{
    return position < text.size() && (byteAt(text, position) & 0xC0U) == 0x80U;
}

/// Length of the valid UTF-8 sequence of two to four bytes at `position`, or 0. Overlong forms, surrogates
/// and numbers above U+10FFFF are not valid.
std::size_t sequenceAt(std::string_view text, std::size_t position)
{
    const unsigned lead = byteAt(text, position);
    const unsigned second = position + 1 < text.size() ? byteAt(text, position + 1) : 0U;
    if (!continues(text, position + 1)) {
        return 0;
    }
    if (lead >= 0xC2U && lead <= 0xDFU) {
        return 2;
    }
    if (lead >= 0xE0U && lead <= 0xEFU) {
        const bool overlong = lead == 0xE0U && second < 0xA0U;
        const bool surrogate = lead == 0xEDU && second > 0x9FU;
        return !overlong && !surrogate && continues(text, position + 2) ? 3 : 0;
    }
    if (lead >= 0xF0U && lead <= 0xF4U) {
        const bool overlong = lead == 0xF0U && second < 0x90U;
        const bool tooLarge = lead == 0xF4U && second > 0x8FU;
        return !overlong && !tooLarge && continues(text, position + 2) && continues(text, position + 3) ? 4
                                                                                                        : 0;
    }
    return 0;
}

std::string escaped(unsigned char byte)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    if (byte == '\n') {
        return "\\n";
    }
    if (byte == '\t') {
        return "\\t";
    }
    return std::string("\\x") + kDigits[byte >> 4U] + kDigits[byte & 15U];
}

} // namespace

std::string displayName(std::string_view name)
{
    std::string text;
    for (std::size_t position = 0; position < name.size();) {
        const unsigned char byte = byteAt(name, position);
        if (byte >= 0x20U && byte < 0x7FU) {
            text += static_cast<char>(byte);
            ++position;
            continue;
        }
        const std::size_t length = byte >= 0x80U ? sequenceAt(name, position) : 0;
        // U+0080 to U+009F are control characters written in two bytes.
        const bool control = length == 2 && byte == 0xC2U && byteAt(name, position + 1) < 0xA0U;
        if (length == 0 || control) {
            text += escaped(byte);
            ++position;
            continue;
        }
        text += name.substr(position, length);
        position += length;
    }
    return text;
}

std::string displayBytes(std::uint64_t bytes, Rounding rounding)
{
    constexpr std::array<const char*, 6> kUnits{"bytes", "KB", "MB", "GB", "TB", "PB"};
    std::uint64_t unit = 1;
    std::size_t name = 0;
    while (name + 1 < kUnits.size() && bytes / unit >= 1000) {
        unit *= 1000;
        ++name;
    }
    if (name == 0) {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    const bool whole = bytes / unit >= 100;
    const std::uint64_t step = whole ? unit : unit / 10;
    const std::uint64_t steps = bytes / step + (rounding == Rounding::Up && bytes % step != 0 ? 1 : 0);
    const std::uint64_t tenths = whole ? steps * 10 : steps;
    std::string text = std::to_string(tenths / 10);
    if (tenths % 10 != 0) {
        text += '.' + std::to_string(tenths % 10);
    }
    return text + ' ' + kUnits[name];
}

} // namespace ferrobank::drive
