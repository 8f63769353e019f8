#pragma once

#include "toolboxes/importData/entries/DataEntry.h"
#include "toolboxes/importData/entries/VolumeParams.h"
#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"
#include "toolboxes/importData/model/ImportSession.h"
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/ui/FileDialogs.h"
#include "toolboxes/importData/ui/ImportDataForm.h"
#include "toolboxes/importData/volume/NdArray.h"

#include <QByteArray>
#include <QIcon>
#include <QList>
#include <QMainWindow>
#include <QPointF>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QLabel;
class QListWidgetItem;
class QMenu;
class QMessageBox;
class QThread;

namespace torvex {

class AppContext;
class PreviewImageItem;
struct LayoutOption;
class PreviewPlot;
class PreviewSurface;

// The Import Data window: turns a raw file or a list of images into named
// arrays, previews them and hands them to the host's workspace. What it holds
// lives in its ImportSession; its handlers read the widgets, call the session
// and draw what the session holds. Its members keep the names the rest of the
// host and its scripts know them by: the session's fields are reached under
// the same names here.
class ImportData : public QMainWindow {
    Q_OBJECT
    // First: the field references below are bound to it.
    ImportSession _session;

public:
    explicit ImportData(QWidget* parent = nullptr, AppContext* app_context = nullptr,
                        const QString& styleSheet = {}, const QString& filePath = {}, bool folderMode = false);
    ~ImportData() override;

    QSize minimumSizeHint() const override;
    static QIcon getIcon(const QString& iconName);
    ImportSession& session() { return _session; }

    // Fields, in the order the constructor sets them.
    std::unique_ptr<Ui::ImportData> ui;
    QWidget* parentApp = nullptr;
    AppContext* app_context = nullptr;
    std::optional<QByteArray>& readedBinary = _session.readedBinary;
    std::optional<NdArray>& prasedData = _session.prasedData;
    std::optional<NdArray>& transferedData = _session.transferedData;
    std::optional<QStringList>& fileList = _session.fileList;
    std::optional<QStringList>& filteredList = _session.filteredList;
    std::optional<NdArray>& imageSequence = _session.imageSequence;
    std::optional<NdArray>& selectedimageSequence = _session.selectedimageSequence;
    QList<int>& checkedIndexes = _session.checkedIndexes;
    bool& _pending_add_entry = _session._pending_add_entry;
    std::optional<QString>& _current_file_path = _session._current_file_path;
    QThread*& _loader_thread = _session.load._loader_thread;
    QPointer<_ImageLoaderWorker>& _loader_worker = _session.load._loader_worker;
    int& _load_id = _session.load._load_id;
    QLabel* _pixel_info_label = nullptr;
    QLabel* _bytes_badge = nullptr;
    PreviewSurface* preview_layoutWin = nullptr;
    PreviewImageItem* preview_ImgItem = nullptr;
    PreviewPlot* _preview_plot = nullptr;
    PreviewSurface* preview_layoutWin2 = nullptr;
    PreviewImageItem* preview_ImgItem2 = nullptr;
    PreviewPlot* _preview_plot2 = nullptr;

    // Opening files and folders.
    void _showFrameSlider(bool visible);
    void openFile(const QString& fileName);
    void openFileList(const QStringList& fileList);
    void onOpenFiles();
    void onOpenFolder();
    // Asks for a raw file and opens it as Volume Data, as a dropped one.
    void onOpenRawFile();
    // The folder of the current source, where the open dialogs start; empty with none.
    QString currentSourceFolder() const;
    // The dialogs the open handlers ask; a test puts stand-ins here.
    FileDialogs fileDialogs;

    // The menus of the tool (File, Data, View, Help), for the host's menu bar.
    // Their shortcuts work in whichever window holds the tool.
    const QList<QMenu*>& menus() const { return _menus; }
    // The preview of the current mode: one image pixel per screen pixel, or fitted.
    void onResetZoom();
    void onFitView();
    // A short guide to the panel's terms, beside the window.
    void onShowHelp();

    // Raw volume decoding, axis transfer, parameter panel and preview.
    void praseStackImages(const QString& imgType = {}, int offset = 0, int gap = 0, int width = 0, int height = 0,
                          int frame = 0, bool littleEndian = false, const QString& readOrder = "F",
                          const QString& colorOrder = "AABBCC", bool bigEndian = false);
    void _imgTransfer(const QString& permute, bool hflip, bool vflip);
    void onImgTransferChanged();
    void onTotalFrameChanged();
    void onParametersChanged();
    // Fills the panel with a layout guessed from the open raw file, and offers
    // the other likely ones under the button beside Guess.
    void onGuessLayout();
    void _applyGuessedLayout(const LayoutOption& layout);
    void _refreshPreview();
    void _onPreviewMouseMoved(const QPointF& pos, PreviewPlot* plot, const std::optional<NdArray>& frame);
    void _onVolumeMouseMoved(const QPointF& pos);
    void _onImageSeqMouseMoved(const QPointF& pos);
    void onFrameChanged();

    // Image list, selection and the background load.
    void _populateImageListWidget(const QStringList& file_list, bool checked_all = true,
                                  const QSet<int>& checked_indexes = {});
    void onFilterChanged();
    // Sorts the image files by the numbers in their names, or plainly again.
    void onNaturalOrderChanged();
    void onSelectAll();
    void onSelectionChanged();
    void onSelectedRangeChanged(const QString& pos);
    void onImageListRowChanged(int row);
    void _readImageSequence();
    void _setLoadingState(bool loading);
    void _onLoadProgress(int done, int total);
    void _onLoadFinished(int load_id, const NdArray& image_sequence);
    void _onLoadError(int load_id, const QString& msg);

    // Data entries, variable names, panel snapshots and import.
    QListWidgetItem* _addDataEntry(const QString& default_name, const QString& mode,
                                   const std::optional<NdArray>& data,
                                   const std::optional<QStringList>& file_list = std::nullopt);
    void _updateCurrentItemData();
    void onDataItemSelected(QListWidgetItem* current, QListWidgetItem* previous);
    QString _getUniqueVarName(const QString& base_name);
    void onValidate_item_text(QListWidgetItem* item);
    VolumeParams _captureVolumeParams();
    void _resetVolumeParams();
    void _restoreVolumeParams(const VolumeParams& params);
    void onImport();

    // The generated load function and its dialog.
    QString _gen_function(const LoadFunctionParams& p);
    void onGenerateFunction();
    void onSaveToFile(const QString& function_body);

signals:
    // The path of the source shown in the path line: a raw file, a folder, or
    // the folder of a list of images; empty with none.
    void sourceChanged(const QString& source);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // True while a handler sets many check boxes whose own reactions it replaces.
    bool _checkBatch = false;
    QList<QMenu*> _menus;
    QPointer<QMessageBox> _helpGuide;

    // The mode the window shows, from comboBox_outputType; none for another text.
    std::optional<Mode> _mode() const;
    void _buildMenus();
    // Shares the window's room between the controls and the preview, for any screen.
    void _layOutColumns();
    // The road of a single raw file, from a drop or the menu, once the old source is reset:
    // Volume Data, then openFile.
    void _openRawFile(const QString& path);
    // Colours the status strip after what it says.
    void _toneStatus(const QString& message);
    void _setAllChecks(const std::function<bool(int)>& checked);
    void _buildPreviewSurface(QWidget* holder, PreviewSurface*& surface, PreviewImageItem*& image,
                              PreviewPlot*& plot, const QColor& background, const QColor& text);
    void _showFrame(PreviewImageItem* item, const NdArray& frame);
    // Frame 1 of `count`, the label showing `countText`, with the frame handlers running.
    void _restartFrames(int count, const QString& countText);
    void _setFrameQuietly(int frame);
    std::optional<NdArray> _frameAt(const std::optional<NdArray>& stack) const;
    // Shows the row of an entry as the session holds it: name and record.
    void _showEntryRow(int row);
    void _showError(const std::exception& e);
    // Shows what the names of the filtered images tell beside the list:
    // numbers out of order (which enables the natural-order box) and, once
    // loaded, missing numbers. Returns those notes.
    QStringList _showSequenceNotes(bool loaded);
};

} // namespace torvex
