#pragma once

#include <stop_token>
#include <thread>

namespace ferrobank::drive {

/// Turns SIGINT, SIGTERM and SIGHUP into a request to stop while it lives, so that a long copy ends in good
/// order. Made on the main thread before any other thread.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    [[nodiscard]] std::stop_token token() const { return _source.get_token(); }

private:
    std::stop_source _source;
    std::jthread _thread;
};

} // namespace ferrobank::drive
