#pragma once

#include "toolboxes/importData/entries/VolumeParams.h"
#include "toolboxes/importData/model/EntryStore.h"
#include "toolboxes/importData/model/ImageLoad.h"
#include "toolboxes/importData/model/Mode.h"
#include "toolboxes/importData/volume/NdArray.h"
#include "toolboxes/importData/volume/Progress.h"
#include "toolboxes/importData/volume/RawFile.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace torvex {

class WorkspaceManager;

// Everything the Import Data tool holds, without a widget: the current source
// (raw bytes or image files), what was decoded from it, the image stack and
// its chosen frames, the entries and the current one, and the background load.
// The window reads its widgets, calls this, and draws what it holds. Fields
// keep the names the window has always shown them under.
class ImportSession : public QObject {
    Q_OBJECT
public:
    explicit ImportSession(QObject* parent = nullptr);

    std::optional<QByteArray> readedBinary;     // the raw file's bytes (mapped, not copied)
    std::shared_ptr<const MappedFile> _mapped_file; // the map readedBinary points into
    std::optional<NdArray> prasedData;          // those bytes decoded
    std::optional<NdArray> transferedData;      // ... after axis transfer: what is shown and imported
    std::optional<QStringList> fileList;        // candidate image files
    std::optional<QStringList> filteredList;    // those that pass the filter
    std::optional<NdArray> imageSequence;       // the stack of all filtered images
    std::optional<NdArray> selectedimageSequence; // the stack of the checked ones
    QList<int> checkedIndexes;                  // rows checked in the image list
    QMap<int, QString> placeholderFrames;       // rows of imageSequence drawn for files that are no image, and why
    bool _pending_add_entry = false;            // a new source waits for its entry
    std::optional<QString> _current_file_path;  // the raw file behind readedBinary
    bool naturalOrder = false;                  // image files in the natural order of their names
    QStringList unreachableFiles;               // names in the open folder that its listing left out
    // How the raw bytes are decoded and the decoded axes turned; the window's panel mirrors it.
    VolumeParams volume = VolumeParams::resetValues();
    SequenceReading reading;                    // how the image files are read
    QList<FramePage> framePages;                // with every page read: the page of each row of filteredList
    ImageLoad load;
    EntryStore entries;

    // A new source starts from nothing: the seven source fields and the checks.
    void resetSource();
    // Maps a raw file (see MappedFile); on failure no bytes are held and the
    // reason is thrown.
    void openRawFile(const QString& path);
    // "The file changed on disk while open: ..." when the current raw file
    // shrank since it was opened (its cut part reads as zeros).
    std::optional<QString> fileChangedNotice() const;
    // The regular files of a folder, sorted (see sortFiles).
    void openFolder(const QString& folder);
    // The regular files among `paths`, sorted (see sortFiles).
    void openFileList(const QStringList& paths);
    // Sorts the files in natural order, or plainly again; the filter must
    // then be applied anew.
    void setNaturalOrder(bool natural);

    // Decodes the raw bytes by the volume's layout; an unknown type changes
    // nothing. A failure or a cancel (see Progress) leaves no decoded array and is thrown.
    void decode(const Progress& progress = {});
    // The decoded array with the volume's permutation and flips applied to it
    // (views: no pixel is copied). A failure leaves none and is thrown.
    void transfer();
    // The decoded array shown as it is.
    void keepDecoded() { transferedData = prasedData; }

    // Filters the file list (see filterFiles) and checks every file that
    // passes, with every page read one row per page (see everyPage); the
    // stacks of the previous list go. Throws for a bad pattern and when no
    // files are open.
    void applyFilter(const QString& pattern, bool wildcard);
    // Starts loading the filtered files; their stack arrives with acceptLoad.
    void startLoad();
    // "Numbered names out of order: img10.png sorts before img2.png" when the
    // filtered names' plain order differs from their numbers' order.
    std::optional<QString> outOfOrderNotice() const;
    // "Missing 3 of 500 numbered files: 17, 18, 240" when the filtered names
    // are one numbered series with gaps.
    std::optional<QString> missingFilesNotice() const;
    // Which files of the open folder its listing left out, and why, when there are any.
    std::optional<QString> unreachableFilesNotice() const;

    // "2 of 40 frames are placeholders for files that could not be read:
    // a.png, b.png" when frames that importing the entry at `row` hands over
    // stand for files that are no image (the first three named).
    std::optional<QString> placeholderNotice(int row) const;
    // The same for the whole stack loaded last.
    std::optional<QString> loadedPlaceholderNotice() const;

    // Takes a load's stack, all of it chosen, into the current sequence entry
    // too; false for a superseded load.
    bool acceptLoad(int load_id, const NdArray& image_sequence);

    // Checks exactly these rows (in increasing order); false, and nothing
    // changed, when no stack is loaded.
    bool setChecks(const QList<int>& rows);
    // The frames of the checked rows become the chosen stack (no pixel copied).
    void takeChecked();
    // Checks every row of the stack.
    void checkAll();
    // Checks rows first - 1 to last - 1, counting from 1 as the range boxes do.
    // Throws when no stack is loaded.
    void checkRange(int first, int last);

    // Makes the entry of a new source under `name` from the current fields
    // and makes it current; a Volume Data entry keeps the volume's settings.
    int addEntry(const QString& name, Mode mode, const std::optional<NdArray>& data,
                 const std::optional<QStringList>& file_list);
    // Writes the current fields into the current entry, unless a new source
    // still waits for its own entry.
    void updateCurrentEntry();
    // Makes a row current and, if it holds an entry, brings back that entry's
    // data, source and checks. Returns the entry, or nullptr.
    const EntryStore::Entry* selectEntry(int row);

    // What importing the entry at `row` starts from; a row without an entry
    // starts from the current array of `shownMode`. Throws when there is none.
    struct ImportSource {
        NdArray array;
        bool volume = false;
        std::shared_ptr<const MappedFile> file; // the raw file the volume views, if any
    };
    ImportSource importSource(int row, Mode shownMode) const;
    // The array handed over, in the axis order of `format` (see
    // reformatForImport). Safe on any thread. Throws when the raw file
    // changed on disk meanwhile, so that no zeros pass for data.
    static NdArray importArray(const ImportSource& source, const QString& format, bool keepChannel,
                               const Progress& progress = {});
    // Hands the array of the entry at `row` to the workspace under `name`
    // (importSource, then importArray).
    void importEntry(int row, const QString& name, Mode shownMode, WorkspaceManager& workspace,
                     const QString& format, bool keepChannel) const;
    static void handOver(WorkspaceManager& workspace, const QString& name, const NdArray& array);
};

} // namespace torvex
