// Raw files mapped rather than read: lifetime of the map, files cut while
// open, and passes over a volume that report progress and can be stopped.
#include "toolboxes/importData/volume/RawDecoder.h"
#include "toolboxes/importData/volume/RawFile.h"

#include "../support/TempFiles.h"

#include <QFile>

#include <sys/stat.h>

using namespace torvex;

namespace {

constexpr int kSide = 1024; // frames of 1 MiB: many pages each
const RawLayout kFrames{.imgType = "8-bit", .width = kSide, .height = kSide, .frame = 4, .readOrder = "C"};

// Four frames of 1 MiB, frame i filled with i + 1.
QString writeFrames(const QTemporaryDir& dir)
{
    QByteArray bytes;
    for (char i = 1; i <= 4; ++i) bytes += QByteArray(kSide * kSide, i);
    return test::writeFile(dir.filePath("frames.raw"), bytes);
}

// A file cut while open: the cut part reads as zeros, whether a frame is shown
// or a whole copy runs over it, and the map says the file changed.
TEST(MappedFile, AFileCutWhileOpenReadsZerosAndSaysSo)
{
    QTemporaryDir dir;
    const QString path = writeFrames(dir);
    const std::shared_ptr<const MappedFile> file = MappedFile::open(path);
    const NdArray stack = *decodeRawVolume(file->bytes(), kFrames);
    EXPECT_FALSE(file->changedOnDisk());
    ASSERT_TRUE(QFile::resize(path, kSide * kSide + 100)); // frame 1 and a bit of frame 2 stay
    int64_t chunks = 0;
    const NdArray copy = copyWithProgress(stack, [&](int64_t, int64_t) { return ++chunks > 0; });
    EXPECT_EQ(copy.index(0).minMax(), std::make_pair(1.0, 1.0));
    EXPECT_EQ(copy.index(1).minMax(), std::make_pair(0.0, 2.0));
    EXPECT_EQ(copy.index(3).minMax(), std::make_pair(0.0, 0.0));
    EXPECT_EQ(stack.index(2).minMax(), std::make_pair(0.0, 0.0));
    EXPECT_TRUE(file->changedOnDisk());
    EXPECT_TRUE(file->changedMessage().contains("changed on disk while open"));
    EXPECT_GT(chunks, 1);
}

// Stopped passes: copies throw, a save leaves neither a new file nor a changed
// old one. The map outlives the opener while arrays made over it live.
TEST(Progress, CancelledPassesLeaveNothingBehind)
{
    QTemporaryDir dir;
    std::shared_ptr<const MappedFile> file = MappedFile::open(writeFrames(dir));
    const NdArray stack = *decodeRawVolume(file->bytes(), kFrames);
    const auto stopAtHalf = [](int64_t done, int64_t total) { return done * 2 < total; };
    EXPECT_THROW(copyWithProgress(stack, stopAtHalf), Cancelled);
    for (const RawLayout& copied : {RawLayout{.imgType = "1-bit Bitmap", .width = kSide, .height = 8, .frame = 4096},
                                    RawLayout{.imgType = "32-bit ARGB", .width = kSide, .height = kSide / 4, .frame = 4,
                                              .byteOrder = ByteOrder::Little, .colorOrder = "ABCABC"}})
        EXPECT_THROW(decodeRawVolume(file->bytes(), copied, stopAtHalf), Cancelled) << copied.imgType.toStdString();
    file.reset(); // the views alone hold the map now
    const QString fresh = dir.filePath("fresh.npy"), old = test::writeFile(dir.filePath("old.npy"), "earlier");
    EXPECT_THROW(saveNpy(stack.transpose({1, 0, 2, 3}), fresh, stopAtHalf), Cancelled);
    EXPECT_THROW(saveNpy(stack, old, stopAtHalf), Cancelled);
    EXPECT_FALSE(QFile::exists(fresh));
    EXPECT_EQ(test::readFile(old), "earlier");
    saveNpy(stack, fresh, [](int64_t, int64_t) { return true; });
    EXPECT_EQ(test::readFile(fresh).right(kSide * kSide), QByteArray(kSide * kSide, 4));
    // What NumPy reads of a saved array is the function dialog test's.
    EXPECT_THROW(saveNpy(stack, dir.filePath("no/such/folder/x.npy")), std::runtime_error);
}

} // namespace
