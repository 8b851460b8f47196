#include "testing/DriveFiles.h"

#include "platform/FileDescriptor.h"
#include "store/Superblock.h"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string_view>

namespace ferrobank::drive::testing {

namespace fs = std::filesystem;

namespace {

/// Independent of the hash that the tool itself uses; every byte counts.
std::uint64_t hashOf(const std::string& bytes)
{
    std::uint64_t hash = 0xcbf29ce484222325U ^ bytes.size();
    for (std::size_t position = 0; position < bytes.size(); position += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + position, std::min(sizeof word, bytes.size() - position));
        hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
        hash ^= hash >> 29U;
    }
    return hash;
}

bool isToolsOwn(const fs::path& relative)
{
    const fs::path first = *relative.begin();
    return first == ".ferrobank" || first == ".ferrobank-incomplete" ||
           first.native().starts_with(".ferrobank-trial-");
}

} // namespace

std::string randomBytes(std::size_t size, std::uint64_t seed)
{
    std::mt19937_64 generator(seed);
    std::string bytes(size, '\0');
    for (std::size_t position = 0; position < size; position += sizeof(std::uint64_t)) {
        const std::uint64_t word = generator();
        std::memcpy(bytes.data() + position, &word, std::min(sizeof word, size - position));
    }
    return bytes;
}

std::string plainBytes(std::size_t size, std::uint64_t seed)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string bytes = randomBytes(size, seed);
    for (char& byte : bytes) {
        byte = kDigits[static_cast<unsigned char>(byte) & 15U];
    }
    return bytes;
}

void writeFile(const fs::path& path, const std::string& content)
{
    fs::create_directories(path.parent_path());
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0 || ::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()) ||
        ::fsync(file) != 0)
    {
        throw std::runtime_error("cannot write " + path.string());
    }
    ::close(file);
}

std::string readFile(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string content(fs::file_size(path), '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(content.size()))) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return content;
}

std::map<std::string, std::string> inventory(const fs::path& folder)
{
    std::map<std::string, std::string> entries;
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator();
         ++entry)
    {
        const fs::path relative = entry->path().lexically_relative(folder);
        if (isToolsOwn(relative)) {
            entry.disable_recursion_pending();
            continue;
        }
        struct stat status{};
        if (::lstat(entry->path().c_str(), &status) != 0) {
            throw std::runtime_error("cannot look at " + entry->path().string());
        }
        std::string text = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + " ";
        text += std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
        if (S_ISREG(status.st_mode)) {
            text +=
                " " + std::to_string(status.st_size) + " " + std::to_string(hashOf(readFile(entry->path())));
            text += " names " + std::to_string(status.st_nlink);
        } else if (S_ISLNK(status.st_mode)) {
            text += " to " + fs::read_symlink(entry->path()).string();
        }
        entries[relative.string()] = text;
    }
    return entries;
}

std::map<std::string, std::uint64_t> contents(const fs::path& folder)
{
    std::map<std::string, std::uint64_t> hashes;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::path relative = entry.path().lexically_relative(folder);
        if (!isToolsOwn(relative) && entry.is_regular_file() && !entry.is_symlink()) {
            hashes[relative.string()] = hashOf(readFile(entry.path()));
        }
    }
    return hashes;
}

void cutUnusedTail(const fs::path& image)
{
    constexpr std::uintmax_t kBlock = 4096;
    const FileDescriptor file(::open(image.c_str(), O_RDONLY | O_CLOEXEC));
    std::uintmax_t used = 0;
    std::string bytes(1U << 20U, '\0');
    for (off_t data = ::lseek(file.get(), 0, SEEK_DATA); data >= 0;) {
        const off_t hole = ::lseek(file.get(), data, SEEK_HOLE);
        while (data < hole) {
            const auto wanted = std::min(bytes.size(), static_cast<std::size_t>(hole - data));
            const ssize_t got = ::pread(file.get(), bytes.data(), wanted, data);
            if (got <= 0) {
                throw std::runtime_error("cannot read " + image.string());
            }
            const std::size_t last =
                std::string_view(bytes.data(), static_cast<std::size_t>(got)).find_last_not_of('\0');
            if (last != std::string_view::npos) {
                used = (static_cast<std::uintmax_t>(data) + last) / kBlock * kBlock + kBlock;
            }
            data += got;
        }
        data = ::lseek(file.get(), hole, SEEK_DATA);
    }
    if (used == 0 || used >= fs::file_size(image)) {
        throw std::runtime_error("the image has no unused tail: " + image.string());
    }
    fs::resize_file(image, used);
}

void writeMagics(const fs::path& image, const std::string& magic)
{
    constexpr std::uint64_t kMagicInside = 0x40;
    const std::uintmax_t length = fs::file_size(image);
    std::fstream file(image, std::ios::in | std::ios::out | std::ios::binary);
    for (const std::uint64_t place : kSuperblockPlaces) {
        if (place + kMagicInside + magic.size() <= length) {
            file.seekp(static_cast<std::streamoff>(place + kMagicInside));
            file.write(magic.data(), static_cast<std::streamsize>(magic.size()));
        }
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot change " + image.string());
    }
}

bool asOrdinaryUser(const std::function<bool()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        bool done = false;
        if (::setgroups(0, nullptr) == 0 && ::setresgid(kOrdinaryUser, kOrdinaryUser, kOrdinaryUser) == 0 &&
            ::setresuid(kOrdinaryUser, kOrdinaryUser, kOrdinaryUser) == 0)
        {
            try {
                done = work();
            } catch (const std::exception& failure) {
                std::fprintf(stderr, "%s\n", failure.what());
            }
        }
        ::_exit(done ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void enterPrivateMounts()
{
    // As a slave it does not keep alive what others unmount meanwhile.
    static const bool entered =
        ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
    static_cast<void>(entered);
}

} // namespace ferrobank::drive::testing
