#include "platform/Failure.h"

#include <system_error>
#include <utility>

namespace ferrobank::drive {

Failure::Failure(const std::string& text, std::string code) : std::runtime_error(text), _code(std::move(code))
{}

Failure systemFailure(const std::string& attempt, int error)
{
    return Failure(attempt + ": " + std::generic_category().message(error) + ".", "system");
}

} // namespace ferrobank::drive
