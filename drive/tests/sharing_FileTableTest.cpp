#include "sharing/FileTable.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::randomBytes;
using testing::TemporaryFolder;
using testing::writeFile;

class FileTableTest : public ::testing::Test {
protected:
    FileTable collect(std::size_t mostFiles = 1000, std::function<bool(std::uint64_t)> wanted = {})
    {
        FileTable::Limits limits;
        limits.quietSeconds = 0;
        limits.mostFiles = mostFiles;
        FileTable table(limits, std::move(wanted));
        EXPECT_EQ(walkTree(_root.path(), table, {}), WalkEnd::Complete);
        return table;
    }

    [[nodiscard]] FileDescriptor openRoot() const
    {
        return FileDescriptor(::open(_root.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }

    TemporaryFolder _root;
};

TEST_F(FileTableTest, pathsAreTheFileSystemsOwnBytes)
{
    writeFile(_root.path() / "a/b/c", randomBytes(5000, 1));
    writeFile(_root.path() / "a/line\nbreak", randomBytes(5000, 2));
    writeFile(_root.path() / "\xff", randomBytes(5000, 3));
    const FileTable table = collect();
    std::set<std::string> paths;
    for (const FileRecord& file : table.files()) {
        paths.insert(table.pathOf(file));
    }
    EXPECT_EQ(paths, (std::set<std::string>{"a/b/c", "a/line\nbreak", "\xff"}));
}

TEST_F(FileTableTest, opensTheFileOfARecord)
{
    writeFile(_root.path() / "a/b", "x" + randomBytes(5000, 1));
    const FileTable table = collect();
    ASSERT_EQ(table.files().size(), 1U);
    const FileDescriptor root = openRoot();
    const FileDescriptor file = table.open(root.get(), table.files()[0]);
    ASSERT_TRUE(file);
    char first = 0;
    EXPECT_EQ(::pread(file.get(), &first, 1, 0), 1);
    EXPECT_EQ(first, 'x');
    EXPECT_TRUE(table.unchanged(file.get(), table.files()[0]));
}

TEST_F(FileTableTest, doesNotOpenAnotherFileInItsPlace)
{
    writeFile(_root.path() / "a", randomBytes(5000, 1));
    const FileTable table = collect();
    writeFile(_root.path() / "new", randomBytes(5000, 1));
    fs::rename(_root.path() / "new", _root.path() / "a");
    const FileDescriptor root = openRoot();
    EXPECT_FALSE(table.open(root.get(), table.files()[0]));
    EXPECT_EQ(errno, ESTALE);
}

TEST_F(FileTableTest, doesNotFollowALinkInItsPlace)
{
    writeFile(_root.path() / "sub/a", randomBytes(5000, 1));
    const FileTable table = collect();
    const FileDescriptor root = openRoot();
    fs::rename(_root.path() / "sub", _root.path() / "moved");
    fs::create_directory_symlink("moved", _root.path() / "sub");
    EXPECT_FALSE(table.open(root.get(), table.files()[0]));
}

TEST_F(FileTableTest, doesNotWaitForAPipeInItsPlace)
{
    writeFile(_root.path() / "a", randomBytes(5000, 1));
    const FileTable table = collect();
    const FileDescriptor root = openRoot();
    fs::remove(_root.path() / "a");
    ASSERT_EQ(::mkfifo((_root.path() / "a").c_str(), 0600), 0);
    EXPECT_FALSE(table.open(root.get(), table.files()[0]));
}

TEST_F(FileTableTest, opensFilesDeeperThanAnyPath)
{
    const std::string name(200, 'd');
    FileDescriptor folder = openRoot();
    for (int depth = 0; depth < 50; ++depth) {
        ASSERT_EQ(::mkdirat(folder.get(), name.c_str(), 0700), 0);
        folder = FileDescriptor(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    const FileDescriptor made(::openat(folder.get(), "deep", O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    const std::string content = randomBytes(5000, 1);
    ASSERT_EQ(::write(made.get(), content.data(), content.size()), static_cast<ssize_t>(content.size()));
    const FileTable table = collect();
    ASSERT_EQ(table.files().size(), 1U);
    const FileDescriptor root = openRoot();
    EXPECT_TRUE(table.open(root.get(), table.files()[0]));
}

TEST_F(FileTableTest, moreFilesThanTheLimitAreCountedOnly)
{
    for (int number = 0; number < 30; ++number) {
        writeFile(_root.path() / std::to_string(number), randomBytes(5000, 1));
    }
    const FileTable table = collect(10);
    EXPECT_EQ(table.files().size(), 10U);
    EXPECT_EQ(table.wantedFiles(), 30U);
    EXPECT_EQ(table.usage().files, 30U);
}

TEST_F(FileTableTest, sizesAreChosen)
{
    writeFile(_root.path() / "small", randomBytes(5000, 1));
    writeFile(_root.path() / "large", randomBytes(50'000, 1));
    const FileTable table = collect(1000, [](std::uint64_t size) { return size > 10'000; });
    ASSERT_EQ(table.files().size(), 1U);
    EXPECT_EQ(table.pathOf(table.files()[0]), "large");
}

} // namespace

} // namespace ferrobank::drive
