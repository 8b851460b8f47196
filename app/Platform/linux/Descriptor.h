#pragma once

#include <unistd.h>

#include <utility>

namespace ferrobank {

/// Owns a file descriptor and closes it.
class Descriptor {
public:
    Descriptor() = default;

    explicit Descriptor(int number) : _number(number) {}

    Descriptor(Descriptor&& other) noexcept : _number(std::exchange(other._number, -1)) {}

    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(_number, other._number);
        return *this;
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() { reset(); }

    [[nodiscard]] bool isOpen() const { return _number >= 0; }

    [[nodiscard]] int number() const { return _number; }

    void reset()
    {
        if (isOpen()) {
            close(std::exchange(_number, -1));
        }
    }

    /// Closes now; false when what was written did not reach the file.
    [[nodiscard]] bool closeChecked() { return !isOpen() || close(std::exchange(_number, -1)) == 0; }

private:
    int _number = -1;
};

} // namespace ferrobank
