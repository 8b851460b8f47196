#include "testing/DriveHost.h"

#include "mounting/LoopDevices.h"
#include "mounting/MountTable.h"
#include "mounting/Volume.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "platform/ToolPrograms.h"
#include "testing/DriveFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/loop.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

namespace ferrobank::drive::testing {

namespace {

std::string readToEnd(int descriptor)
{
    std::string text;
    char piece[4096];
    for (;;) {
        const ssize_t got = ::read(descriptor, piece, sizeof piece);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return text;
        }
        text.append(piece, static_cast<std::size_t>(got));
    }
}

/// Whether a process has gone so far that its files are closed: a killed one first finishes its system call.
bool hasLetGo(pid_t process)
{
    const std::string facts =
        readSmallFile("/proc/" + std::to_string(process) + "/stat").value_or(std::string());
    const std::size_t state = facts.rfind(") ");
    return state == std::string::npos || facts[state + 2] == 'Z' || facts[state + 2] == 'X';
}

std::string hashOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return "unreadable";
    }
    XXH3_state_t* state = XXH3_createState();
    XXH3_128bits_reset(state);
    std::vector<char> piece(1 << 20);
    while (stream) {
        stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        XXH3_128bits_update(state, piece.data(), static_cast<std::size_t>(stream.gcount()));
    }
    const XXH128_hash_t hash = XXH3_128bits_digest(state);
    XXH3_freeState(state);
    char text[40];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return stream.bad() ? "unreadable" : text;
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::map<std::string, std::string> fingerprint(const std::filesystem::path& folder)
{
    std::map<std::string, std::string> found;
    for (auto entry = std::filesystem::recursive_directory_iterator(folder);
         entry != std::filesystem::recursive_directory_iterator(); ++entry)
    {
        const std::string name = entry->path().lexically_relative(folder).string();
        if (name == kOwnFolder) {
            entry.disable_recursion_pending();
            continue;
        }
        if (entry->is_symlink()) {
            found[name] = "link " + std::filesystem::read_symlink(entry->path()).string();
        } else if (entry->is_directory()) {
            found[name] = "folder";
        } else {
            found[name] = std::to_string(entry->file_size()) + " " + hashOf(entry->path());
        }
    }
    return found;
}

bool writeRandomFile(const std::filesystem::path& file, std::size_t bytes, unsigned seed)
{
    const FileDescriptor made(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    std::vector<std::uint64_t> piece(16 * 1024);
    std::uint64_t number = seed * 0x9E3779B97F4A7C15ULL + 1;
    while (made && bytes > 0) {
        for (std::uint64_t& word : piece) {
            number ^= number << 13;
            number ^= number >> 7;
            number ^= number << 17;
            word = number;
        }
        const std::size_t part = std::min(bytes, piece.size() * sizeof piece[0]);
        const ssize_t put = ::write(made.get(), piece.data(), part);
        if (put <= 0) {
            return false;
        }
        bytes -= static_cast<std::size_t>(put);
    }
    return made && ::fsync(made.get()) == 0;
}

std::filesystem::path installTool(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    const std::filesystem::path built = std::filesystem::path(FERROBANK_TOOL).parent_path();
    for (const char* program : {kDriveProgram, kFrontProgram}) {
        std::filesystem::copy_file(built / program, folder / "fresh");
        std::filesystem::rename(folder / "fresh", folder / program);
    }
    return folder / kFrontProgram;
}

DriveHost::DriveHost(const std::string& kind, std::uint64_t bytes) : _program(FERROBANK_TOOL)
{
    enterPrivateMounts();
    _disk = std::make_unique<TestVolume>(_folder.path(), "disk", kind, bytes);
    const std::filesystem::path home = _disk->mountPoint() / "home";
    const std::filesystem::path runtime = _folder.path() / "runtime";
    std::filesystem::create_directories(home);
    std::filesystem::create_directories(runtime);
    ::chmod(runtime.c_str(), 0700);
    _paths = Paths::of(home, runtime, home / ".config");
    _variables = {{"HOME", home.string()}, {"XDG_RUNTIME_DIR", runtime.string()}, {"PATH", "/usr/bin:/bin"}};
}

DriveHost::~DriveHost()
{
    endServing(SIGKILL);
    dropDrive();
}

std::vector<pid_t> DriveHost::ownProcesses() const
{
    std::vector<pid_t> found;
    const std::string wanted = "HOME=" + _paths.home.string() + '\0';
    const std::unique_ptr<DIR, int (*)(DIR*)> processes(::opendir("/proc"), &::closedir);
    while (const dirent* entry = processes ? ::readdir(processes.get()) : nullptr) {
        const std::string process = std::string("/proc/") + entry->d_name;
        const std::string environment = readSmallFile(process + "/environ").value_or(std::string());
        const std::string arguments = readSmallFile(process + "/cmdline").value_or(std::string());
        if (environment.find(wanted) != std::string::npos && arguments.ends_with(std::string("\0serve\0", 7)))
        {
            found.push_back(std::atoi(entry->d_name));
        }
    }
    return found;
}

pid_t DriveHost::servingProcess() const
{
    const std::vector<pid_t> found = ownProcesses();
    return found.empty() ? 0 : found.front();
}

void DriveHost::endServing(int signal)
{
    std::vector<pid_t> processes = ownProcesses();
    if (_started != 0 && std::find(processes.begin(), processes.end(), _started) == processes.end()) {
        processes.push_back(_started);
    }
    _started = 0;
    for (const pid_t process : processes) {
        ::kill(process, signal);
        EXPECT_TRUE(waitUntil([process] { return hasLetGo(process); }, std::chrono::seconds(30)))
            << "a serving process does not end";
        ::waitpid(process, nullptr, WNOHANG);
    }
}

void DriveHost::dropDrive()
{
    const std::vector<LoopDevice> loops = loopsOf(_paths.image, Recognise::ByFile);
    std::vector<MountEntry> mounts = readMountTable();
    for (auto mount = mounts.rbegin(); mount != mounts.rend(); ++mount) {
        for (const LoopDevice& loop : loops) {
            // A killed process may take a moment to let its files go.
            if (mount->source == loop.device &&
                !waitUntil([&] { return ::umount2(mount->mountPoint.c_str(), 0) == 0; },
                           std::chrono::seconds(5)))
            {
                ADD_FAILURE() << mount->mountPoint << " was still busy";
                ::umount2(mount->mountPoint.c_str(), MNT_DETACH);
            }
        }
    }
    EXPECT_TRUE(waitUntil([&] {
        const std::vector<LoopDevice> left = loopsOf(_paths.image, Recognise::ByFile);
        for (const LoopDevice& loop : left) {
            const FileDescriptor device(::open(loop.device.c_str(), O_RDWR | O_CLOEXEC));
            ::ioctl(device.get(), LOOP_CLR_FD);
        }
        return left.empty();
    })) << "a loop device stays attached";
}

void DriveHost::setVariable(const std::string& name, const std::string& value)
{
    if (value.empty()) {
        _variables.erase(name);
    } else {
        _variables[name] = value;
    }
}

void DriveHost::become(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> texts{_program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    for (const auto& [name, value] : _variables) {
        variables.push_back(name + "=" + value);
    }
    std::vector<char*> words;
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    std::vector<char*> environment;
    for (std::string& variable : variables) {
        environment.push_back(variable.data());
    }
    environment.push_back(nullptr);
    ::close_range(3, ~0U, 0);
    ::execve(words[0], words.data(), environment.data());
    ::_exit(127);
}

pid_t DriveHost::spawn(const std::vector<std::string>& arguments, int output, int errors) const
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(output, STDOUT_FILENO);
        ::dup2(errors, STDERR_FILENO);
        become(arguments);
    }
    return child;
}

pid_t DriveHost::start(const std::vector<std::string>& arguments) const
{
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    return spawn(arguments, nothing.get(), nothing.get());
}

ToolRun DriveHost::run(const std::vector<std::string>& arguments, const std::string& errorName) const
{
    const std::filesystem::path errorFile = _folder.path() / errorName;
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const FileDescriptor errors(::open(errorFile.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    const pid_t child = spawn(arguments, writing.get(), errors.get());
    writing.reset();
    ToolRun result;
    result.output = readToEnd(reading.get());
    int status = 0;
    ::waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.errorText = readSmallFile(errorFile).value_or(std::string());
    return result;
}

void DriveHost::makeSmallStore(std::uint64_t bytes) const
{
    std::filesystem::create_directories(_paths.store);
    std::filesystem::create_directories(_folder.path() / "skeleton/u");
    for (const std::filesystem::path& folder : {_paths.store, _folder.path() / "skeleton/u"}) {
        ::chmod(folder.c_str(), 0700);
    }
    const FileDescriptor image(::open(_paths.image.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const FileDescriptor mark(::open(_paths.unprepared.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    if (!mark || ::ftruncate(image.get(), static_cast<off_t>(bytes)) != 0 ||
        runProgram({"mkfs.btrfs", "-q", "-L", "Ferrobank", "--rootdir",
                    (_folder.path() / "skeleton").string(), _paths.image.string()}) != 0)
    {
        throw std::runtime_error("cannot make a store");
    }
}

pid_t DriveHost::startServing()
{
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const std::filesystem::path errorFile = _folder.path() / "serve-errors";
    const FileDescriptor errors(::open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    _started = spawn({"serve"}, nothing.get(), errors.get());
    return _started;
}

bool DriveHost::serveAndMount()
{
    const std::string process = "\"pid\":" + std::to_string(startServing()) + ",";
    waitUntil([&] {
        const std::string state = readSmallFile(_paths.state()).value_or(std::string());
        if (state.find(process) == std::string::npos) {
            return false;
        }
        return state.find(R"("phase":"mounted")") != std::string::npos ||
               state.find(R"("phase":"failed")") != std::string::npos;
    });
    return isMounted();
}

bool DriveHost::isMounted() const
{
    return findVolume(_paths.image, Recognise::ByFile).has_value();
}

std::string DriveHost::status() const
{
    return run({"status", "--json"}).output;
}

std::string DriveHost::attachError() const
{
    const auto root = nlohmann::json::parse(status());
    return root.value("attach_error", std::string());
}

std::string DriveHost::logText() const
{
    return readSmallFile(_paths.log).value_or(std::string("no log\n")) +
           readSmallFile(_folder.path() / "serve-errors").value_or(std::string());
}

} // namespace ferrobank::drive::testing
