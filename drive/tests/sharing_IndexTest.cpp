#include "platform/Failure.h"
#include "sharing/HashIndex.h"
#include "sharing/IndexFile.h"
#include "sharing/WindowIndex.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestVolume.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::randomBytes;
using testing::TemporaryFolder;
using testing::writeFile;

constexpr const char* kKind = "TESTKIND";
constexpr const char* kUuid = "01234567-89ab-cdef-0123-456789abcdef";

void writeIndex(const fs::path& path, const std::string& content)
{
    IndexWriter writer(path, kKind, kUuid);
    writer.append(content.data(), content.size());
    writer.commit();
}

TEST(IndexFile, whatWasWrittenIsReadAgain)
{
    const TemporaryFolder folder;
    const std::string content = randomBytes(1'000'000, 1);
    writeIndex(folder.path() / "index/a.idx", content);
    auto reader = IndexReader::open(folder.path() / "index/a.idx", kKind, kUuid);
    ASSERT_TRUE(reader);
    std::string read(content.size(), '\0');
    ASSERT_TRUE(reader->read(read.data(), 100));
    ASSERT_TRUE(reader->skip(400'000));
    ASSERT_TRUE(reader->read(read.data() + 400'100, content.size() - 400'100));
    EXPECT_EQ(read.substr(400'100), content.substr(400'100));
    EXPECT_FALSE(reader->read(read.data(), 1));
    EXPECT_FALSE(reader->skip(1));
    reader->rewind();
    ASSERT_TRUE(reader->read(read.data(), read.size()));
    EXPECT_EQ(read, content);
}

TEST(IndexFile, emptyIndexIsAnIndex)
{
    const TemporaryFolder folder;
    writeIndex(folder.path() / "a.idx", "");
    EXPECT_TRUE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid));
}

TEST(IndexFile, otherKindAndOtherDriveAreRefused)
{
    const TemporaryFolder folder;
    writeIndex(folder.path() / "a.idx", "content");
    EXPECT_TRUE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid));
    EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", "OTHERKIN", kUuid));
    EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", kKind, "11111111-89ab-cdef-0123-456789abcdef"));
}

TEST(IndexFile, everySingleDamagedByteIsNoticed)
{
    const TemporaryFolder folder;
    writeIndex(folder.path() / "a.idx", "some content");
    const std::string good = testing::readFile(folder.path() / "a.idx");
    for (std::size_t position = 0; position < good.size(); ++position) {
        std::string bad = good;
        bad[position] = static_cast<char>(bad[position] ^ 0x20);
        writeFile(folder.path() / "a.idx", bad);
        EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid)) << position;
    }
    for (std::size_t length = 0; length < good.size(); ++length) {
        writeFile(folder.path() / "a.idx", good.substr(0, length));
        EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid)) << length;
    }
}

TEST(IndexFile, withoutCommitTheOldOneStays)
{
    const TemporaryFolder folder;
    writeIndex(folder.path() / "a.idx", "old");
    {
        IndexWriter writer(folder.path() / "a.idx", kKind, kUuid);
        writer.append("new", 3);
    }
    auto reader = IndexReader::open(folder.path() / "a.idx", kKind, kUuid);
    ASSERT_TRUE(reader);
    std::string content(3, '\0');
    ASSERT_TRUE(reader->read(content.data(), 3));
    EXPECT_EQ(content, "old");
    EXPECT_FALSE(fs::exists(folder.path() / "a.idx.new"));
}

TEST(IndexFile, isReadableByItsOwnerOnly)
{
    const TemporaryFolder folder;
    writeIndex(folder.path() / "a.idx", "names of nobody's business");
    EXPECT_EQ(fs::status(folder.path() / "a.idx").permissions(), fs::perms(0600));
}

TEST(IndexFile, linkInItsPlaceIsNotFollowed)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "victim", "untouched");
    fs::create_symlink("victim", folder.path() / "a.idx.new");
    fs::create_symlink("victim", folder.path() / "a.idx");
    EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid));
    writeIndex(folder.path() / "a.idx", "content");
    EXPECT_EQ(testing::readFile(folder.path() / "victim"), "untouched");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder.path() / "a.idx")));
}

TEST(IndexFile, pipeInItsPlaceDoesNotBlock)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder.path() / "a.idx").c_str(), 0600), 0);
    EXPECT_FALSE(IndexReader::open(folder.path() / "a.idx", kKind, kUuid));
}

TEST(IndexFile, folderThatCannotBeMadeIsAFailure)
{
    EXPECT_THROW(IndexWriter("/proc/none/a.idx", kKind, kUuid), fs::filesystem_error);
}

TEST(IndexFile, fullDiskIsAFailureAndTheOldOneStays)
{
    testing::enterPrivateMounts();
    if (const std::string reason = testing::volumesUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const TemporaryFolder folder;
    const testing::TestVolume small(folder.path(), "small", "ext4", 2U << 20U);
    writeIndex(small.mountPoint() / "a.idx", "old");
    const std::string content = randomBytes(4U << 20U, 1);
    EXPECT_THROW(writeIndex(small.mountPoint() / "a.idx", content), Failure);
    EXPECT_TRUE(IndexReader::open(small.mountPoint() / "a.idx", kKind, kUuid));
    EXPECT_FALSE(fs::exists(small.mountPoint() / "a.idx.new"));
}

class HashIndexTest : public ::testing::Test {
protected:
    HashIndexTest()
    {
        for (const char* name : {"a", "b", "c"}) {
            writeFile(_tree.path() / name, randomBytes(8192, 1));
        }
        _table.emplace(limits(), nullptr);
        walkTree(_tree.path(), *_table, {});
    }

    static FileTable::Limits limits()
    {
        FileTable::Limits limits;
        limits.quietSeconds = 0;
        return limits;
    }

    void save(const std::vector<FileFacts>& facts) const
    {
        const auto writer = HashIndex::startWriting(_folder.path(), kUuid);
        HashIndex::append(*writer, *_table, facts);
        writer->commit();
    }

    TemporaryFolder _tree;
    TemporaryFolder _folder;
    std::optional<FileTable> _table;
};

TEST_F(HashIndexTest, factsAreFoundAgain)
{
    ASSERT_EQ(_table->files().size(), 3U);
    save({{{1, 2}, true, true}, {{3, 4}, true, false}, {{5, 6}, false, false}});
    const HashIndex index(_folder.path(), kUuid, {});
    EXPECT_EQ(index.size(), 2U);
    const FileFacts first = index.factsOf(_table->files()[0]);
    EXPECT_TRUE(first.hashed);
    EXPECT_TRUE(first.shared);
    EXPECT_EQ(first.hash, (ContentHash{1, 2}));
    EXPECT_FALSE(index.factsOf(_table->files()[1]).shared);
    EXPECT_FALSE(index.factsOf(_table->files()[2]).hashed);
}

TEST_F(HashIndexTest, factsOfAChangedFileAreForgotten)
{
    save({{{1, 2}, true, true}, {{1, 2}, true, true}, {{1, 2}, true, true}});
    const HashIndex index(_folder.path(), kUuid, {});
    FileRecord file = _table->files()[0];
    EXPECT_TRUE(index.factsOf(file).hashed);
    file.stamp ^= 1;
    EXPECT_FALSE(index.factsOf(file).hashed);
    file = _table->files()[0];
    file.size += 1;
    EXPECT_FALSE(index.factsOf(file).hashed);
    file = _table->files()[0];
    file.identity += 1'000'000'000;
    EXPECT_FALSE(index.factsOf(file).hashed);
}

TEST_F(HashIndexTest, onlyWantedSizesAreLoaded)
{
    save({{{1, 2}, true, true}, {{1, 2}, true, true}, {{1, 2}, true, true}});
    const HashIndex none(_folder.path(), kUuid, [](std::uint64_t size) { return size != 8192; });
    EXPECT_EQ(none.size(), 0U);
    const HashIndex all(_folder.path(), kUuid, [](std::uint64_t size) { return size == 8192; });
    EXPECT_EQ(all.size(), 3U);
}

TEST(WindowIndex, segmentsAreReadAgainWithAndWithoutTheirWindows)
{
    const TemporaryFolder folder;
    {
        WindowIndexWriter writer(folder.path(), kUuid);
        writer.append({1, 100, 7, false, {{11, 0}, {12, 65536}}});
        writer.append({1, 100, 7, true, {{13, 131072}}});
        writer.append({2, 200, 8, true, {}});
        writer.commit();
    }
    auto reader = WindowIndexReader::open(folder.path(), kUuid);
    ASSERT_TRUE(reader);
    WindowSegment segment;
    int segments = 0;
    while (reader->next(segment, WindowIndexReader::Windows::Skip)) {
        ++segments;
    }
    EXPECT_EQ(segments, 3);
    reader->rewind();
    ASSERT_TRUE(reader->next(segment, WindowIndexReader::Windows::Read));
    EXPECT_FALSE(segment.last);
    ASSERT_EQ(segment.windows.size(), 2U);
    EXPECT_EQ(segment.windows[1].key, 12U);
    EXPECT_EQ(segment.windows[1].offset, 65536U);
    EXPECT_FALSE(WindowIndexReader::open(folder.path(), "another drive"));
}

} // namespace

} // namespace ferrobank::drive
