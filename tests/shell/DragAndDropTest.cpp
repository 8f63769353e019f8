// Drops of local files and folders choose the mode by themselves.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

// The window with its drag handlers in reach: Qt delivers a drop only to the
// widget that accepted the drag's entry, which a test has no real drag for.
struct DropTarget : ImportData {
    using ImportData::ImportData;
    using ImportData::dragEnterEvent;
    using ImportData::dropEvent;
};

class Drops : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString raw = test::writeFile(dir.filePath("scan"), QByteArray(400 * 640, '\x02'));
    QString png = test::writeFile(dir.filePath("B.PNG"), QByteArray("not really a png"));
    QString other = test::writeFile(dir.filePath("a.dat"), QByteArray("x"));
    QString folder = [this] {
        QDir(dir.path()).mkdir("sub");
        return dir.filePath("sub");
    }();

    // Hands `urls` to a drag handler of the window as an event of type E;
    // returns whether the window accepted it.
    template <class E>
    static bool deliver(DropTarget& w, void (DropTarget::*handler)(E*), const QList<QUrl>& urls)
    {
        QMimeData mime;
        mime.setUrls(urls);
        E event(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.setAccepted(false);
        (w.*handler)(&event);
        return event.isAccepted();
    }
    static bool drop(DropTarget& w, const QList<QUrl>& urls) { return deliver<QDropEvent>(w, &DropTarget::dropEvent, urls); }
    static bool enter(DropTarget& w, const QList<QUrl>& urls)
    {
        return deliver<QDragEnterEvent>(w, &DropTarget::dragEnterEvent, urls);
    }
    static QUrl local(const QString& path) { return QUrl::fromLocalFile(path); }
    QString status(DropTarget& w) { return w.ui->statusbar->currentMessage(); }
};

} // namespace

TEST_F(Drops, RoutesByWhatIsDropped)
{
    DropTarget w;
    EXPECT_TRUE(drop(w, {local(raw)}));
    EXPECT_EQ(w.ui->comboBox_outputType->currentIndex(), 0);
    EXPECT_TRUE(w.readedBinary.has_value());

    EXPECT_TRUE(drop(w, {local(png)})); // capital extension still an image
    EXPECT_EQ(w.ui->comboBox_outputType->currentIndex(), 1);
    EXPECT_EQ(w.fileList, QStringList{png});
    EXPECT_FALSE(w.readedBinary.has_value());

    EXPECT_TRUE(drop(w, {local(other), local(raw)})); // two files: images, sorted
    EXPECT_EQ(w.fileList, (QStringList{other, raw}));

    EXPECT_TRUE(drop(w, {local(folder), local(other)})); // files win over folders
    EXPECT_EQ(w.fileList, QStringList{other});

    EXPECT_TRUE(drop(w, {local(folder), local(dir.path())})); // first folder only
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), folder);
}

TEST_F(Drops, NothingUsableIsIgnoredAndKeepsTheSource)
{
    DropTarget w(nullptr, nullptr, {}, raw);
    EXPECT_FALSE(drop(w, {QUrl("https://example.org/a.png")}));
    EXPECT_EQ(status(w), "Error: No valid files or folders");
    EXPECT_FALSE(drop(w, {local(dir.filePath("gone.raw"))}));
    EXPECT_TRUE(w.readedBinary.has_value());
    EXPECT_FALSE(drop(w, {}));

    EXPECT_TRUE(enter(w, {QUrl("https://example.org/a.png"), local(dir.filePath("gone")), local(raw)}));
    EXPECT_FALSE(enter(w, {QUrl("https://example.org/a.png")}));
}
