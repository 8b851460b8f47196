#include "mounting/FstabLine.h"

#include "mounting/Volume.h"

#include <cstdio>
#include <sstream>
#include <string_view>

namespace ferrobank::drive {

namespace {

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char character : text) {
        if (character == ' ' || character == '\t' || character == '\n' || character == '\\' ||
            character == '#')
        {
            char code[8];
            std::snprintf(code, sizeof code, "\\%03o",
                          static_cast<unsigned>(static_cast<unsigned char>(character)));
            result += code;
        } else {
            result += character;
        }
    }
    return result;
}

std::string mark(uid_t user, const char* end)
{
    return "# Ferrobank drive of user " + std::to_string(user) + ": " + end;
}

} // namespace

std::string fstabLine(const Paths& paths)
{
    return escaped(paths.image.string()) + " " + escaped(paths.drive.string()) +
           " btrfs loop,user,noauto,exec,noatime," + kMountOptions +
           ",user_subvol_rm_allowed,x-gvfs-show,x-gvfs-name=Ferrobank 0 0";
}

std::string withoutFstabLine(const std::string& text, uid_t user)
{
    const std::string begin = mark(user, "begin");
    const std::string end = mark(user, "end");
    std::string result;
    std::string held;
    bool inside = false;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool complete = !lines.eof();
        const std::string whole = line + (complete ? "\n" : "");
        if (!inside && line == begin) {
            inside = true;
            held = whole;
        } else if (!inside) {
            result += whole;
        } else if (line == end) {
            inside = false;
            held.clear();
        } else {
            held += whole;
        }
    }
    // A block whose end somebody removed is not ours to judge: it stays.
    return result + held;
}

std::string withFstabLine(const std::string& text, uid_t user, const std::string& line)
{
    std::string result = withoutFstabLine(text, user);
    if (!result.empty() && result.back() != '\n') {
        result += '\n';
    }
    return result + mark(user, "begin") + "\n" + line + "\n" + mark(user, "end") + "\n";
}

bool holdsFstabLine(const std::string& text, const std::string& line)
{
    std::istringstream lines(text);
    for (std::string each; std::getline(lines, each);) {
        if (each == line) {
            return true;
        }
    }
    return false;
}

} // namespace ferrobank::drive
