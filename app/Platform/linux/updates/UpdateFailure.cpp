#include "Platform/linux/updates/UpdateFailure.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace ferrobank::updates {
namespace {

constexpr std::array<std::pair<Problem, std::string_view>, 11> kWords{{
    {Problem::Off, "off"},
    {Problem::Network, "network"},
    {Problem::Feed, "feed"},
    {Problem::Stale, "stale"},
    {Problem::Signature, "signature"},
    {Problem::Version, "version"},
    {Problem::Archive, "archive"},
    {Problem::Space, "space"},
    {Problem::Place, "place"},
    {Problem::Busy, "busy"},
    {Problem::Install, "install"},
}};

} // namespace

std::string_view problemWord(Problem problem)
{
    return kWords.at(static_cast<std::size_t>(problem)).second;
}

Problem problemFromWord(std::string_view word)
{
    for (const auto& [problem, itsWord] : kWords) {
        if (itsWord == word)
            return problem;
    }
    return Problem::Install;
}

UpdateFailure systemFailure(Problem problem, const std::string& sentence, int error)
{
    const bool isSpace = error == ENOSPC || error == EDQUOT;
    return {isSpace ? Problem::Space : problem, sentence + ": " + std::generic_category().message(error)};
}

} // namespace ferrobank::updates
