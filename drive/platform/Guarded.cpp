#include "platform/Guarded.h"

#include "platform/Failure.h"

#include <cstdio>
#include <exception>

namespace ferrobank::drive {

bool guarded(const std::function<void()>& turn,
             const std::function<void(const std::string& words)>& tell) noexcept
{
    try {
        try {
            turn();
            return true;
        } catch (const Failure& failure) {
            tell(failure.text());
        } catch (const std::exception& error) {
            // Not meant for people, so it says itself where it comes from.
            tell(std::string("Something unforeseen happened: ") + error.what() + ".");
        }
    } catch (const std::exception&) {
        // Telling failed as well, most likely for want of memory; this needs none.
        std::fputs("Something unforeseen happened, and there is no way to tell what.\n", stderr);
    }
    return false;
}

} // namespace ferrobank::drive
