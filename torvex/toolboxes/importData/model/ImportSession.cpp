#include "toolboxes/importData/model/ImportSession.h"

#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/entries/OutputFormat.h"
#include "toolboxes/importData/sequence/FileFilter.h"
#include "toolboxes/importData/sequence/FramePages.h"
#include "toolboxes/importData/sequence/NumberedNames.h"
#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/sequence/ThreadHandOff.h"
#include "toolboxes/importData/volume/AxisTransfer.h"
#include "toolboxes/importData/volume/FileNameText.h"
#include "toolboxes/importData/volume/ImageTypes.h"
#include "toolboxes/importData/volume/RawDecoder.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace torvex {

namespace {

QList<int> firstRows(int64_t count)
{
    QList<int> rows(static_cast<qsizetype>(count));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

} // namespace

ImportSession::ImportSession(QObject* parent) : QObject(parent), load(this)
{
    // Arrives just before the stack it describes; a superseded load's is dropped.
    connect(&load, &ImageLoad::placeholders, this, [this](int load_id, const QMap<int, QString>& reasons) {
        if (load_id == load._load_id) placeholderFrames = reasons;
    });
}

void ImportSession::resetSource()
{
    readedBinary.reset();
    _mapped_file.reset();
    prasedData.reset();
    transferedData.reset();
    fileList.reset();
    filteredList.reset();
    imageSequence.reset();
    selectedimageSequence.reset();
    checkedIndexes.clear();
}

void ImportSession::openRawFile(const QString& path)
{
    try {
        _mapped_file = MappedFile::open(path);
        readedBinary = _mapped_file->bytes();
    } catch (...) {
        readedBinary.reset();
        _mapped_file.reset();
        throw;
    }
    _current_file_path = path;
    _pending_add_entry = true;
}

std::optional<QString> ImportSession::fileChangedNotice() const
{
    if (!_mapped_file || !_mapped_file->changedOnDisk()) return std::nullopt;
    return _mapped_file->changedMessage();
}

void ImportSession::openFolder(const QString& folder)
{
    QStringList files;
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Unsorted))
        files << folder + "/" + name;
    sortFiles(files, naturalOrder);
    fileList = files;
    unreachableFiles = unreachableNames(folder);
    _pending_add_entry = true;
}

void ImportSession::openFileList(const QStringList& paths)
{
    unreachableFiles.clear();
    QStringList files;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(files),
                 [](const QString& path) { return QFileInfo(path).isFile(); });
    sortFiles(files, naturalOrder);
    fileList = files;
    if (!files.isEmpty()) _pending_add_entry = true;
}

void ImportSession::setNaturalOrder(bool natural)
{
    naturalOrder = natural;
    if (fileList) sortFiles(*fileList, natural);
}

std::optional<QString> ImportSession::outOfOrderNotice() const
{
    QStringList names;
    for (const QString& path : filteredList.value_or(QStringList())) names << pythonBasename(path);
    names.removeDuplicates(); // the rows of a file's pages
    sortFiles(names, false);
    const auto pair = firstNumberedPairOutOfOrder(names);
    if (!pair) return std::nullopt;
    return "Numbered names out of order: " + pair->first + " sorts before " + pair->second;
}

std::optional<QString> ImportSession::missingFilesNotice() const
{
    QStringList names;
    for (const QString& path : filteredList.value_or(QStringList())) names << pythonBasename(path);
    names.removeDuplicates();
    const std::optional<MissingNumbers> gap = missingNumbers(names);
    if (!gap) return std::nullopt;
    return missingNumbersMessage(*gap);
}

std::optional<QString> ImportSession::unreachableFilesNotice() const
{
    if (unreachableFiles.isEmpty()) return std::nullopt;
    constexpr int shown = 3;
    return QString::number(unreachableFiles.size()) + " file(s) left out, as their names are not valid UTF-8 "
           "(rename them): " + unreachableFiles.mid(0, shown).join(", ") +
           (unreachableFiles.size() > shown ? ", …" : "");
}

void ImportSession::decode(const Progress& progress)
{
    if (!findImageType(volume.layout.imgType)) return;
    try {
        prasedData = decodeRawVolume(readedBinary.value_or(QByteArray()), volume.layout, progress);
    } catch (...) {
        prasedData.reset();
        throw;
    }
}

void ImportSession::transfer()
{
    keepDecoded();
    if (!prasedData) return;
    try {
        transferedData = transferAxes(*prasedData, volume.transfer.permute, volume.transfer.hflip, volume.transfer.vflip);
    } catch (...) {
        transferedData.reset();
        throw;
    }
}

void ImportSession::applyFilter(const QString& pattern, bool wildcard)
{
    if (!fileList) throw std::runtime_error("No files are open");
    filteredList = filterFiles(*fileList, pattern, wildcard);
    framePages.clear();
    if (reading.allPages) {
        PagedRows rows = everyPage(*filteredList);
        filteredList = std::move(rows.paths);
        framePages = std::move(rows.pages);
    }
    checkedIndexes = firstRows(filteredList->size());
    // The stacks belong to the previous list: choosing frames from them now
    // would pair this list's names with another list's images.
    imageSequence.reset();
    selectedimageSequence.reset();
}

void ImportSession::startLoad()
{
    imageSequence.reset();
    selectedimageSequence.reset();
    placeholderFrames.clear();
    load.start(filteredList.value_or(QStringList()), reading, framePages);
}

namespace {

std::optional<QString> placeholderMessage(const QMap<int, QString>& placeholders, const QStringList& files,
                                          const QList<int>& rows)
{
    QStringList names;
    for (int row : rows)
        if (placeholders.contains(row) && row < files.size()) names << pythonBasename(files[row]);
    if (names.isEmpty()) return std::nullopt;
    const QString shown = names.mid(0, 3).join(", ") + (names.size() > 3 ? ", ..." : "");
    return QString("%1 of %2 frames are placeholders for files that could not be read: %3")
        .arg(names.size())
        .arg(rows.size())
        .arg(shown);
}

} // namespace

std::optional<QString> ImportSession::placeholderNotice(int row) const
{
    const EntryStore::Entry* entry = entries.find(row);
    if (!entry || !entry->record.data) return std::nullopt;
    const DataEntry& record = entry->record;
    return placeholderMessage(entry->placeholderFrames, record.file_list.value_or(QStringList()),
                              record.checked_indexes.value_or(firstRows(record.data->extent(0))));
}

std::optional<QString> ImportSession::loadedPlaceholderNotice() const
{
    if (!imageSequence) return std::nullopt;
    return placeholderMessage(placeholderFrames, filteredList.value_or(QStringList()),
                              firstRows(imageSequence->extent(0)));
}

bool ImportSession::acceptLoad(int load_id, const NdArray& image_sequence)
{
    if (load_id != load._load_id) return false; // a superseded load
    markReceived();
    imageSequence = image_sequence;
    selectedimageSequence = image_sequence;
    // A new filter's stack belongs to the sequence entry that shows its list.
    const EntryStore::Entry* entry = entries.find(entries.current());
    if (entry && modeOfText(entry->record.mode) == Mode::ImageSequence) updateCurrentEntry();
    return true;
}

bool ImportSession::setChecks(const QList<int>& rows)
{
    if (!imageSequence) return false;
    checkedIndexes = rows;
    return true;
}

void ImportSession::takeChecked()
{
    if (imageSequence)
        selectedimageSequence =
            imageSequence->take(std::vector<int64_t>(checkedIndexes.begin(), checkedIndexes.end()));
}

void ImportSession::checkAll()
{
    if (!imageSequence) return;
    selectedimageSequence = imageSequence;
    checkedIndexes = firstRows(imageSequence->extent(0));
}

void ImportSession::checkRange(int first, int last)
{
    if (!imageSequence) throw std::runtime_error("No image sequence is loaded");
    selectedimageSequence = imageSequence->slice(0, first - 1, last);
    checkedIndexes.clear();
    for (int i = first - 1; i < last; ++i) checkedIndexes << i;
}

int ImportSession::addEntry(const QString& name, Mode mode, const std::optional<NdArray>& data,
                            const std::optional<QStringList>& file_list)
{
    DataEntry record{.mode = modeText(mode), .data = data, .file_list = file_list, .checked_indexes = checkedIndexes,
                     .image_sequence = imageSequence};
    if (mode == Mode::VolumeData) {
        record.readedBinary = readedBinary;
        record.mappedFile = _mapped_file;
        record.file_path = _current_file_path;
        record.params = volume;
    }
    const bool sequence = mode == Mode::ImageSequence;
    const int row = entries.add({name, record, sequence ? fileList : std::nullopt, sequence && naturalOrder,
                                 sequence ? reading : SequenceReading{}, sequence ? framePages : QList<FramePage>{},
                                 sequence ? placeholderFrames : QMap<int, QString>{}});
    entries.setCurrent(row);
    _pending_add_entry = false;
    return row;
}

void ImportSession::updateCurrentEntry()
{
    if (_pending_add_entry) return; // the data shown has no entry yet
    const EntryStore::Entry* entry = entries.find(entries.current());
    if (!entry) return;
    EntryStore::Entry updated = *entry;
    DataEntry& record = updated.record;
    // By the entry's own mode, never by the mode shown.
    if (modeOfText(record.mode) == Mode::VolumeData) {
        record.data = transferedData;
        record.readedBinary = readedBinary;
        record.mappedFile = _mapped_file;
        record.file_path = _current_file_path;
        record.params = volume;
    } else {
        record.data = selectedimageSequence;
        record.image_sequence = imageSequence;
        record.file_list = filteredList;
        record.checked_indexes = checkedIndexes;
        updated.fileList = fileList;
        updated.naturalOrder = naturalOrder;
        updated.reading = reading;
        updated.framePages = framePages;
        updated.placeholderFrames = placeholderFrames;
    }
    entries.write(entries.current(), updated);
}

const EntryStore::Entry* ImportSession::selectEntry(int row)
{
    entries.setCurrent(row);
    const EntryStore::Entry* entry = entries.find(row);
    if (!entry) return nullptr;
    const DataEntry& record = entry->record;
    if (modeOfText(record.mode) == Mode::VolumeData) {
        transferedData = record.data;
        readedBinary = record.readedBinary;
        _mapped_file = record.mappedFile;
        _current_file_path = record.file_path;
        return entry;
    }
    filteredList = record.file_list.value_or(QStringList());
    if (entry->fileList) fileList = entry->fileList; // its filter chooses from its own folder again
    naturalOrder = entry->naturalOrder;
    reading = entry->reading;
    framePages = entry->framePages;
    placeholderFrames = entry->placeholderFrames;
    imageSequence = record.image_sequence;
    selectedimageSequence = record.data;
    if (record.checked_indexes) checkedIndexes = *record.checked_indexes;
    else checkedIndexes = selectedimageSequence ? firstRows(selectedimageSequence->extent(0)) : QList<int>();
    return entry;
}

ImportSession::ImportSource ImportSession::importSource(int row, Mode shownMode) const
{
    const EntryStore::Entry* entry = entries.find(row);
    const std::optional<Mode> mode = entry ? modeOfText(entry->record.mode) : shownMode;
    const std::optional<NdArray> data = entry ? entry->record.data : std::nullopt;
    if (mode == Mode::VolumeData) {
        const std::optional<NdArray> volume = data ? data : transferedData;
        if (!volume) throw std::runtime_error("No volume data to import");
        return {*volume, true, entry ? entry->record.mappedFile : _mapped_file};
    }
    const std::optional<NdArray> sequence = data ? data : selectedimageSequence;
    if (mode != Mode::ImageSequence || !sequence) throw std::runtime_error("No image sequence to import");
    return {*sequence, false, nullptr};
}

NdArray ImportSession::importArray(const ImportSource& source, const QString& format, bool keepChannel,
                                   const Progress& progress)
{
    if (!source.volume) return source.array;
    NdArray out = reformatForImport(source.array, format, keepChannel, progress);
    if (source.file && source.file->changedOnDisk()) throw std::runtime_error(source.file->changedMessage().toStdString());
    return out;
}

void ImportSession::handOver(WorkspaceManager& workspace, const QString& name, const NdArray& array)
{
    std::map<QString, NdArray>& variables = workspace.get_workspace_data();
    variables.insert_or_assign(name, array);
    workspace.update_workspace_data(variables);
}

void ImportSession::importEntry(int row, const QString& name, Mode shownMode, WorkspaceManager& workspace,
                                const QString& format, bool keepChannel) const
{
    handOver(workspace, name, importArray(importSource(row, shownMode), format, keepChannel));
}

} // namespace torvex
