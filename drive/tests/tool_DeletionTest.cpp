#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "state/Work.h"
#include "testing/DriveFiles.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/types.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

namespace ferrobank::drive::testing {
namespace {

namespace fs = std::filesystem;

/// The device number of what is mounted at a folder; 0 without it.
dev_t deviceAt(const fs::path& folder)
{
    struct stat status{};
    return ::stat(folder.c_str(), &status) == 0 ? status.st_dev : 0;
}

/// A program that saves its document the way editors do, over and over, and knows the last version that was
/// safely on the drive.
class Editor {
public:
    Editor(fs::path drive, std::string name)
        : _drive(std::move(drive)),
          _name(std::move(name)),
          _device(deviceAt(_drive)),
          _thread([this] { run(); })
    {}

    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    ~Editor()
    {
        _ended = true;
        _thread.join();
    }

    /// Ends it; the last version that was saved.
    std::string lastSaved()
    {
        _ended = true;
        const std::lock_guard lock(_mutex);
        return _saved;
    }

    [[nodiscard]] bool hasSaved() const
    {
        const std::lock_guard lock(_mutex);
        return !_saved.empty();
    }

private:
    void run()
    {
        for (unsigned version = 0; !_ended; ++version) {
            // Always of the same length: a size tells nothing.
            std::array<char, 32> text{};
            std::snprintf(text.data(), text.size(), "version %010u", version);
            if (save(text.data())) {
                const std::lock_guard lock(_mutex);
                _saved = text.data();
            }
            // Somebody who types saves now and then; who never lets go keeps the drive.
            std::unique_lock lock(_mutex);
            _wake.wait_for(lock, std::chrono::milliseconds(40), [this] { return _ended.load(); });
        }
    }

    bool save(const std::string& text)
    {
        // Below the mounted folder itself: what lands on the host's disk after the unmount does not count.
        const FileDescriptor root(::open(_drive.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        struct stat status{};
        if (!root || ::fstat(root.get(), &status) != 0 || status.st_dev != _device) {
            return false;
        }
        const std::string other = _name + ".new";
        {
            const FileDescriptor file(
                ::openat(root.get(), other.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
            if (!file || ::write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
                ::fsync(file.get()) != 0)
            {
                return false;
            }
        }
        return ::renameat(root.get(), other.c_str(), root.get(), _name.c_str()) == 0;
    }

    fs::path _drive;
    std::string _name;
    dev_t _device;
    mutable std::mutex _mutex;
    std::string _saved;
    std::condition_variable _wake;
    std::atomic<bool> _ended = false;
    std::thread _thread;
};

class Deletion : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>();
    }

    [[nodiscard]] const fs::path& drive() const { return host->paths().drive; }

    [[nodiscard]] fs::path copy() const { return host->paths().home / "copy"; }

    void makeFiles(unsigned large = 0)
    {
        host->makeSmallStore();
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
        fs::create_directories(drive() / "folder/inner");
        for (unsigned number = 0; number < 60; ++number) {
            ASSERT_TRUE(
                writeRandomFile(drive() / "folder" / std::to_string(number), 20'000 + number, number));
        }
        for (unsigned number = 0; number < large; ++number) {
            ASSERT_TRUE(writeRandomFile(drive() / ("large" + std::to_string(number)), 40'000'000, number));
        }
        fs::create_hard_link(drive() / "folder/2", drive() / "folder/inner/same");
        files = fingerprint(drive());
    }

    /// Starts the tool as a child of this process, with its output thrown away.
    pid_t start(const std::vector<std::string>& arguments) const { return host->start(arguments); }

    static int waitFor(pid_t process)
    {
        int status = 0;
        ::waitpid(process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    [[nodiscard]] bool reaches(Work::Phase phase) const
    {
        return waitUntil([&] {
            const std::optional<Work> work = Work::atWork(host->paths());
            return work && work->phase == phase;
        });
    }

    /// The same without a pause between two looks, for phases of a few milliseconds.
    [[nodiscard]] bool reachesSoon(Work::Phase phase) const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < limit) {
            const std::optional<Work> work = Work::atWork(host->paths());
            if (work && work->phase == phase) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] bool hasSnapshots() const
    {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(drive() / ".ferrobank", error)) {
            if (entry.path().filename().string().starts_with("export-")) {
                return true;
            }
        }
        return false;
    }

    std::unique_ptr<DriveHost> host;
    std::map<std::string, std::string> files;
};

TEST_F(Deletion, documentThatIsSavedUntilTheLastMomentIsInTheCopy)
{
    makeFiles(2);
    std::vector<std::unique_ptr<Editor>> editors;
    for (const char* name : {"document", "folder/document"}) {
        editors.push_back(std::make_unique<Editor>(drive(), name));
    }
    ASSERT_TRUE(waitUntil([&] { return editors[0]->hasSaved() && editors[1]->hasSaved(); }));
    ToolRun run;
    // A save that is under way keeps the drive; then the user tries again.
    for (int attempt = 0; attempt < 20; ++attempt) {
        run = host->run({"uninstall", "--export", copy().string(), "--delete-store"});
        if (run.status == 0) {
            break;
        }
        ASSERT_NE(run.errorText.find("in use by"), std::string::npos) << run.errorText;
        ASSERT_TRUE(host->isMounted());
    }
    ASSERT_EQ(run.status, 0) << run.errorText;
    EXPECT_FALSE(fs::exists(host->paths().image));
    EXPECT_EQ(readSmallFile(copy() / "document"), editors[0]->lastSaved());
    EXPECT_EQ(readSmallFile(copy() / "folder/document"), editors[1]->lastSaved());
}

TEST_F(Deletion, everyKindOfLateChangeIsInTheCopy)
{
    makeFiles(6);
    const auto put = [&](const char* name, const char* text) { std::ofstream(drive() / name) << text; };
    for (const char* name : {"rewritten", "kept time", "replaced", "mapped", "mode only"}) {
        put(name, "before");
    }
    put("older", "OLDER!");
    const pid_t tool = start({"uninstall", "--export", copy().string(), "--delete-store"});
    ASSERT_TRUE(reaches(Work::Phase::Verifying));
    struct stat old{};
    ASSERT_EQ(::stat((drive() / "kept time").c_str(), &old), 0);
    put("rewritten", "after!");
    put("kept time", "after!");
    const std::array<timespec, 2> times{old.st_atim, old.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, (drive() / "kept time").c_str(), times.data(), 0), 0);
    fs::rename(drive() / "older", drive() / "replaced");
    {
        const FileDescriptor file(::open((drive() / "mapped").c_str(), O_RDWR | O_CLOEXEC));
        void* const memory = ::mmap(nullptr, 6, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
        ASSERT_NE(memory, MAP_FAILED);
        static_cast<char*>(memory)[0] = 'X';
        ::munmap(memory, 6);
    }
    fs::permissions(drive() / "mode only", fs::perms(0640));
    ASSERT_EQ(::setxattr((drive() / "mode only").c_str(), "user.note", "late", 4, 0), 0);
    const auto expected = fingerprint(drive());
    ASSERT_TRUE(Work::atWork(host->paths())) << "all of it came before the unmount";
    ASSERT_EQ(waitFor(tool), 0) << host->logText();
    EXPECT_EQ(fingerprint(copy()), expected);
    EXPECT_EQ(fs::status(copy() / "mode only").permissions(), fs::perms(0640));
    EXPECT_EQ(::getxattr((copy() / "mode only").c_str(), "user.note", nullptr, 0), 4);
    EXPECT_FALSE(fs::exists(host->paths().image));
}

TEST_F(Deletion, withAnEmptyFolderNameIsRefusedAndDeletesNothing)
{
    makeFiles();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"uninstall", "--export", "", "--delete-store"},
          std::vector<std::string>{"uninstall", "--export", "--delete-store"}})
    {
        const ToolRun run = host->run(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.errorText.find("needs a folder"), std::string::npos) << run.errorText;
        EXPECT_TRUE(host->isMounted());
    }
    EXPECT_EQ(fingerprint(drive()), files);
}

TEST_F(Deletion, besideARunningExportIsRefusedAndSaysWhoIsAtWork)
{
    makeFiles(6);
    const pid_t tool = start({"export", copy().string()});
    ASSERT_TRUE(reaches(Work::Phase::Copying));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"uninstall", "--delete-store"},
          std::vector<std::string>{"export", (host->paths().home / "second").string()},
          std::vector<std::string>{"restart"}})
    {
        const ToolRun run = host->run(arguments);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errorText, "“ferrobank export” (process " + std::to_string(tool) +
                                     ") is at work on the drive. Wait until it ends, then try again.\n");
    }
    EXPECT_EQ(waitFor(tool), 0) << host->logText();
    EXPECT_EQ(fingerprint(copy()), files);
    EXPECT_TRUE(host->isMounted());
}

TEST_F(Deletion, killedInAnyPhaseLosesNothingAndGoesOnWhenRepeated)
{
    makeFiles(4);
    const std::vector<std::string> arguments{"uninstall", "--export", copy().string(), "--delete-store"};
    for (const Work::Phase phase : {Work::Phase::Starting, Work::Phase::Copying, Work::Phase::Verifying,
                                    Work::Phase::Detaching, Work::Phase::Comparing})
    {
        const pid_t tool = start(arguments);
        ASSERT_TRUE(reachesSoon(phase)) << phaseWord(phase);
        ::kill(tool, SIGKILL);
        ASSERT_EQ(waitFor(tool), 128 + SIGKILL) << phaseWord(phase);
        ASSERT_EQ(host->run({"restart"}).status, 0) << phaseWord(phase) << ": " << host->logText();
        EXPECT_EQ(fingerprint(drive()), files) << phaseWord(phase);
        EXPECT_TRUE(waitUntil([&] { return !hasSnapshots(); })) << "left after " << phaseWord(phase);
    }
    const pid_t tool = start(arguments);
    ASSERT_TRUE(reachesSoon(Work::Phase::Removing));
    ::kill(tool, SIGKILL);
    waitFor(tool);
    const ToolRun run = host->run(arguments);
    ASSERT_EQ(run.status, 0) << run.errorText;
    EXPECT_EQ(fingerprint(copy()), files);
    EXPECT_FALSE(fs::exists(copy() / ".ferrobank-incomplete"));
    EXPECT_FALSE(fs::exists(host->paths().image));
}

TEST_F(Deletion, cancelledInAnyPhaseBeforeTheRemovalLeavesTheDriveAsItWas)
{
    makeFiles(6);
    for (const Work::Phase phase : {Work::Phase::Copying, Work::Phase::Verifying, Work::Phase::Comparing}) {
        const pid_t tool = start({"uninstall", "--export", copy().string(), "--delete-store"});
        if (phase == Work::Phase::Comparing) {
            // So much is changed meanwhile that comparing takes its time.
            ASSERT_TRUE(reachesSoon(Work::Phase::Verifying));
            for (unsigned number = 0; number < 3; ++number) {
                ASSERT_TRUE(
                    writeRandomFile(drive() / ("late" + std::to_string(number)), 40'000'000, 99 + number));
            }
            files = fingerprint(drive());
        }
        ASSERT_TRUE(reachesSoon(phase)) << phaseWord(phase);
        ::kill(tool, SIGTERM);
        EXPECT_EQ(waitFor(tool), 1) << phaseWord(phase);
        ASSERT_TRUE(host->isMounted()) << phaseWord(phase) << ": " << host->logText();
        EXPECT_EQ(fingerprint(drive()), files);
        EXPECT_FALSE(hasSnapshots()) << phaseWord(phase);
    }
    EXPECT_NE(host->servingProcess(), 0);
}

TEST_F(Deletion, statusTellsThePhaseAndTheBytes)
{
    makeFiles(6);
    EXPECT_FALSE(nlohmann::json::parse(host->status()).contains("work"));
    const pid_t tool = start({"uninstall", "--export", copy().string()});
    ASSERT_TRUE(reaches(Work::Phase::Copying));
    nlohmann::json status;
    ASSERT_TRUE(waitUntil([&] {
        status = nlohmann::json::parse(host->status());
        return status.contains("work_total") && status["work_total"] > 200'000'000;
    }));
    EXPECT_EQ(status["work"], "uninstall");
    EXPECT_LE(status["work_done"], status["work_total"]);
    EXPECT_EQ(waitFor(tool), 0);
    EXPECT_FALSE(nlohmann::json::parse(host->status()).contains("work"));
}

TEST_F(Deletion, destinationThatVanishesKeepsTheDrive)
{
    makeFiles(6);
    TestVolume disk(host->paths().home, "disk", "ext4", std::uint64_t{1} << 30U);
    const pid_t tool =
        start({"uninstall", "--export", (disk.mountPoint() / "copy").string(), "--delete-store"});
    ASSERT_TRUE(reaches(Work::Phase::Copying));
    {
        const FileDescriptor folder(::open(disk.mountPoint().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        __u32 how = 2;
        ASSERT_EQ(::ioctl(folder.get(), _IOR('X', 125, __u32), &how), 0);
    }
    EXPECT_EQ(waitFor(tool), 1);
    EXPECT_TRUE(host->isMounted());
    EXPECT_EQ(fingerprint(drive()), files);
}

TEST_F(Deletion, onATerminalTellsWhatWillGoAndWaitsForYes)
{
    makeFiles();
    for (const bool agrees : {false, true}) {
        int terminal = -1;
        const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == 0) {
            host->become({"uninstall", "--export", copy().string(), "--delete-store"});
        }
        std::string shown;
        bool answered = false;
        std::array<char, 4096> piece{};
        for (ssize_t length = 0; (length = ::read(terminal, piece.data(), piece.size())) > 0;) {
            shown.append(piece.data(), static_cast<std::size_t>(length));
            if (!answered && shown.find("to go on: ") != std::string::npos) {
                answered = true;
                const std::string answer = agrees ? "yes\n" : "y\n";
                ASSERT_EQ(::write(terminal, answer.data(), answer.size()),
                          static_cast<ssize_t>(answer.size()));
            }
        }
        ::close(terminal);
        EXPECT_EQ(waitFor(child), agrees ? 0 : 1) << shown;
        EXPECT_NE(shown.find("60 files, 1.2 MB"), std::string::npos) << shown;
        EXPECT_NE(shown.find(copy().string()), std::string::npos) << shown;
        EXPECT_EQ(fs::exists(host->paths().image), !agrees);
    }
    EXPECT_EQ(fingerprint(copy()), files);
}

TEST_F(Deletion, exportAloneLeavesTheDriveAndVerifies)
{
    makeFiles();
    const ToolRun run = host->run({"export", copy().string()});
    EXPECT_EQ(run.status, 0) << run.errorText;
    EXPECT_NE(run.output.find("Exported and verified 60 files"), std::string::npos) << run.output;
    EXPECT_EQ(fingerprint(copy()), files);
    EXPECT_EQ(fingerprint(drive()), files);
    EXPECT_TRUE(host->isMounted());
    EXPECT_FALSE(fs::exists(copy() / ".ferrobank-incomplete"));
}

} // namespace
} // namespace ferrobank::drive::testing
