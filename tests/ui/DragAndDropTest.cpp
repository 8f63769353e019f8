// Drops of local files and folders choose the mode by themselves.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QDropEvent>
#include <QMimeData>

using namespace torvex;

namespace {

// The window with its drag handlers in reach: Qt delivers a drop only to the
// widget that accepted the drag's entry, which a test has no real drag for.
struct DropTarget : ImportData {
    using ImportData::ImportData;

    // Hands local paths (or other URLs) to the handler of E; whether the window accepted them.
    template <class E>
    bool deliver(const QStringList& paths)
    {
        QList<QUrl> urls;
        for (const QString& path : paths) urls << (path.startsWith('/') ? QUrl::fromLocalFile(path) : QUrl(path));
        QMimeData mime;
        mime.setUrls(urls);
        E event(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.setAccepted(false);
        if constexpr (std::is_same_v<E, QDropEvent>) dropEvent(&event);
        else dragEnterEvent(&event);
        return event.isAccepted();
    }
};

class Drops : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString raw = test::writeFile(dir.filePath("scan"), QByteArray(400 * 640, '\x02'));
    QString png = test::writeFile(dir.filePath("B.PNG"), "not really a png");
    QString other = test::writeFile(dir.filePath("a.dat"), "x");
    QString folder = QDir(dir.path()).mkdir("sub") ? dir.filePath("sub") : QString();
};

} // namespace

TEST_F(Drops, RouteByWhatIsDropped)
{
    // What is dropped; the mode it sets (0 a raw volume, 1 images); the source shown; the images listed.
    const struct { QStringList dropped; int mode; QString shown; QStringList listed; } rows[] = {
        {{raw}, 0, raw, {}},
        {{png}, 1, dir.path(), {png}},               // a capital extension is still an image
        {{raw, other}, 1, dir.path(), {other, raw}}, // several files: images, sorted
        {{folder, other}, 1, dir.path(), {other}},   // files win over folders
        {{folder, dir.path()}, 1, folder, {}},       // the first folder only
    };
    DropTarget w;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.dropped.join(", ").toStdString());
        EXPECT_TRUE(w.deliver<QDropEvent>(row.dropped));
        EXPECT_EQ(w.ui->comboBox_outputType->currentIndex(), row.mode);
        EXPECT_EQ(w.ui->lineEdit_files_folder->text(), row.shown);
        EXPECT_EQ(w.fileList.value_or(QStringList()), row.listed);
        EXPECT_EQ(w.readedBinary.has_value(), row.mode == 0);
    }
}

TEST_F(Drops, NothingUsableIsIgnoredAndKeepsTheSource)
{
    DropTarget w(nullptr, nullptr, {}, raw);
    EXPECT_FALSE(w.deliver<QDropEvent>({"https://example.org/a.png"}));
    EXPECT_EQ(w.ui->statusbar->currentMessage(), "Error: No valid files or folders");
    EXPECT_FALSE(w.deliver<QDropEvent>({dir.filePath("gone.raw")}));
    EXPECT_FALSE(w.deliver<QDropEvent>({}));
    EXPECT_TRUE(w.readedBinary.has_value());
    // A drag is welcome when it holds an existing local path.
    EXPECT_TRUE(w.deliver<QDragEnterEvent>({"https://example.org/a.png", dir.filePath("gone"), raw}));
    EXPECT_FALSE(w.deliver<QDragEnterEvent>({"https://example.org/a.png"}));
}
