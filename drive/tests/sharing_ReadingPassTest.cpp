#include "sharing/ReadingPass.h"
#include "testing/ScanVolume.h"

#include <fcntl.h>
#include <unistd.h>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::kMiB;
using testing::randomBytes;
using testing::writeFile;

class Reading : public testing::ScanVolume {
protected:
    [[nodiscard]] ReadingResult read(const std::stop_token& stop = {}) const
    {
        ReadingSettings settings;
        settings.root = root();
        settings.processorShare = 1;
        return readAllFiles(settings, stop);
    }

    /// Overwrites bytes that lie in the image as they are, because nothing is compressed.
    void damage(const std::string& bytes)
    {
        volume().unmount();
        const std::string image = testing::readFile(volume().image());
        const std::size_t place = image.find(bytes);
        ASSERT_NE(place, std::string::npos);
        const int file = ::open(volume().image().c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_EQ(::pwrite(file, "damage", 6, static_cast<off_t>(place)), 6);
        ASSERT_EQ(::fsync(file), 0);
        ::close(file);
        volume().mount();
    }
};

TEST_F(Reading, soundFilesAreReadOnceEach)
{
    writeFile(root() / "a", randomBytes(3 * kMiB + 5, 1));
    writeFile(root() / "b", "tiny");
    fs::create_hard_link(root() / "a", root() / "c");
    const ReadingResult result = read();
    EXPECT_EQ(result.files, 2U);
    EXPECT_EQ(result.bytes, 3 * kMiB + 9);
    EXPECT_EQ(result.unreadableFiles, 0U);
    EXPECT_FALSE(result.cancelled);
    EXPECT_EQ(result.error, "");
}

TEST_F(Reading, damagedBlockIsFoundThoughItIsInMemory)
{
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "sound", randomBytes(kMiB, 2));
    writeFile(root() / "sub/line\nbreak", content);
    damage(content.substr(512 * 1024, 64));
    static_cast<void>(testing::readFile(root() / "sound"));
    const ReadingResult result = read();
    EXPECT_EQ(result.unreadableFiles, 1U);
    EXPECT_EQ(result.unreadable, std::vector<std::string>{"sub/line\nbreak"});
    EXPECT_EQ(result.files, 2U);
}

TEST_F(Reading, holesAreNotRead)
{
    writeFile(root() / "a", randomBytes(8192, 1));
    fs::resize_file(root() / "a", std::uintmax_t{4} << 40U);
    const ReadingResult result = read();
    EXPECT_EQ(result.bytes, 8192U);
}

TEST_F(Reading, passThatWasEndedContinuesAndFindsTheDamageOfItsFirstPartAgain)
{
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "0 damaged", content);
    for (unsigned number = 1; number <= 8; ++number) {
        writeFile(root() / std::to_string(number), randomBytes(kMiB, number + 10));
    }
    damage(content.substr(512 * 1024, 64));
    ReadingSettings settings;
    settings.root = root();
    settings.memory = index();
    settings.processorShare = 1;
    std::stop_source stop;
    settings.onProgress = [&](std::uint64_t done) {
        if (done >= 5 * kMiB) {
            stop.request_stop();
        }
    };
    const ReadingResult first = readAllFiles(settings, stop.get_token());
    EXPECT_TRUE(first.cancelled);
    EXPECT_LT(first.files, 9U);
    settings.onProgress = {};
    const ReadingResult rest = readAllFiles(settings, {});
    EXPECT_FALSE(rest.cancelled);
    EXPECT_GT(rest.files, 0U);
    EXPECT_LT(rest.files, 9U) << "it began anew";
    EXPECT_EQ(rest.unreadable, std::vector<std::string>{"0 damaged"});
    EXPECT_EQ(readAllFiles(settings, {}).files, 9U) << "a complete pass leaves nothing to continue";
}

TEST_F(Reading, fileCountsAsReadableWhenItIsReplacedOrGone)
{
    const std::string content = randomBytes(kMiB, 1);
    writeFile(root() / "a", content);
    EXPECT_TRUE(isReadable(root(), "a"));
    damage(content.substr(512 * 1024, 64));
    EXPECT_FALSE(isReadable(root(), "a"));
    fs::remove(root() / "a");
    EXPECT_TRUE(isReadable(root(), "a"));
    writeFile(root() / "a", content);
    EXPECT_TRUE(isReadable(root(), "a"));
    EXPECT_FALSE(isReadable(root(), std::string(5000, 'x'))) << "nobody has looked";
}

TEST_F(Reading, listOfUnreadableFilesKeepsEveryByteOfTheirNames)
{
    const std::vector<std::string> files{"line\nbreak", "caf\xe9", "a b"};
    const fs::path list = root().parent_path() / "list";
    writeUnreadableList(list, files);
    EXPECT_EQ(readUnreadableList(list), files);
    writeUnreadableList(list, {});
    EXPECT_TRUE(readUnreadableList(list).empty());
    EXPECT_TRUE(readUnreadableList(root() / "none").empty());
}

TEST_F(Reading, stopEndsIt)
{
    writeFile(root() / "a", randomBytes(8 * kMiB, 1));
    std::stop_source stop;
    stop.request_stop();
    const ReadingResult result = read(stop.get_token());
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.bytes, 0U);
}

TEST_F(Reading, missingDriveIsAnError)
{
    ReadingSettings settings;
    settings.root = root() / "none";
    EXPECT_NE(readAllFiles(settings, {}).error, "");
}

} // namespace

} // namespace ferrobank::drive
