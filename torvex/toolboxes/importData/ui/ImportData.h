#pragma once

#include "toolboxes/importData/entries/DataEntry.h"
#include "toolboxes/importData/entries/VolumeParams.h"
#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"
#include "toolboxes/importData/model/ImportSession.h"
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/ui/FileDialogs.h"
#include "toolboxes/importData/ui/ImportDataForm.h"
#include "toolboxes/importData/ui/StatusTone.h"
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
#include <vector>

class QLabel;
class QListWidgetItem;
class QMenu;
class QMessageBox;
class QSpinBox;
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
    // The dialogs the open handlers ask; a test puts stand-ins here.
    FileDialogs fileDialogs;

    // The menus of the tool (File, Data, View, Help), for the host's menu bar.
    // Their shortcuts work in whichever window holds the tool.
    const QList<QMenu*>& menus() const { return _menus; }

    // Raw volume decoding, axis transfer, parameter panel and preview.
    // Decode and transfer by the session's volume settings, which the panel mirrors.
    void praseStackImages();
    void _imgTransfer();
    void onImgTransferChanged();
    void onTotalFrameChanged();
    void onParametersChanged();
    void _refreshPreview();
    void _onPreviewMouseMoved(const QPointF& pos, PreviewPlot* plot, const std::optional<NdArray>& frame);
    void _onVolumeMouseMoved(const QPointF& pos);
    void _onImageSeqMouseMoved(const QPointF& pos);
    void onFrameChanged();

    // Image list, selection and the background load.
    void _populateImageListWidget(const QStringList& file_list, bool checked_all = true,
                                  const QSet<int>& checked_indexes = {});
    void onFilterChanged();
    void onSelectAll();
    void onSelectionChanged();
    void onSelectedRangeChanged(const QString& pos);
    void onImageListRowChanged(int row);
    void _readImageSequence();
    void _setLoadingState(bool loading);
    void _onLoadProgress(int done, int total);
    // Shows the first image decoded at once and lets the frame controls move
    // over those decoded so far, while the load runs.
    void _onFrameDecoded(int load_id, int index, const NdArray& frame);
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
    // An empty record (none) leaves the panel as it is.
    void _restoreVolumeParams(const std::optional<VolumeParams>& params);
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
    // The raw-volume panel's widgets, one for each row of volumePanelBindings().
    QList<QWidget*> _volumePanel;
    // The last news shown and its tone; other text on the strip (a tip) is plain news.
    QString _statusText;
    StatusTone _statusTone = StatusTone::Info;

    // The constructor's wiring, panel by panel.
    void _buildStatusStrip();
    void _connectVolumePanel();
    void _connectSequencePanel();
    void _connectEntries();
    void _buildPreviews();

    // Handlers of the window's own controls and menus.
    // Asks for a raw file and opens it as Volume Data, as a dropped one.
    void onOpenRawFile();
    // The folder of the current source, where the open dialogs start; empty with none.
    QString currentSourceFolder() const;
    // The preview of the current mode: one image pixel per screen pixel, or fitted.
    void onResetZoom();
    void onFitView();
    // A short guide to the panel's terms, beside the window.
    void onShowHelp();
    // Fills the panel with a layout guessed from the open raw file, and offers
    // the other likely ones under the button beside Guess.
    void onGuessLayout();
    void _applyGuessedLayout(const LayoutOption& layout);
    // Sorts the image files by the numbers in their names, or plainly again.
    void onNaturalOrderChanged();
    // Reads the image files again as the reading boxes say (bit depth kept,
    // every page a frame).
    void onSequenceReadingChanged();

    // The mode the window shows, from comboBox_outputType; none for another text.
    std::optional<Mode> _mode() const;
    void _buildMenus();
    // Shares the window's room between the controls and the preview, for any screen.
    void _layOutColumns();
    // The road of a single raw file, from a drop or the menu, once the old source is reset:
    // Volume Data, then openFile.
    void _openRawFile(const QString& path);
    // Shows news on the status strip for `timeout` ms (0: until the next),
    // in the colour of its tone.
    void _showStatus(StatusTone tone, const QString& text, int timeout);
    // Colours the strip for the message it now shows.
    void _toneStatus(const QString& message);
    // The panel's frame-count box.
    QSpinBox* _frameCountBox() const;
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
    // Marks the rows whose frames are placeholders: an icon, and why in the tool tip.
    void _markPlaceholderRows();
    // The notes of the last load, shown once in the status bar when it next
    // falls silent: they never replace a message of the window's own.
    QStringList _statusNotes;
    // The images the running load has decoded so far, by row (none for files
    // that are no image); dropped when the load ends.
    std::vector<std::optional<NdArray>> _framesSoFar;
    void _showStatusNotesIfSilent(const QString& message);
};

} // namespace torvex
