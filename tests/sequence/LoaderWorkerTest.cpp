#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/ImageLoaderWorker.h"

#include <gtest/gtest.h>

using namespace torvex;

struct Outcome {
    int ends = 0, progressCount = 0;
    bool finished = false;
    NdArray stack;
    QString error;
};

static Outcome load(const QStringList& names, bool cancelAtFirstProgress = false)
{
    QStringList paths;
    for (const QString& name : names) paths.append(sequenceFile(name));
    _ImageLoaderWorker worker(7, paths);
    Outcome out;
    QObject::connect(&worker, &_ImageLoaderWorker::progress, [&] {
        ++out.progressCount;
        if (cancelAtFirstProgress) worker.cancel();
    });
    QObject::connect(&worker, &_ImageLoaderWorker::finished, [&](int id, const NdArray& stack) {
        EXPECT_EQ(id, 7);
        ++out.ends, out.finished = true, out.stack = stack;
    });
    QObject::connect(&worker, &_ImageLoaderWorker::error, [&](int id, const QString& error) {
        EXPECT_EQ(id, 7);
        ++out.ends, out.error = error;
    });
    worker.run();
    EXPECT_LE(out.ends, 1);
    return out;
}

TEST(ImageLoaderWorker, StacksImagesAndPlaceholdersInOneChannelCount)
{
    const Outcome out = load({"gray8.png", "text.txt", "gray16.png"});
    ASSERT_TRUE(out.finished) << out.error.toStdString();
    EXPECT_EQ(out.stack.shape(), (Shape{3, 4, 5}));
    EXPECT_EQ(out.progressCount, 3);
    const std::vector<int> px = bytesOf(out.stack);
    EXPECT_EQ(px[0], 3);    // 8-bit kept
    EXPECT_EQ(px[20], 18);  // placeholder background, gray
    EXPECT_EQ(px[59], 255); // 16-bit stretched
    // Only unreadable files: placeholders on the default canvas.
    EXPECT_EQ(load({"empty.png", "missing.png"}).stack.shape(), (Shape{2, 256, 256, 3}));
}

TEST(ImageLoaderWorker, MismatchedChannelsEmptyListsAndCancelling)
{
    EXPECT_FALSE(load({"gray8.png", "gray_alpha.png"}).error.isEmpty());
    const Outcome empty = load({});
    EXPECT_FALSE(empty.error.isEmpty());
    EXPECT_EQ(empty.progressCount, 0);
    // Cancelled during the first pass: nothing more is sent.
    const Outcome cancelled = load({"gray8.png", "rgb.png", "gray16.png", "text.txt"}, true);
    EXPECT_EQ(cancelled.ends, 0);
    EXPECT_EQ(cancelled.progressCount, 1);
}
