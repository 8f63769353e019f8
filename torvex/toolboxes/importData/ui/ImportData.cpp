#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/LevelsHistogram.h"
#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/ui/StatusTone.h"
#include "toolboxes/importData/volume/ByteBalance.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPalette>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QVBoxLayout>

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
    ui->statusbar->showMessage("Ready", 5000);
    setWindowTitle("Import Data");
    setWindowIcon(getIcon("windowIcon"));

    parentApp = parent;
    this->app_context = app_context;
    setContextMenuPolicy(Qt::PreventContextMenu);
    ui->pushButton_import->setIcon(getIcon("windowIcon"));

    _pixel_info_label = new QLabel;
    _pixel_info_label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    _pixel_info_label->setStyleSheet("color: #ffffff; font-size: 9pt; padding-right: 6px;");
    _bytes_badge = new QLabel;
    _bytes_badge->setAlignment(Qt::AlignCenter);
    _bytes_badge->hide();
    ui->statusbar->addPermanentWidget(_pixel_info_label);
    ui->statusbar->addPermanentWidget(_bytes_badge);
    _toneStatus(ui->statusbar->currentMessage());
    connect(ui->statusbar, &QStatusBar::messageChanged, this, &ImportData::_toneStatus);
    connect(ui->statusbar, &QStatusBar::messageChanged, this, &ImportData::_showStatusNotesIfSilent);

    _showFrameSlider(false);

    connect(ui->horizontalSlider_frame, &QSlider::valueChanged, ui->spinBox_frame, &QSpinBox::setValue);
    connect(ui->spinBox_frame, &QSpinBox::valueChanged, ui->horizontalSlider_frame, &QSlider::setValue);
    connect(ui->spinBox_frame, &QSpinBox::valueChanged, this, &ImportData::onFrameChanged);
    connect(ui->comboBox_outputType, &QComboBox::currentIndexChanged, this, &ImportData::onParametersChanged);
    connect(ui->comboBox_imgType, &QComboBox::currentIndexChanged, this, &ImportData::onParametersChanged);
    connect(ui->spinBox_offset, &QSpinBox::valueChanged, this, &ImportData::onParametersChanged);
    connect(ui->spinBox_gap, &QSpinBox::valueChanged, this, &ImportData::onParametersChanged);
    connect(ui->spinBox_width, &QSpinBox::valueChanged, this, &ImportData::onParametersChanged);
    connect(ui->spinBox_height, &QSpinBox::valueChanged, this, &ImportData::onParametersChanged);
    connect(ui->spinBox_totalFrame, &QSpinBox::valueChanged, this, &ImportData::onTotalFrameChanged);
    connect(ui->spinBox_totalFrame, &QSpinBox::valueChanged, this, &ImportData::onParametersChanged);
    connect(ui->comboBox_permute, &QComboBox::currentIndexChanged, this, &ImportData::onImgTransferChanged);
    connect(ui->checkBox_hflip, &QCheckBox::stateChanged, this, &ImportData::onImgTransferChanged);
    connect(ui->checkBox_vflip, &QCheckBox::stateChanged, this, &ImportData::onImgTransferChanged);
    connect(ui->comboBox_order, &QComboBox::currentIndexChanged, this, &ImportData::onParametersChanged);
    connect(ui->comboBox_colorOrder, &QComboBox::currentIndexChanged, this, &ImportData::onParametersChanged);
    // The two byte orders exclude each other. Connected first, so the panel
    // is consistent when it is read; the box unchecked for it stays quiet.
    for (auto [box, other] : {std::pair{ui->checkBox_littleEndian, ui->checkBox_bigEndian},
                              std::pair{ui->checkBox_bigEndian, ui->checkBox_littleEndian}})
        connect(box, &QCheckBox::stateChanged, this, [other = other](int state) {
            const QSignalBlocker block(other);
            if (state == Qt::Checked) other->setChecked(false);
        });
    connect(ui->checkBox_littleEndian, &QCheckBox::stateChanged, this, &ImportData::onParametersChanged);
    connect(ui->checkBox_bigEndian, &QCheckBox::stateChanged, this, &ImportData::onParametersChanged);
    connect(ui->pushButton_guess, &QPushButton::clicked, this, &ImportData::onGuessLayout);
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
    connect(ui->pushButton_import, &QPushButton::clicked, this, &ImportData::onImport);
    connect(ui->pushButton_generate_function, &QPushButton::clicked, this, &ImportData::onGenerateFunction);
    connect(ui->listWidget_data, &QListWidget::itemChanged, this, &ImportData::onValidate_item_text);
    connect(ui->listWidget_data, &QListWidget::currentItemChanged, this, &ImportData::onDataItemSelected);
    connect(&_session.load, &ImageLoad::progress, this, &ImportData::_onLoadProgress);
    connect(&_session.load, &ImageLoad::frameDecoded, this, &ImportData::_onFrameDecoded);
    connect(&_session.load, &ImageLoad::finished, this, &ImportData::_onLoadFinished);
    connect(&_session.load, &ImageLoad::error, this, &ImportData::_onLoadError);

    const QPalette palette = parentApp ? parentApp->palette() : QApplication::palette();
    const QColor background = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    _buildPreviewSurface(ui->page_prev_stackImages, preview_layoutWin, preview_ImgItem, _preview_plot, background,
                         text);
    connect(preview_layoutWin->scene(), &PreviewScene::sigMouseMoved, this, &ImportData::_onVolumeMouseMoved);
    _buildPreviewSurface(ui->widget_prev_images, preview_layoutWin2, preview_ImgItem2, _preview_plot2, background,
                         text);
    connect(preview_layoutWin2->scene(), &PreviewScene::sigMouseMoved, this, &ImportData::_onImageSeqMouseMoved);

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

void ImportData::_toneStatus(const QString& message)
{
    StatusTone tone = statusToneOf(message);
    // A raw file that loads with bytes over or missing is no plain success: the badge beside it says so.
    if (tone == StatusTone::Success && !_bytes_badge->isHidden() && readedBinary) {
        const std::optional<ByteBalance> balance =
            ByteBalance::of(readedBinary->size(), _captureVolumeParams().layout());
        if (balance && !balance->matched()) tone = StatusTone::Warning;
    }
    const QString sheet = statusStyleSheet(tone);
    if (ui->statusbar->styleSheet() != sheet) ui->statusbar->setStyleSheet(sheet);
}

void ImportData::_showError(const std::exception& e)
{
    ui->statusbar->showMessage("Error: " + QString::fromStdString(e.what()), 5000);
}

} // namespace torvex
