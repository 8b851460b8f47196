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

using Reading = testing::ScanVolume;

TEST_F(Reading, soundFilesAreReadOnceEach)
{
    writeFile(root() / "a", randomBytes(3 * kMiB + 5, 1));
    writeFile(root() / "b", "tiny");
    fs::create_hard_link(root() / "a", root() / "c");
    const ReadingResult result = readAllFiles(root(), 1, {});
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
    volume().unmount();
    // The bytes lie in the image as they are, because nothing is compressed.
    const std::string image = testing::readFile(volume().image());
    const std::size_t place = image.find(content.substr(512 * 1024, 64));
    ASSERT_NE(place, std::string::npos);
    const int file = ::open(volume().image().c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::pwrite(file, "damage", 6, static_cast<off_t>(place)), 6);
    ASSERT_EQ(::fsync(file), 0);
    ::close(file);
    volume().mount();
    static_cast<void>(testing::readFile(root() / "sound"));
    const ReadingResult result = readAllFiles(root(), 1, {});
    EXPECT_EQ(result.unreadableFiles, 1U);
    EXPECT_EQ(result.unreadable, std::vector<std::string>{"sub/line\\nbreak"});
    EXPECT_EQ(result.files, 2U);
}

TEST_F(Reading, holesAreNotRead)
{
    writeFile(root() / "a", randomBytes(8192, 1));
    fs::resize_file(root() / "a", std::uintmax_t{4} << 40U);
    const ReadingResult result = readAllFiles(root(), 1, {});
    EXPECT_EQ(result.bytes, 8192U);
}

TEST_F(Reading, stopEndsIt)
{
    writeFile(root() / "a", randomBytes(8 * kMiB, 1));
    std::stop_source stop;
    stop.request_stop();
    const ReadingResult result = readAllFiles(root(), 1, stop.get_token());
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.bytes, 0U);
}

TEST_F(Reading, missingDriveIsAnError)
{
    EXPECT_NE(readAllFiles(root() / "none", 1, {}).error, "");
}

} // namespace

} // namespace ferrobank::drive
