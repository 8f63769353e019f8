#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/ImageLoaderWorker.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

struct Outcome {
    bool finished = false;
    NdArray stack;
    QString error;
    int progressCount = 0;
};

Outcome load(const QStringList& names, bool cancelAtFirstProgress = false)
{
    QStringList paths;
    for (const QString& name : names) paths.append(sequenceFile(name));
    _ImageLoaderWorker worker(7, paths);
    QSignalSpy progress(&worker, &_ImageLoaderWorker::progress);
    QSignalSpy finished(&worker, &_ImageLoaderWorker::finished);
    QSignalSpy error(&worker, &_ImageLoaderWorker::error);
    if (cancelAtFirstProgress) QObject::connect(&worker, &_ImageLoaderWorker::progress, [&] { worker.cancel(); });
    worker.run();

    Outcome out;
    out.progressCount = static_cast<int>(progress.size());
    EXPECT_LE(finished.size() + error.size(), 1);
    if (!finished.isEmpty()) {
        EXPECT_EQ(finished[0][0].toInt(), 7);
        out.finished = true;
        out.stack = finished[0][1].value<NdArray>();
    }
    if (!error.isEmpty()) {
        EXPECT_EQ(error[0][0].toInt(), 7);
        out.error = error[0][1].toString();
    }
    return out;
}

TEST(ImageLoaderWorker, GraySequenceStaysOneChannelWithGrayPlaceholders)
{
    const Outcome out = load({"gray8.png", "text.txt", "gray16.png"});
    ASSERT_TRUE(out.finished) << out.error.toStdString();
    EXPECT_EQ(out.stack.shape(), (Shape{3, 4, 5}));
    EXPECT_EQ(out.progressCount, 3);
    const std::vector<int> px = bytesOf(out.stack);
    EXPECT_EQ(px[0], 3);       // 8-bit kept
    EXPECT_EQ(px[20], 18);     // placeholder background, gray
    EXPECT_EQ(px[59], 255);    // 16-bit stretched
}

TEST(ImageLoaderWorker, OnlyUnreadableFilesGiveDefaultCanvases)
{
    const Outcome out = load({"empty.png", "missing.png"});
    ASSERT_TRUE(out.finished);
    EXPECT_EQ(out.stack.shape(), (Shape{2, 256, 256, 3}));
}

TEST(ImageLoaderWorker, MismatchedChannelCountsAndEmptyListsFail)
{
    EXPECT_FALSE(load({"gray8.png", "gray_alpha.png"}).error.isEmpty());
    const Outcome empty = load({});
    EXPECT_FALSE(empty.error.isEmpty());
    EXPECT_EQ(empty.progressCount, 0);
}

TEST(ImageLoaderWorker, CancelDuringFirstPassSendsNothingMore)
{
    const Outcome out = load({"gray8.png", "rgb.png", "gray16.png", "text.txt"}, true);
    EXPECT_FALSE(out.finished);
    EXPECT_TRUE(out.error.isEmpty());
    EXPECT_EQ(out.progressCount, 1);
}

} // namespace
