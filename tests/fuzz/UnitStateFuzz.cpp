// Any word as the service manager's answer, any bytes as the unit file and as the autostart entry: the state
// is one of the known ones, and "on" is only ever said of our own program.

#include "Platform/linux/login/AgentService.h"
#include "Platform/linux/login/LoginNames.h"
#include "Platform/linux/login/ServiceUnit.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string_view>

using namespace ferrobank;

namespace {

class AnsweringManager final : public UserManager {
public:
    UnitFileState answer;
    std::vector<std::filesystem::path> folders;

    UnitFileState unitFileState(const std::string&) override { return answer; }

    std::vector<std::filesystem::path> unitPath() override { return folders; }

    void enable(const std::string&) override { std::abort(); }

    void disable(const std::string&) override { std::abort(); }

    void unmask(const std::string&) override { std::abort(); }

    void reload() override { std::abort(); }

    void start(const std::string&) override { std::abort(); }

    Stop stop(const std::string&, std::chrono::milliseconds) override { std::abort(); }

    void resetFailed(const std::string&) override { std::abort(); }
};

/// A folder in memory where there is one, made once and removed at the end.
class Home {
public:
    Home()
    {
        std::string name = "/dev/shm/unit-state-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            std::abort();
        folder = name;
        std::filesystem::create_directories(folders().userUnits());
        std::filesystem::create_directories(folders().autostart());
    }

    ~Home() { std::filesystem::remove_all(folder); }

    [[nodiscard]] UserFolders folders() const { return {folder / "config", folder / "data"}; }

    std::filesystem::path folder;
};

void write(const std::filesystem::path& file, std::string_view text)
{
    std::ofstream(file, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static const Home home;
    static const AgentDescription kAgent{{"/opt/Ferrobank.app/Contents/Helpers/ferrobank", {"serve"}},
                                         KeepAlive::AfterFailure};
    if (size < 2)
        return 0;
    const std::string_view all(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string_view word = all.substr(0, std::min(all.find('\n'), all.size()));
    const std::string_view rest = all.substr(std::min(word.size() + 1, all.size()));
    const std::string_view unit = rest.substr(0, rest.find('\0'));
    const std::string_view entry = rest.substr(std::min(unit.size() + 1, rest.size()));

    const UserFolders folders = home.folders();
    write(folders.userUnits() / kAgentUnit, unit);
    write(folders.autostart() / kAgentEntry, entry);
    AnsweringManager manager;
    constexpr std::array kReaches{ManagerReach::Answers, ManagerReach::Absent, ManagerReach::Silent};
    manager.answer = {kReaches[data[0] % kReaches.size()], std::string(word)};
    manager.folders = {folders.userUnits()};

    AgentService service(manager, folders, kAgent);
    const bool isOurs = programOfServiceUnit(unit) == kAgent.command.program ||
                        parseDesktopEntry(entry).program == kAgent.command.program;
    if (service.state() == EntryState::On && !isOurs)
        std::abort();
    static_cast<void>(service.registeredProgram());
    return 0;
}
