#pragma once

#include <utility>

namespace ferrobank::drive {

/// Owns one open descriptor and closes it when it goes. Movable value, used on any thread by one owner at a
/// time.
class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int descriptor) noexcept : _descriptor(descriptor) {}

    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(other.release()) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    ~FileDescriptor() { reset(); }

    /// The descriptor, or -1.
    [[nodiscard]] int get() const noexcept { return _descriptor; }

    [[nodiscard]] explicit operator bool() const noexcept { return _descriptor >= 0; }

    /// Gives the descriptor away without closing it.
    [[nodiscard]] int release() noexcept { return std::exchange(_descriptor, -1); }

    void reset(int descriptor = -1) noexcept;

private:
    int _descriptor = -1;
};

} // namespace ferrobank::drive
