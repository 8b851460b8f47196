#pragma once

#include "Platform/LoginItemRegistry.h"

#include <filesystem>
#include <string>
#include <string_view>

/// The sentences of the errors that more than one piece of the registry throws.
namespace ferrobank {

[[nodiscard]] inline RegistryError cannotWrite(const std::filesystem::path& file, std::string_view reason)
{
    return RegistryError("Cannot write “" + file.native() + "”: " + std::string(reason) + ".");
}

[[nodiscard]] inline RegistryError cannotRemove(const std::filesystem::path& file, std::string_view reason)
{
    return RegistryError("Cannot remove “" + file.native() + "”: " + std::string(reason) + ".");
}

[[nodiscard]] inline RegistryError belongsToOthers(const std::filesystem::path& file)
{
    return RegistryError("“" + file.native() + "” belongs to another program. Move it away, then try again.");
}

[[nodiscard]] inline RegistryError switchedOffByUser(std::string_view what)
{
    return RegistryError(std::string(what) + " is switched off in your login items. Turn it on there.");
}

} // namespace ferrobank
