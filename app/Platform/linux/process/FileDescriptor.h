#pragma once

#include <unistd.h>

#include <utility>

namespace ferrobank {

/// Owns one open file descriptor, or none (-1). Any thread.
class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) {}

    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }

    ~FileDescriptor() { reset(); }

    [[nodiscard]] int get() const { return _descriptor; }

    [[nodiscard]] explicit operator bool() const { return _descriptor >= 0; }

    void reset()
    {
        if (_descriptor >= 0) {
            ::close(std::exchange(_descriptor, -1));
        }
    }

private:
    int _descriptor = -1;
};

} // namespace ferrobank
