#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/LevelsHistogram.h"
#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/ui/VolumePanelBindings.h"
#include "toolboxes/importData/volume/ByteBalance.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPalette>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>

namespace torvex {

ImportData::ImportData(QWidget* parent, AppContext* app_context, const QString& styleSheet, const QString& filePath,
                       bool folderMode)
    : QMainWindow(nullptr) // always top-level: the host's window is only a palette and status bar source
{
    setStyleSheet(styleSheet);
    ui = std::make_unique<Ui::ImportData>();
    ui->setupUi(this);
    // Ask for no more than the small hint, so the window never holds up a host's splitter.
    setMinimumSize(0, 0);
    ui->centralwidget->setMinimumSize(0, 0);
    _layOutColumns();
    _buildStatusStrip();
    setWindowTitle("Import Data");
    setWindowIcon(getIcon("windowIcon"));

    parentApp = parent;
    this->app_context = app_context;
    setContextMenuPolicy(Qt::PreventContextMenu);
    ui->pushButton_import->setIcon(getIcon("windowIcon"));

    _showFrameSlider(false);
    connect(ui->horizontalSlider_frame, &QSlider::valueChanged, ui->spinBox_frame, &QSpinBox::setValue);
    connect(ui->spinBox_frame, &QSpinBox::valueChanged, ui->horizontalSlider_frame, &QSlider::setValue);
    connect(ui->spinBox_frame, &QSpinBox::valueChanged, this, &ImportData::onFrameChanged);
    connect(ui->comboBox_outputType, &QComboBox::currentIndexChanged, this, &ImportData::onParametersChanged);
    _connectVolumePanel();
    _connectSequencePanel();
    _connectEntries();
    _buildPreviews();

    if (folderMode) {
        ui->comboBox_outputType->setCurrentIndex(1);
        ui->comboBox_outputType->setEnabled(false);
        ui->stackedWidget_preview->setCurrentIndex(1);
    }
    _buildMenus();
    connect(ui->lineEdit_files_folder, &QLineEdit::textChanged, this, &ImportData::sourceChanged);
    if (!filePath.isEmpty()) openFile(filePath);
    setAcceptDrops(true);
}

void ImportData::_buildStatusStrip()
{
    _pixel_info_label = new QLabel;
    _pixel_info_label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    _pixel_info_label->setStyleSheet("color: #ffffff; font-size: 9pt; padding-right: 6px;");
    _bytes_badge = new QLabel;
    _bytes_badge->setAlignment(Qt::AlignCenter);
    _bytes_badge->hide();
    ui->statusbar->addPermanentWidget(_pixel_info_label);
    ui->statusbar->addPermanentWidget(_bytes_badge);
    connect(ui->statusbar, &QStatusBar::messageChanged, this, &ImportData::_toneStatus);
    connect(ui->statusbar, &QStatusBar::messageChanged, this, &ImportData::_showStatusNotesIfSilent);
    _showStatus(StatusTone::Info, "Ready", 5000);
}

void ImportData::_connectVolumePanel()
{
    const std::vector<VolumePanelBinding>& table = volumePanelBindings();
    for (const VolumePanelBinding& row : table) {
        auto* widget = ui->centralwidget->findChild<QWidget*>(row.widget);
        Q_ASSERT_X(widget, row.widget, "a row of the panel's table without its widget in the form");
        _volumePanel << widget;
    }
    // Of exclusive boxes, checking one unchecks the others. Connected first,
    // so that the panel is consistent when it is read; a box unchecked for it stays quiet.
    QList<QCheckBox*> exclusive;
    for (size_t i = 0; i < table.size(); ++i)
        if (table[i].exclusive) exclusive << qobject_cast<QCheckBox*>(_volumePanel[i]);
    for (QCheckBox* box : exclusive)
        connect(box, &QCheckBox::stateChanged, this, [box, exclusive](int state) {
            if (state != Qt::Checked) return;
            for (QCheckBox* other : exclusive) {
                const QSignalBlocker block(other);
                if (other != box) other->setChecked(false);
            }
        });
    _session.volume = _captureVolumeParams();
    for (size_t i = 0; i < table.size(); ++i) {
        // The session takes the panel's settings first: the reactions read them there.
        onPanelValueChanged(_volumePanel[i], this, [this] { _session.volume = _captureVolumeParams(); });
        if (table[i].restartsFrames) onPanelValueChanged(_volumePanel[i], this, [this] { onTotalFrameChanged(); });
        if (table[i].reaction == VolumePanelBinding::Reaction::Transfer)
            onPanelValueChanged(_volumePanel[i], this, [this] { onImgTransferChanged(); });
        else onPanelValueChanged(_volumePanel[i], this, [this] { onParametersChanged(); });
    }
    connect(ui->pushButton_guess, &QPushButton::clicked, this, &ImportData::onGuessLayout);
}

void ImportData::_connectSequencePanel()
{
    connect(ui->radioButton_filter, &QRadioButton::clicked, this, &ImportData::onFilterChanged);
    connect(ui->radioButton_regex, &QRadioButton::clicked, this, &ImportData::onFilterChanged);
    connect(ui->lineEdit_filter, &QLineEdit::editingFinished, this, &ImportData::onFilterChanged);
    connect(ui->checkBox_naturalOrder, &QCheckBox::toggled, this, &ImportData::onNaturalOrderChanged);
    connect(ui->checkBox_keepDepth, &QCheckBox::toggled, this, &ImportData::onSequenceReadingChanged);
    connect(ui->checkBox_allPages, &QCheckBox::toggled, this, &ImportData::onSequenceReadingChanged);
    connect(ui->spinBox_rg1, &QSpinBox::valueChanged, this, [this] { onSelectedRangeChanged("S"); });
    connect(ui->spinBox_rg2, &QSpinBox::valueChanged, this, [this] { onSelectedRangeChanged("E"); });
    connect(ui->pushButton_allSelection, &QPushButton::clicked, this, &ImportData::onSelectAll);
    connect(ui->listWidget_imageList, &QListWidget::itemChanged, this, &ImportData::onSelectionChanged);
    connect(ui->listWidget_imageList, &QListWidget::currentRowChanged, this, &ImportData::onImageListRowChanged);
    connect(ui->pushButton_2, &QPushButton::clicked, this, &ImportData::onOpenFiles);
    connect(ui->pushButton, &QPushButton::clicked, this, &ImportData::onOpenFolder);
    connect(&_session.load, &ImageLoad::progress, this, &ImportData::_onLoadProgress);
    connect(&_session.load, &ImageLoad::frameDecoded, this, &ImportData::_onFrameDecoded);
    connect(&_session.load, &ImageLoad::finished, this, &ImportData::_onLoadFinished);
    connect(&_session.load, &ImageLoad::error, this, &ImportData::_onLoadError);
}

void ImportData::_connectEntries()
{
    connect(ui->pushButton_import, &QPushButton::clicked, this, &ImportData::onImport);
    connect(ui->pushButton_generate_function, &QPushButton::clicked, this, &ImportData::onGenerateFunction);
    connect(ui->listWidget_data, &QListWidget::itemChanged, this, &ImportData::onValidate_item_text);
    connect(ui->listWidget_data, &QListWidget::currentItemChanged, this, &ImportData::onDataItemSelected);
}

void ImportData::_buildPreviews()
{
    const QPalette palette = parentApp ? parentApp->palette() : QApplication::palette();
    const QColor background = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    _buildPreviewSurface(ui->page_prev_stackImages, preview_layoutWin, preview_ImgItem, _preview_plot, background,
                         text);
    connect(preview_layoutWin->scene(), &PreviewScene::sigMouseMoved, this, &ImportData::_onVolumeMouseMoved);
    _buildPreviewSurface(ui->widget_prev_images, preview_layoutWin2, preview_ImgItem2, _preview_plot2, background,
                         text);
    connect(preview_layoutWin2->scene(), &PreviewScene::sigMouseMoved, this, &ImportData::_onImageSeqMouseMoved);
}

// The session goes before the widgets and stops its load threads as it goes.
ImportData::~ImportData() = default;

QSize ImportData::minimumSizeHint() const { return {200, 150}; }

void ImportData::_buildPreviewSurface(QWidget* holder, PreviewSurface*& surface, PreviewImageItem*& image,
                                      PreviewPlot*& plot, const QColor& background, const QColor& text)
{
    auto* layout = new QVBoxLayout(holder);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    surface = new PreviewSurface(parentApp);
    image = new PreviewImageItem;
    plot = surface->addPlot();
    plot->invertY(true);
    plot->addItem(image);
    plot->getMenu()->setStyleSheet("QMenu {background-color: " + background.name() + "; color: " + text.name() +
                                   ";} QMenu::item:selected {background-color: rgb(0, 120, 212);}");
    plot->setAspectLocked(true);
    surface->setBackground(background);
    layout->addWidget(surface);
    layout->addWidget(new LevelsHistogram(image, background, text, holder));
    // New levels show the current frame again; the item keeps no frame itself.
    connect(image, &PreviewImageItem::levelsChanged, this, [this, item = image] {
        const std::optional<NdArray> frame = _frameAt(item == preview_ImgItem ? transferedData : selectedimageSequence);
        if (frame) _showFrame(item, *frame);
    });
}

std::optional<Mode> ImportData::_mode() const { return modeOfText(ui->comboBox_outputType->currentText()); }

void ImportData::_showStatus(StatusTone tone, const QString& text, int timeout)
{
    _statusText = text;
    _statusTone = tone;
    ui->statusbar->showMessage(text, timeout);
    _toneStatus(ui->statusbar->currentMessage()); // a repeated text changes no message
}

void ImportData::_toneStatus(const QString& message)
{
    StatusTone tone = message == _statusText ? _statusTone : StatusTone::Info;
    // A raw file that loads with bytes over or missing is no plain success: the badge beside it says so.
    if (tone == StatusTone::Success && !_bytes_badge->isHidden() && readedBinary) {
        const std::optional<ByteBalance> balance =
            ByteBalance::of(readedBinary->size(), _session.volume.layout);
        if (balance && !balance->matched()) tone = StatusTone::Warning;
    }
    const QString sheet = statusStyleSheet(tone);
    if (ui->statusbar->styleSheet() != sheet) ui->statusbar->setStyleSheet(sheet);
}

QSpinBox* ImportData::_frameCountBox() const
{
    const std::vector<VolumePanelBinding>& table = volumePanelBindings();
    const auto row = std::ranges::find_if(table, &VolumePanelBinding::restartsFrames);
    return qobject_cast<QSpinBox*>(_volumePanel[row - table.begin()]);
}

void ImportData::_showError(const std::exception& e)
{
    _showStatus(StatusTone::Error, "Error: " + QString::fromStdString(e.what()), 5000);
}

} // namespace torvex
