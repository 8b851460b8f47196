#include "figures/ContentHash.h"
#include "platform/FileDescriptor.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace ferrobank::drive {

namespace {

using testing::randomBytes;
using testing::TemporaryFolder;
using testing::writeFile;

HashOutcome hashFile(const std::filesystem::path& path, std::uint64_t size, std::size_t step = 65536)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::vector<char> buffer(step);
    return hashContent(file.get(), size, buffer, [](std::uint64_t, std::span<const char>) { return true; });
}

ContentHash hashOf(const TemporaryFolder& folder, const std::string& content, std::size_t step = 65536)
{
    writeFile(folder.path() / "file", content);
    const HashOutcome outcome = hashFile(folder.path() / "file", content.size(), step);
    EXPECT_TRUE(outcome.hash);
    return outcome.hash.value_or(ContentHash{});
}

TEST(ContentHash, isTheSameHoweverTheFileIsRead)
{
    const TemporaryFolder folder;
    std::string content = randomBytes(300'000, 1);
    content.replace(100'000, 50'000, 50'000, '\0');
    const ContentHash once = hashOf(folder, content, 1U << 20U);
    EXPECT_EQ(hashOf(folder, content, 4096), once);
    EXPECT_EQ(hashOf(folder, content, 65536), once);
}

TEST(ContentHash, holeEqualsWrittenZeros)
{
    const TemporaryFolder folder;
    const std::string head = randomBytes(5000, 2);
    const std::string tail = randomBytes(3000, 3);
    const std::string content = head + std::string(1'000'000, '\0') + tail;
    const ContentHash written = hashOf(folder, content);

    const auto sparse = folder.path() / "sparse";
    const FileDescriptor file(::open(sparse.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(::pwrite(file.get(), head.data(), head.size(), 0), static_cast<ssize_t>(head.size()));
    ASSERT_EQ(::pwrite(file.get(), tail.data(), tail.size(), 1'005'000), static_cast<ssize_t>(tail.size()));
    EXPECT_EQ(hashFile(sparse, content.size()).hash, written);
}

TEST(ContentHash, emptyFilesOfOneSizeAreEqualAndOthersAreNot)
{
    const TemporaryFolder folder;
    EXPECT_EQ(hashOf(folder, std::string(10'000, '\0')), hashOf(folder, std::string(10'000, '\0')));
    EXPECT_NE(hashOf(folder, std::string(10'000, '\0')), hashOf(folder, std::string(10'001, '\0')));
    EXPECT_NE(hashOf(folder, ""), hashOf(folder, std::string(1, '\0')));
}

TEST(ContentHash, oneChangedBitChangesTheHash)
{
    const TemporaryFolder folder;
    std::string content = randomBytes(200'000, 4);
    const ContentHash before = hashOf(folder, content);
    content[199'999] = static_cast<char>(content[199'999] ^ 1);
    EXPECT_NE(hashOf(folder, content), before);
}

TEST(ContentHash, samePiecesAtOtherPlacesDiffer)
{
    const TemporaryFolder folder;
    const std::string block = randomBytes(4096, 5);
    const std::string zeros(4096, '\0');
    EXPECT_NE(hashOf(folder, block + zeros + zeros), hashOf(folder, zeros + block + zeros));
    EXPECT_NE(hashOf(folder, block + zeros + block), hashOf(folder, block + block + zeros));
}

TEST(ContentHash, fileThatBecameShorterHasNone)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "file", std::string(1000, 'x'));
    const HashOutcome outcome = hashFile(folder.path() / "file", 5000);
    EXPECT_FALSE(outcome.hash);
    EXPECT_EQ(outcome.error, 0);
}

TEST(ContentHash, receiverMayEndTheReading)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "file", std::string(100'000, 'x'));
    const FileDescriptor file(::open((folder.path() / "file").c_str(), O_RDONLY | O_CLOEXEC));
    std::vector<char> buffer(4096);
    int pieces = 0;
    const HashOutcome outcome = hashContent(
        file.get(), 100'000, buffer, [&](std::uint64_t, std::span<const char>) { return ++pieces < 3; });
    EXPECT_FALSE(outcome.hash);
    EXPECT_EQ(pieces, 3);
}

TEST(ContentHash, readErrorIsReported)
{
    const TemporaryFolder folder;
    const FileDescriptor noFile(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<char> buffer(4096);
    const HashOutcome outcome =
        hashContent(noFile.get(), 4096, buffer, [](std::uint64_t, std::span<const char>) { return true; });
    EXPECT_FALSE(outcome.hash);
    EXPECT_EQ(outcome.error, EISDIR);
}

} // namespace

} // namespace ferrobank::drive
