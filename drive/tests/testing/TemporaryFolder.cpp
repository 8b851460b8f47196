#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

namespace ferrobank::drive::testing {

namespace {

bool holdsMount(const std::filesystem::path& folder)
{
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        if (line.find(' ' + folder.string() + '/') != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "ferrobank-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder");
    }
    _path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    if (holdsMount(_path)) {
        ADD_FAILURE() << "something is still mounted in " << _path;
        return;
    }
    std::error_code error;
    std::filesystem::remove_all(_path, error);
    if (error) {
        ADD_FAILURE() << "cannot remove " << _path << ": " << error.message();
    }
}

} // namespace ferrobank::drive::testing
