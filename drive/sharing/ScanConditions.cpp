#include "sharing/ScanConditions.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr Seconds kQuiet{30};
constexpr Seconds kPatienceWithTheFirst{10 * 60};
constexpr Seconds kPatience{60 * 60};
constexpr Seconds kPatienceWithLoad{4 * 60 * 60};
constexpr int kLowestBattery = 50;

std::string wordIn(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string word;
    stream >> word;
    return word;
}

} // namespace

ScanWait scanWait(const ScanConditions& conditions)
{
    const bool powered = conditions.onMains || !conditions.battery || *conditions.battery > kLowestBattery;
    if (!powered) {
        return ScanWait::Power;
    }
    if (conditions.load >= conditions.cores && conditions.urgency != Urgency::LongOverdue) {
        return ScanWait::Load;
    }
    if (conditions.sinceLastChange < kQuiet && conditions.urgency == Urgency::None) {
        return ScanWait::Quiet;
    }
    return ScanWait::Nothing;
}

Urgency urgencyOf(Seconds waited, FirstPass first, LastPassOld old)
{
    const Seconds patience = first == FirstPass::Yes ? kPatienceWithTheFirst : kPatience;
    if (waited < patience) {
        return Urgency::None;
    }
    return waited >= kPatienceWithLoad || old == LastPassOld::Yes ? Urgency::LongOverdue : Urgency::Overdue;
}

ScanConditions currentConditions(const std::filesystem::path& loadFile, const std::filesystem::path& supplies)
{
    ScanConditions conditions;
    conditions.cores = std::max(1U, std::thread::hardware_concurrency());
    std::ifstream(loadFile) >> conditions.load;
    bool anyMains = false;
    bool mainsOnline = false;
    std::error_code error;
    for (const auto& supply : std::filesystem::directory_iterator(supplies, error)) {
        const std::string type = wordIn(supply.path() / "type");
        if (type == "Mains") {
            anyMains = true;
            mainsOnline = mainsOnline || wordIn(supply.path() / "online") == "1";
        }
        // Batteries of mice and keyboards have the scope "Device".
        else if (type == "Battery" && wordIn(supply.path() / "scope") != "Device")
        {
            int charge = 0;
            if (std::ifstream(supply.path() / "capacity") >> charge) {
                conditions.battery = std::min(conditions.battery.value_or(charge), charge);
            }
        }
    }
    conditions.onMains = !anyMains ? !conditions.battery : mainsOnline;
    return conditions;
}

} // namespace ferrobank::drive
