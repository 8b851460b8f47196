#pragma once

namespace ferrobank {

/// Enlarges everything that the program draws where the desktop wants that and tells it in a way that the
/// toolkit does not know. To be called before the application object is made; its scale is settled then.
/// While the object lives nothing of it is left in the environment of child processes.
class StartScale {
public:
    StartScale();
    ~StartScale();

    StartScale(const StartScale&) = delete;
    StartScale& operator=(const StartScale&) = delete;

    /// After the application object has been made.
    void settled();

private:
    bool _isSet = false;
};

} // namespace ferrobank
