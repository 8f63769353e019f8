// A file whose name is not valid UTF-8: Qt cannot list or open it, so the tool names it and says why.
#include "toolboxes/importData/volume/FileNameText.h"
#include "toolboxes/importData/volume/RawFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace torvex;

TEST(FileNameText, ANameNotValidUtf8IsNamedAndExplainedAsQtCannotOpenIt)
{
    QTemporaryDir dir;
    const QByteArray folder = QFile::encodeName(dir.path());
    for (const char* name : {"/bad\xff\n.raw", "/good\xef\xbf\xbd.raw"}) // the second holds a real U+FFFD
        ::close(::open((folder + name).constData(), O_WRONLY | O_CREAT, 0644));
    EXPECT_EQ(unreachableNames(dir.path()), QStringList{"bad\\xff\\n.raw"});
    const QString good = dir.filePath(u"good\uFFFD.raw"_qs), bad = dir.filePath(u"bad\uFFFD\n.raw"_qs);
    EXPECT_EQ(unreachableNameReason(good) + unreachableNameReason(dir.filePath("missing.raw")), "");
    EXPECT_NO_THROW(MappedFile::open(good));
    EXPECT_THROW(try { MappedFile::open(bad); } catch (const std::runtime_error& e) {
        EXPECT_TRUE(QString(e.what()).contains("not valid UTF-8")) << e.what();
        throw;
    }, std::runtime_error);
    EXPECT_EQ(printablePath(bad.mid(folder.size())), "/bad\\ufffd\\n.raw");
    ::unlink((folder + "/bad\xff\n.raw").constData()); // Qt cannot remove it
}
