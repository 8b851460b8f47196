#pragma once

#include <array>
#include <random>
#include <string>

namespace ferrobank::test {

/// Folder names that break careless quoting.
inline const std::array kAwkwardNames{
    std::string("plain"),
    std::string("with space"),
    std::string(" leading and trailing "),
    std::string("Größe – 磁盘 ☂"),
    std::string("double \" quote"),
    std::string("single ' quote"),
    std::string("back\\slash"),
    std::string("ends with back\\"),
    std::string("percent %h %% %"),
    std::string("dollar $HOME ${HOME} $$"),
    std::string("back `tick`"),
    std::string("tab\tand\nline break"),
    std::string("semi;colon # hash = equals"),
    std::string("-dash @at :colon !mark +plus"),
    std::string("\\n \\x41 \\s \\"),
    std::string("[group]"),
    std::string("bytes \xff\xfe that are no text"),
};

/// Names of letters chosen from those that mean something somewhere; the same for the same seed.
class AwkwardNames {
public:
    explicit AwkwardNames(unsigned seed) : _random(seed) {}

    std::string next()
    {
        static const std::string kLetters =
            " \t\n\r\"'\\`$%#;=:@-+!~*?[]{}()<>|&^.,abnrstx04F\x01\x1f\x7f\xc3\xa4\xff";
        std::uniform_int_distribution<std::size_t> letter(0, kLetters.size() - 1);
        std::uniform_int_distribution<int> length(1, 24);
        std::string name;
        for (int left = length(_random); left > 0; --left) {
            name += kLetters[letter(_random)];
        }
        return name;
    }

private:
    std::mt19937 _random;
};

} // namespace ferrobank::test
