#include "testing/TestVolume.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ferrobank::drive::testing {

namespace {

/// What a killed process had open, and loop devices on it, are let go a moment after their end.
bool unmountPatiently(const std::filesystem::path& mountPoint)
{
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (::umount2(mountPoint.c_str(), 0) == 0) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

} // namespace

int runProgram(std::initializer_list<std::string> arguments)
{
    std::vector<std::string> texts(arguments);
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execvp(pointers[0], pointers.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string volumesUnavailable()
{
    static const std::string reason = []() -> std::string {
        if (::geteuid() != 0) {
            return "mounting test volumes needs root";
        }
        if (::access("/dev/loop-control", R_OK | W_OK) != 0) {
            return "this machine has no loop devices";
        }
        if (runProgram({"/bin/sh", "-c", "modprobe btrfs 2>/dev/null; grep -qw btrfs /proc/filesystems"}) !=
            0)
        {
            return "this machine's kernel has no Btrfs";
        }
        return {};
    }();
    return reason;
}

TestVolume::TestVolume(const std::filesystem::path& folder, const std::string& name, const std::string& kind,
                       std::uint64_t bytes, const std::string& options)
    : _image(folder / (name + ".image")), _mountPoint(folder / name)
{
    std::ofstream(_image).close();
    std::filesystem::resize_file(_image, bytes);
    std::filesystem::create_directories(_mountPoint);
    const std::string quiet = kind == "vfat" ? "-v" : "-q";
    if (runProgram(
            {"/bin/sh", "-c", R"(mkfs."$0" "$1" "$2" >/dev/null 2>&1)", kind, quiet, _image.string()}) != 0)
    {
        throw std::runtime_error("mkfs." + kind + " failed");
    }
    mount(options);
}

TestVolume::~TestVolume()
{
    if (_mounted && !unmountPatiently(_mountPoint)) {
        ADD_FAILURE() << _mountPoint << " was still busy at the end of the test";
        runProgram({"umount", "-l", _mountPoint.string()});
    }
}

void TestVolume::mount(const std::string& options)
{
    const std::string all = options.empty() ? "loop" : "loop," + options;
    if (runProgram({"mount", "-o", all, _image.string(), _mountPoint.string()}) != 0) {
        throw std::runtime_error("cannot mount " + _image.string());
    }
    _mounted = true;
}

void TestVolume::remount(const std::string& options)
{
    if (runProgram({"mount", "-o", "remount," + options, _mountPoint.string()}) != 0) {
        throw std::runtime_error("cannot remount " + _mountPoint.string());
    }
}

void TestVolume::unmount()
{
    if (!unmountPatiently(_mountPoint)) {
        throw std::runtime_error("cannot unmount " + _mountPoint.string());
    }
    _mounted = false;
}

} // namespace ferrobank::drive::testing
