#include "Platform/linux/login/AgentDescription.h"

#include "Platform/linux/PropertyList.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/login/LoginNames.h"

#include <algorithm>

namespace ferrobank {

namespace {

bool staysInside(const std::filesystem::path& relative)
{
    return !relative.empty() && relative.is_relative() &&
           std::find(relative.begin(), relative.end(), "..") == relative.end();
}

KeepAlive keepAliveOf(const PropertyList& list)
{
    if (list.flag("KeepAlive") == true) {
        return KeepAlive::Always;
    }
    return list.flag("KeepAlive", "SuccessfulExit") == false ? KeepAlive::AfterFailure : KeepAlive::Never;
}

} // namespace

std::optional<AgentDescription> readAgentDescription(const Bundle& bundle)
{
    const auto bytes = readSmallFile(bundle.agentPropertyList(), PropertyList::kSizeLimit);
    return bytes ? parseAgentDescription(*bytes, bundle.root()) : std::nullopt;
}

std::optional<AgentDescription> parseAgentDescription(std::string_view bytes,
                                                      const std::filesystem::path& root)
{
    const std::optional<PropertyList> list = PropertyList::parse(bytes);
    if (!list || list->text("Label") != kAgentLabel || list->flag("RunAtLoad") != true) {
        return std::nullopt;
    }
    const std::filesystem::path program = list->text("BundleProgram").value_or("");
    std::optional<std::vector<std::string>> arguments = list->texts("ProgramArguments");
    if (!staysInside(program) || !arguments || arguments->empty()) {
        return std::nullopt;
    }
    arguments->erase(arguments->begin());
    return AgentDescription{{root / program, std::move(*arguments)}, keepAliveOf(*list)};
}

} // namespace ferrobank
