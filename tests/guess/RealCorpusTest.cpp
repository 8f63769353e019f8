// The guess on raw files written from real photographs, scans and elevation
// maps (names without hints), scored by kind of file beside a guess from the
// file size alone. TORVEX_CORPUS_MISSES=1 lists the files it gets wrong.
#include "CorpusScore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace torvex;

TEST(RealCorpus, MostRawFilesFromRealPicturesGuessFullyRight)
{
    QTemporaryDir dir;
    const std::vector<corpus::Truth> truths = corpus::write(dir.path());
    ASSERT_FALSE(truths.empty());
    const corpus::Score score = corpus::score(dir.path(), truths, qEnvironmentVariableIsSet("TORVEX_CORPUS_MISSES"));
    std::printf("%s", qPrintable(score.table()));
    EXPECT_GE(score.all.share(), 0.85); // 88 of 101 when written
    EXPECT_GE(score.all.share(), 2 * score.all.baselineShare());
}
