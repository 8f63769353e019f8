// File names as lists and titles show them, and names Qt cannot give back to the system.
#include "toolboxes/importData/volume/FileNameText.h"
#include "toolboxes/importData/volume/RawFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace torvex;

TEST(FileNameText, ControlCharactersAndLostBytesAreEscapedAndAllElseKept)
{
    const std::pair<QString, QString> cases[] = {
        {"scan_400x640.raw", "scan_400x640.raw"},
        {u"é\\ü 日本.png"_qs, u"é\\ü 日本.png"_qs},
        {"line\nbreak\r\ttab.raw", "line\\nbreak\\r\\ttab.raw"},
        {QString("esc") + QChar(0x1b) + QChar(0x7f) + QChar(0x85), "esc\\x1b\\x7f\\x85"},
        {u"bad\uFFFD.raw"_qs, "bad\\ufffd.raw"},
    };
    for (const auto& [name, shown] : cases) EXPECT_EQ(printablePath(name), shown) << name.toStdString();
}

TEST(FileNameText, ANameNotValidUtf8IsNamedAndExplainedAsQtCannotOpenIt)
{
    QTemporaryDir dir;
    const QByteArray folder = QFile::encodeName(dir.path());
    for (const char* name : {"/bad\xff\n.raw", "/good\xef\xbf\xbd.raw"}) // the second is a real U+FFFD
        ::close(::open((folder + name).constData(), O_WRONLY | O_CREAT, 0644));
    EXPECT_EQ(unreachableNames(dir.path()), QStringList{"bad\\xff\\n.raw"});
    const QString good = dir.filePath(u"good\uFFFD.raw"_qs), bad = dir.filePath(u"bad\uFFFD\n.raw"_qs);
    EXPECT_EQ(unreachableNameReason(good), "");
    EXPECT_NO_THROW(MappedFile::open(good));
    EXPECT_EQ(unreachableNameReason(dir.filePath("plain.raw")), "");
    try {
        MappedFile::open(bad);
        ADD_FAILURE() << "opened " << bad.toStdString();
    } catch (const std::runtime_error& e) {
        EXPECT_TRUE(QString(e.what()).contains("not valid UTF-8")) << e.what();
    }
    ::unlink((folder + "/bad\xff\n.raw").constData()); // Qt cannot remove it
}
