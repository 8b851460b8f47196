#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

/// A folder in memory for a fuzz target's files; gone with the process.
class FuzzFolder {
public:
    FuzzFolder()
    {
        std::string name = "/dev/shm/ferrobank-fuzz-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            std::abort();
        _path = name;
    }

    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    ~FuzzFolder() { std::filesystem::remove_all(_path); }

    [[nodiscard]] const std::filesystem::path& path() const { return _path; }

    /// A file with just these bytes, behind a hole where an offset is given.
    [[nodiscard]] std::filesystem::path write(const char* name, const std::uint8_t* data, std::size_t size,
                                              std::size_t offset = 0) const
    {
        const std::filesystem::path file = _path / name;
        const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (target < 0 ||
            ::pwrite(target, data, size, static_cast<off_t>(offset)) != static_cast<ssize_t>(size))
            std::abort();
        ::close(target);
        return file;
    }

private:
    std::filesystem::path _path;
};
