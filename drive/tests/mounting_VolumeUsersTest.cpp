#include "mounting/VolumeUsers.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace ferrobank::drive::testing {
namespace {

TEST(VolumeUsers, findsAProcessByItsFolderAndNotOneBesideIt)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "drive/inner");
    std::filesystem::create_directories(folder.path() / "drive2");
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool moved = ::chdir((folder.path() / "drive/inner").c_str()) == 0;
        const ssize_t put = ::write(ends[1], "x", moved ? 1 : 0);
        ::pause();
        ::_exit(static_cast<int>(put));
    }
    char letter = 0;
    ASSERT_EQ(::read(ends[0], &letter, 1), 1);
    const auto has = [child](const std::vector<VolumeUser>& users) {
        return std::any_of(users.begin(), users.end(),
                           [child](const auto& user) { return user.process == child; });
    };
    EXPECT_TRUE(has(usersOf(folder.path() / "drive")));
    EXPECT_FALSE(has(usersOf(folder.path() / "drive2")));
    EXPECT_FALSE(has(usersOf(folder.path() / "dri")));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(VolumeUsers, sentenceNamesOneSeveralAndTooMany)
{
    EXPECT_EQ(busySentence({}), "The drive is in use by another program. Close it and try again.");
    EXPECT_EQ(busySentence({{.process = 4242, .name = "code"}}),
              "The drive is in use by code (4242). Close it and try again.");
    EXPECT_EQ(busySentence({{.process = 4242, .name = "code"}, {.process = 991, .name = "bash"}}),
              "The drive is in use by code (4242), bash (991). Close them and try again.");
    const std::vector<VolumeUser> many(8, {.process = 1, .name = "a"});
    EXPECT_NE(busySentence(many).find("and 3 more. Close them"), std::string::npos);
}

} // namespace
} // namespace ferrobank::drive::testing
