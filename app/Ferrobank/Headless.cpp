#include "Ferrobank/Headless.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

namespace ferrobank {

namespace {

constexpr std::array kWords{
    std::pair{std::string_view{"--register"}, Headless::Register},
    std::pair{std::string_view{"--unregister"}, Headless::Unregister},
    std::pair{std::string_view{"--service-status"}, Headless::ServiceStatus},
};

bool writeLine(std::string text, std::FILE* file)
{
    text += '\n';
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

} // namespace

std::optional<Headless> headlessCommand(std::string_view word)
{
    for (const auto& [name, command] : kWords) {
        if (name == word) {
            return command;
        }
    }
    return std::nullopt;
}

std::int32_t runHeadless(Headless command, Service& service, std::FILE* output, std::FILE* errors)
{
    try {
        switch (command) {
        case Headless::Register:
            service.registerDrive();
            break;
        case Headless::Unregister:
            service.unregister();
            break;
        case Headless::ServiceStatus:
            break;
        }
    } catch (const std::exception& error) {
        writeLine(error.what(), errors);
        return 1;
    }
    if (!writeLine(service.statusJSON(), output)) {
        writeLine(std::string("Cannot write the status: ") + std::strerror(errno), errors);
        return 1;
    }
    return 0;
}

} // namespace ferrobank
