#include "figures/IdentitySet.h"
#include "figures/TreeWalk.h"
#include "figures/Usage.h"
#include "platform/Failure.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;
using testing::writeFile;

/// Records paths; `onFile` may change the tree meanwhile.
class Recorder : public TreeVisitor {
public:
    bool enterFolder(const WalkedFolder& folder) override
    {
        const std::string path = _path.empty() ? "" : _path.back() + folder.name + "/";
        if (refused.contains(path)) {
            return false;
        }
        _path.push_back(path);
        folders.insert(path);
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override
    {
        files.insert(_path.back() + entry.name);
        if (onFile) {
            onFile(_path.back() + entry.name);
        }
    }

    void unreadable(const char* name, int) override { unread.push_back(_path.back() + name); }

    [[nodiscard]] bool balanced() const { return _path.empty(); }

    std::multiset<std::string> files;
    std::multiset<std::string> folders;
    std::vector<std::string> unread;
    std::set<std::string> refused;
    std::function<void(const std::string&)> onFile;

private:
    std::vector<std::string> _path;
};

TEST(TreeWalk, visitsEveryEntryOnceAndLeavesOutTheToolsFolder)
{
    const TemporaryFolder root;
    writeFile(root.path() / "a", "1");
    writeFile(root.path() / "b/c/d", "2");
    writeFile(root.path() / ".ferrobank/guard", "3");
    writeFile(root.path() / "b/.ferrobank/mine", "4");
    fs::create_directory_symlink("b", root.path() / "link");
    fs::create_directory(root.path() / "empty");
    Recorder seen;
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Complete);
    EXPECT_EQ(seen.files, (std::multiset<std::string>{"a", "b/.ferrobank/mine", "b/c/d", "link"}));
    EXPECT_EQ(seen.folders, (std::multiset<std::string>{"", "b/", "b/.ferrobank/", "b/c/", "empty/"}));
    EXPECT_TRUE(seen.balanced());
}

TEST(TreeWalk, namesMayHoldLineBreaksAndBytesThatAreNoText)
{
    const TemporaryFolder root;
    writeFile(root.path() / "line\nbreak", "1");
    writeFile(root.path() / "caf\xe9 \xff/inside", "2");
    Recorder seen;
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Complete);
    EXPECT_EQ(seen.files, (std::multiset<std::string>{"line\nbreak", "caf\xe9 \xff/inside"}));
}

TEST(TreeWalk, refusedFolderIsNotEntered)
{
    const TemporaryFolder root;
    writeFile(root.path() / "in/file", "1");
    writeFile(root.path() / "out/file", "2");
    Recorder seen;
    seen.refused = {"out/"};
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Complete);
    EXPECT_EQ(seen.files, std::multiset<std::string>{"in/file"});
    EXPECT_TRUE(seen.balanced());
}

TEST(TreeWalk, foldersDeeperThanAnyPathAreReached)
{
    const TemporaryFolder root;
    const std::string name(200, 'd');
    int folder = ::open(root.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int depth = 0; depth < 60; ++depth) {
        ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
        const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ::close(::openat(folder, "deepest", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ::close(folder);
    Recorder seen;
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Complete);
    EXPECT_EQ(seen.folders.size(), 61U);
    ASSERT_EQ(seen.files.size(), 1U);
    EXPECT_TRUE(seen.files.begin()->ends_with("/deepest"));
}

TEST(TreeWalk, folderMovedAwayMeanwhileIsReportedAndTheRestIsSeen)
{
    const TemporaryFolder root;
    const TemporaryFolder elsewhere;
    writeFile(root.path() / "a/b/trigger", "1");
    writeFile(root.path() / "z", "2");
    Recorder seen;
    seen.onFile = [&](const std::string& path) {
        if (path == "a/b/trigger") {
            fs::rename(root.path() / "a/b", elsewhere.path() / "b");
        }
    };
    // Going up from b leads elsewhere now; a is found again from the root.
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Complete);
    EXPECT_EQ(seen.files, (std::multiset<std::string>{"a/b/trigger", "z"}));
    EXPECT_TRUE(seen.balanced());
}

TEST(TreeWalk, wholeBranchReplacedMeanwhileMakesTheWalkIncomplete)
{
    const TemporaryFolder root;
    const TemporaryFolder elsewhere;
    writeFile(root.path() / "a/b/trigger", "1");
    Recorder seen;
    seen.onFile = [&](const std::string& path) {
        if (path == "a/b/trigger") {
            fs::rename(root.path() / "a/b", elsewhere.path() / "b");
            fs::rename(root.path() / "a", elsewhere.path() / "a");
            fs::create_directory(root.path() / "a");
        }
    };
    EXPECT_EQ(walkTree(root.path(), seen, {}), WalkEnd::Unreadable);
    EXPECT_TRUE(seen.balanced());
}

TEST(TreeWalk, unreadableFolderIsReportedAndTheRestIsSeen)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "acting as another user needs root";
    }
    const TemporaryFolder root;
    fs::permissions(root.path(), fs::perms(0755));
    writeFile(root.path() / "closed/secret", "1");
    writeFile(root.path() / "open/file", "2");
    fs::permissions(root.path() / "closed", fs::perms(0700));
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        Recorder seen;
        return walkTree(root.path(), seen, {}) == WalkEnd::Unreadable && seen.balanced() &&
               seen.unread == std::vector<std::string>{"closed"} &&
               seen.files == std::multiset<std::string>{"open/file"};
    }));
}

TEST(TreeWalk, openFolderMayBeWalkedTwice)
{
    const TemporaryFolder root;
    writeFile(root.path() / "a", "1");
    const FileDescriptor folder(::open(root.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int turn = 0; turn < 2; ++turn) {
        Recorder seen;
        walkTree(FileDescriptor(::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0)), seen, {});
        EXPECT_EQ(seen.files.size(), 1U) << turn;
    }
}

TEST(TreeWalk, missingRootIsAFailure)
{
    const TemporaryFolder root;
    Recorder seen;
    EXPECT_THROW(walkTree(root.path() / "none", seen, {}), Failure);
}

TEST(TreeWalk, stopsSoonAfterARequest)
{
    const TemporaryFolder root;
    for (int number = 0; number < 2000; ++number) {
        std::ofstream(root.path() / std::to_string(number)).close();
    }
    std::stop_source stop;
    Recorder seen;
    seen.onFile = [&](const std::string&) { stop.request_stop(); };
    EXPECT_EQ(walkTree(root.path(), seen, stop.get_token()), WalkEnd::Cancelled);
    EXPECT_LE(seen.files.size(), 256U);
}

TEST(Usage, countsEachInodeOnce)
{
    const TemporaryFolder root;
    writeFile(root.path() / "one", std::string(100'000, 'x'));
    fs::create_hard_link(root.path() / "one", root.path() / "two");
    fs::create_directory(root.path() / "sub");
    fs::create_hard_link(root.path() / "one", root.path() / "sub/three");
    UsageSum sum;
    EXPECT_EQ(walkTree(root.path(), sum, {}), WalkEnd::Complete);
    struct stat status{};
    ASSERT_EQ(::stat((root.path() / "one").c_str(), &status), 0);
    EXPECT_EQ(sum.usage().bytes, static_cast<std::uint64_t>(status.st_blocks) * 512);
    EXPECT_EQ(sum.usage().files, 1U);
    EXPECT_EQ(sum.usage().folders, 2U);
}

TEST(Usage, countsBlocksAndNotApparentSizes)
{
    const TemporaryFolder root;
    writeFile(root.path() / "sparse", "x");
    fs::resize_file(root.path() / "sparse", std::uintmax_t{1} << 33U);
    fs::create_symlink("sparse", root.path() / "link");
    ASSERT_EQ(::mkfifo((root.path() / "pipe").c_str(), 0600), 0);
    UsageSum sum;
    EXPECT_EQ(walkTree(root.path(), sum, {}), WalkEnd::Complete);
    EXPECT_LT(sum.usage().bytes, 1U << 20U);
    EXPECT_EQ(sum.usage().files, 1U);
}

TEST(IdentitySet, remembersWhatWasAdded)
{
    IdentitySet set;
    std::unordered_set<std::uint64_t> expected;
    std::mt19937_64 generator(1);
    for (int count = 0; count < 100'000; ++count) {
        const std::uint64_t identity = generator() % 150'000 + 1;
        EXPECT_EQ(set.add(identity), expected.insert(identity).second);
    }
    EXPECT_EQ(set.size(), expected.size());
    for (std::uint64_t identity = 1; identity <= 150'000; ++identity) {
        ASSERT_EQ(set.contains(identity), expected.contains(identity));
    }
}

TEST(FileIdentity, differsBetweenSubvolumes)
{
    EXPECT_NE(fileIdentity(5, 257), fileIdentity(256, 257));
    EXPECT_EQ(fileIdentity(256, 257), fileIdentity(256, 257));
    EXPECT_NE(fileIdentity(0, 0), 0U);
}

} // namespace

} // namespace ferrobank::drive
