#include "exporting/Snapshot.h"
#include "testing/ExportVolume.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <functional>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::inventory;
using testing::kMiB;
using testing::plainBytes;
using testing::readFile;
using testing::runProgram;
using testing::writeFile;
using End = ExportResult::End;

/// A drive on which something changes after its snapshot was copied and before nobody can write any more.
class LateChanges : public testing::ExportVolume {
protected:
    void SetUp() override
    {
        ExportVolume::SetUp();
        if (!IsSkipped()) {
            fillDrive();
            writeFile(root() / "document", "version one");
            writeFile(root() / "folder/older", "VERSION TWO");
        }
    }

    /// An hour later than all files here were written, as most files on a drive are old: what was changed a
    /// moment before the snapshot is read again in any case.
    [[nodiscard]] ExportRequest requestLater() const
    {
        ExportRequest later = request();
        later.wallClock = [] {
            timespec time = wallClockNow();
            time.tv_sec += 3600;
            return time;
        };
        return later;
    }

    /// The whole of an export with `change` in the middle.
    ExportResult exportWith(const std::function<void()>& change)
    {
        Export copy(requestLater(), {}, {});
        const ExportResult first = copy.copy();
        EXPECT_EQ(first.end, End::Verified) << first.text;
        change();
        volume().remount("ro");
        const ExportResult second = copy.bringUpToDate(root());
        if (second.end == End::Verified) {
            copy.publish();
            copy.finish();
            EXPECT_EQ(inventory(this->copy()), inventory(root()));
        }
        return second;
    }

    static void setTimes(const fs::path& file, const timespec& modified)
    {
        const std::array<timespec, 2> times{modified, modified};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times.data(), 0), 0);
    }

    static timespec timeOf(const fs::path& file)
    {
        struct stat status{};
        EXPECT_EQ(::stat(file.c_str(), &status), 0);
        return status.st_mtim;
    }
};

TEST_F(LateChanges, fileRewrittenWithTheSameSizeIsCopiedAgain)
{
    const ExportResult result = exportWith([this] { std::ofstream(root() / "document") << "version two"; });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(result.copied, 1U);
    EXPECT_EQ(readFile(copy() / "document"), "version two");
}

TEST_F(LateChanges, fileRewrittenWithItsSizeAndItsTimeKeptIsCopiedAgain)
{
    const ExportResult result = exportWith([this] {
        const timespec before = timeOf(root() / "document");
        std::ofstream(root() / "document") << "version two";
        setTimes(root() / "document", before);
    });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(readFile(copy() / "document"), "version two");
}

TEST_F(LateChanges, olderFileRenamedOverIsCopiedAndItsOldNameGoes)
{
    const ExportResult result = exportWith([this] {
        setTimes(root() / "folder/older", timeOf(root() / "document"));
        fs::rename(root() / "folder/older", root() / "document");
    });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(readFile(copy() / "document"), "VERSION TWO");
    EXPECT_FALSE(fs::exists(copy() / "folder/older"));
}

TEST_F(LateChanges, fileWrittenThroughAMappingIsCopiedAgain)
{
    // Mapped and written before the snapshot, too: that page is writable when the snapshot comes.
    const int file = ::open((root() / "document").c_str(), O_RDWR | O_CLOEXEC);
    void* const memory = ::mmap(nullptr, 11, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(memory, MAP_FAILED);
    static_cast<char*>(memory)[0] = 'V';
    const ExportResult result = exportWith([memory, file] {
        static_cast<char*>(memory)[10] = '!';
        ::munmap(memory, 11);
        ::close(file);
    });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(readFile(copy() / "document"), "Version on!");
}

TEST_F(LateChanges, modesAndAttributesAloneAreBroughtOver)
{
    const ExportResult result = exportWith([this] {
        fs::permissions(root() / "document", fs::perms(0604));
        ASSERT_EQ(::setxattr((root() / "folder/older").c_str(), "user.note", "late", 4, 0), 0);
        ASSERT_EQ(::removexattr((root() / "plain.txt").c_str(), "user.note"), 0);
        fs::permissions(root() / "empty folder", fs::perms(0511));
    });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(result.copied, 0U) << "their contents are the same";
    std::string value(10, '\0');
    EXPECT_EQ(::getxattr((copy() / "folder/older").c_str(), "user.note", value.data(), value.size()), 4);
    EXPECT_EQ(::getxattr((copy() / "plain.txt").c_str(), "user.note", value.data(), value.size()), -1);
}

TEST_F(LateChanges, writtenAtTheMomentOfTheSnapshotIsComparedByContent)
{
    // The change time moves in steps of some milliseconds: a write before and one after the snapshot may
    // carry the same one. Here all files were written just now, and one is changed behind the file system's
    // back.
    writeFile(root() / "just now", "as it was");
    Export copy(request(), {}, {});
    ASSERT_EQ(copy.copy().end, End::Verified);
    writeFile(this->copy() / kIncompleteMark / "files/just now", "something");
    volume().remount("ro");
    const ExportResult result = copy.bringUpToDate(root());
    EXPECT_EQ(result.end, End::Verified) << result.text;
    copy.publish();
    EXPECT_EQ(readFile(this->copy() / "just now"), "as it was");
}

TEST_F(LateChanges, newMovedAndRemovedFilesAndFoldersAreFollowed)
{
    const ExportResult result = exportWith([this] {
        writeFile(root() / "new/deep/file", "new");
        fs::rename(root() / "locked", root() / "moved");
        fs::remove_all(root() / "line\nbreak");
        fs::remove(root() / "empty");
        fs::create_directory(root() / "empty");
        fs::remove(root() / "folder/older");
        fs::create_hard_link(root() / "document", root() / "folder/second name");
        fs::remove(root() / "link");
        fs::create_symlink("document", root() / "link");
    });
    EXPECT_EQ(result.end, End::Verified) << result.text;
}

TEST_F(LateChanges, changesInsideASubvolumeAreFollowed)
{
    ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (root() / "inner").string()}), 0);
    writeFile(root() / "inner/file", "before");
    writeFile(root() / "inner/same", "same");
    const ExportResult result = exportWith([this] { std::ofstream(root() / "inner/file") << "behind"; });
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(readFile(copy() / "inner/file"), "behind");
    EXPECT_EQ(result.copied, 1U);
}

TEST_F(LateChanges, untouchedDriveIsNotReadASecondTime)
{
    const ExportResult result = exportWith([] {});
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(result.copied, 0U);
}

TEST_F(LateChanges, copyThatSomebodyRemovedFromMeanwhileIsNotBelieved)
{
    const ExportResult result =
        exportWith([this] { fs::remove(copy() / kIncompleteMark / "files/document"); });
    EXPECT_EQ(result.end, End::Differences);
    EXPECT_NE(result.text.find("“document” is missing in the copy"), std::string::npos) << result.text;
}

} // namespace

} // namespace ferrobank::drive
