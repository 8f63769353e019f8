// The session without a window: entries, choice of frames, loads and import.
#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/model/ImportSession.h"
#include "toolboxes/importData/sequence/FileFilter.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace torvex;

namespace {

const VolumeParams kStart = VolumeParams::resetValues();

// Gray images (PNG or BMP by the name) of one value each, so a frame tells its file.
void writeImages(const QString& pattern, std::initializer_list<int> values)
{
    for (int value : values) test::writeGrayImage(pattern.arg(value), 6, 4, value);
}

std::vector<int> frameValues(const std::optional<NdArray>& stack)
{
    std::vector<int> values;
    for (int64_t i = 0; stack && i < stack->extent(0); ++i) values.push_back(int(stack->index(i).minMax().first));
    return values;
}

class Session : public ::testing::Test {
protected:
    ImportSession session;
    QTemporaryDir dir;
    AppContext context;
    WorkspaceManager& workspace = *context.get_component("workspace_manager");

    QString rawFile(const QString& name, qsizetype bytes, char fill)
    {
        return test::writeFile(dir.filePath(name), QByteArray(bytes, fill));
    }
    // What the window does with a raw file: open, decode, transfer, make the entry.
    void openVolume(const QString& path, const VolumeParams& panel)
    {
        session.openRawFile(path);
        session.volume = panel;
        session.decode();
        session.transfer();
        session.addEntry(session.entries.uniqueName("cdata"), Mode::VolumeData, session.transferedData, std::nullopt);
    }
    // What the window does with a filter: apply it, load, and take the stack.
    void filterAndLoad(const QString& wildcard)
    {
        session.applyFilter(wildcardPattern(wildcard), true);
        session.startLoad();
        ASSERT_TRUE(test::waitUntil([&] { return session.imageSequence.has_value(); }));
    }
    void openFolder(const QString& folder, const QString& wildcard)
    {
        session.resetSource();
        session.openFolder(folder);
        filterAndLoad(wildcard);
        session.addEntry(session.entries.uniqueName("data_imgs"), Mode::ImageSequence, session.selectedimageSequence,
                         session.filteredList);
    }
    void SetUp() override
    {
        QObject::connect(&session.load, &ImageLoad::finished, &session, &ImportSession::acceptLoad);
    }
};

} // namespace

TEST_F(Session, EachRawLoadIsAnEntryThatComesBackWholeWhateverHappensOnDisk)
{
    const QString first = rawFile("first.raw", 400 * 640, 5), second = rawFile("second.raw", 2 * 8 * 6 * 2, 1);
    openVolume(first, kStart);
    openVolume(second, {.layout = {"16-bit Unsigned", 0, 0, 8, 6, 2}, .transfer = {.hflip = true}});
    ASSERT_EQ(session.entries.size(), 2);
    EXPECT_EQ(session.entries.current(), 1);

    const DataEntry firstEntry = session.entries.find(0)->record;
    ASSERT_TRUE(session.selectEntry(0));
    EXPECT_EQ(session.readedBinary->constData(), firstEntry.readedBinary->constData()); // shared, not copied
    EXPECT_TRUE(session.transferedData->sharesStorageWith(*firstEntry.data));
    EXPECT_EQ(session._current_file_path, first);
    EXPECT_EQ(firstEntry.params, kStart);

    ASSERT_TRUE(session.selectEntry(1));
    EXPECT_EQ(session.transferedData->shape(), (Shape{2, 6, 8, 1}));
    EXPECT_FALSE(session.selectEntry(2)); // a row that has no entry yet

    // Each entry holds its own file's map: with its file deleted and replaced
    // on disk, an entry still imports its own bytes.
    ASSERT_TRUE(QFile::remove(first));
    test::writeFile(first, QByteArray(400 * 640, 1));
    session.importEntry(0, "kept", Mode::VolumeData, workspace, "DHWC", false);
    EXPECT_EQ(workspace.get_workspace_data().at("kept").minMax(), std::make_pair(5.0, 5.0));
}

TEST_F(Session, TheCurrentEntryFollowsChangesButNotWhileANewSourceWaits)
{
    openVolume(rawFile("v.raw", 400 * 640, 5), kStart);
    session.volume.transfer.permute = "1,0,2";
    const VolumeParams panel = session.volume;
    session.transfer();
    session.updateCurrentEntry();
    EXPECT_EQ(session.entries.find(0)->record.data->shape(), (Shape{640, 1, 400, 1}));
    EXPECT_EQ(session.entries.find(0)->record.params, panel);

    session.openRawFile(rawFile("w.raw", 10, 1)); // waits for its own entry
    session.volume = kStart;
    session.updateCurrentEntry();
    EXPECT_EQ(session.entries.find(0)->record.params, panel);
    EXPECT_TRUE(session.entries.find(0)->record.readedBinary->size() == 400 * 640);
}

TEST_F(Session, ChecksChooseFramesWithoutCopying)
{
    writeImages(dir.filePath("img%1.png"), {10, 11, 12, 13});
    openFolder(dir.path(), "*.png");
    const NdArray stack = *session.imageSequence;
    ASSERT_TRUE(session.setChecks({0, 2}));
    session.takeChecked();
    EXPECT_EQ(frameValues(session.selectedimageSequence), (std::vector<int>{10, 12}));
    EXPECT_EQ(session.selectedimageSequence->index(1).data(), stack.index(2).data());

    session.checkRange(2, 3); // the indexes it checks, and the entry's record of them, are the window test's
    EXPECT_EQ(frameValues(session.selectedimageSequence), (std::vector<int>{11, 12}));

    session.checkAll();
    EXPECT_EQ(session.selectedimageSequence->data(), stack.data());

    session.resetSource();
    EXPECT_FALSE(session.setChecks({0}));
    EXPECT_THROW(session.checkRange(1, 1), std::runtime_error);
}

// The fault this model was built to end: an entry whose list came from one
// folder and filter must never show or import another folder's images.
TEST_F(Session, ASequenceEntryKeepsItsOwnListStackAndImportAcrossFolders)
{
    QTemporaryDir a, b;
    writeImages(a.filePath("slice%1.png"), {10, 11, 12});
    writeImages(a.filePath("other%1.bmp"), {100, 101});
    writeImages(b.filePath("b%1.png"), {200, 201});

    openFolder(a.path(), "*");
    EXPECT_EQ(session.imageSequence->extent(0), 5);
    filterAndLoad("*.png"); // a new filter on the same entry
    openFolder(b.path(), "*");
    ASSERT_EQ(session.entries.size(), 2);

    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(session.selectEntry(0));
        EXPECT_EQ(session.filteredList->filter(".png").size(), 3);
        EXPECT_EQ(frameValues(session.imageSequence), (std::vector<int>{10, 11, 12}));
        EXPECT_EQ(frameValues(session.selectedimageSequence), (std::vector<int>{10, 11, 12}));
        EXPECT_EQ(session.checkedIndexes, (QList<int>{0, 1, 2}));
        ASSERT_TRUE(session.selectEntry(1));
        EXPECT_EQ(frameValues(session.imageSequence), (std::vector<int>{200, 201}));
    }

    session.selectEntry(0);
    session.setChecks({0, 2});
    session.takeChecked();
    session.updateCurrentEntry();
    session.selectEntry(1);
    session.importEntry(0, "data_imgs", Mode::ImageSequence, workspace, "DHWC", false);
    EXPECT_EQ(frameValues(workspace.get_workspace_data().at("data_imgs")), (std::vector<int>{10, 12}));
}

TEST_F(Session, ImportHandsTheEntryOverInTheChosenAxisOrder)
{
    int changes = 0;
    QObject::connect(&workspace, &WorkspaceManager::workspaceChanged, [&] { ++changes; });
    openVolume(rawFile("v.raw", 400 * 640, 5), kStart);

    session.importEntry(0, "cdata", Mode::VolumeData, workspace, "DHWC", false);
    const NdArray dhwc = workspace.get_workspace_data().at("cdata");
    EXPECT_EQ(dhwc.shape(), (Shape{1, 640, 400}));
    EXPECT_FALSE(dhwc.sharesStorageWith(*session.transferedData)); // the one copy
    session.importEntry(0, "view", Mode::VolumeData, workspace, "HWCD", true);
    EXPECT_TRUE(workspace.get_workspace_data().at("view").sharesStorageWith(*session.transferedData));
    EXPECT_EQ(changes, 2);

    session.resetSource();
    EXPECT_EQ(test::failure([&] { session.importEntry(1, "none", Mode::ImageSequence, workspace, "DHWC", false); }),
              "No image sequence to import");
}
