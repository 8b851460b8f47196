#include "Platform/VersionOnTrial.h"

#include "Platform/Bundle.h"
#include "Platform/linux/updates/install/Trial.h"

#include <unistd.h>

namespace ferrobank {

void settleVersionToRun(char** arguments)
{
    const auto place = updates::InstallPlace::of(Bundle::main().root());
    if (const auto other = updates::executableToRunInstead(place))
        ::execv(other->c_str(), arguments);
}

void countStartOnTrial()
{
    updates::countStart(updates::InstallPlace::of(Bundle::main().root()));
}

} // namespace ferrobank
