#pragma once

#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/ImportDataForm.h"
#include "toolboxes/importData/entries/DataEntry.h"
#include "toolboxes/importData/entries/VolumeParams.h"
#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"
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
class QThread;

namespace torvex {

class AppContext;
class PreviewImageItem;
class PreviewPlot;
class PreviewSurface;

// The Import Data window: turns a raw file or a list of images into named
// arrays, previews them and hands them to the host's workspace. Its members
// keep the names the rest of the host and its scripts know them by.
class ImportData : public QMainWindow {
    Q_OBJECT
public:
    explicit ImportData(QWidget* parent = nullptr, AppContext* app_context = nullptr,
                        const QString& styleSheet = {}, const QString& filePath = {}, bool folderMode = false);
    ~ImportData() override;

    QSize minimumSizeHint() const override;
    static QIcon getIcon(const QString& iconName);

    // Fields, in the order the constructor sets them.
    std::unique_ptr<Ui::ImportData> ui;
    QWidget* parentApp = nullptr;
    AppContext* app_context = nullptr;
    std::optional<QByteArray> readedBinary;
    std::optional<NdArray> prasedData;
    std::optional<NdArray> transferedData;
    std::optional<QStringList> fileList;
    std::optional<QStringList> filteredList;
    std::optional<NdArray> imageSequence;
    std::optional<NdArray> selectedimageSequence;
    QList<int> checkedIndexes;
    bool _pending_add_entry = false;
    std::optional<QString> _current_file_path;
    QThread* _loader_thread = nullptr;
    QPointer<_ImageLoaderWorker> _loader_worker;
    int _load_id = 0;
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

    // Raw volume decoding, axis transfer, parameter panel and preview.
    void praseStackImages(const QString& imgType = {}, int offset = 0, int gap = 0, int width = 0, int height = 0,
                          int frame = 0, bool littleEndian = false, const QString& readOrder = "F",
                          const QString& colorOrder = "AABBCC");
    void _imgTransfer(const QString& permute, bool hflip, bool vflip);
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

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // True while a handler sets many check boxes whose own reactions it replaces.
    bool _checkBatch = false;

    void _resetSource();
    void _stopLoad();
    void _setAllChecks(const std::function<bool(int)>& checked);
    void _buildPreviewSurface(QWidget* holder, PreviewSurface*& surface, PreviewImageItem*& image,
                              PreviewPlot*& plot, const QColor& background, const QColor& text);
    void _showFrame(PreviewImageItem* item, const NdArray& frame);
    void _setFrameQuietly(int frame);
    std::optional<NdArray> _frameAt(const std::optional<NdArray>& stack) const;
};

} // namespace torvex
