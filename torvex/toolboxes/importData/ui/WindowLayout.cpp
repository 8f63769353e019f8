// How the window shares its room, from a 1366 x 768 screen up to 4K.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/ControlsScroll.h"

#include <QVBoxLayout>

namespace torvex {

void ImportData::_layOutColumns()
{
    // The controls keep their natural width and scroll on a low screen, all but the Output group
    // below them: Import stays in sight. The preview takes what the window gains.
    auto* column = new QWidget;
    column->setObjectName("widget_controlsColumn");
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new ControlsScroll(ui->widget_controls), 1);
    layout->addWidget(ui->groupBox_output);
    ui->splitter->insertWidget(0, column);
    ui->splitter->setStretchFactor(0, 0);
    ui->splitter->setStretchFactor(1, 1);
    // Spare height goes to the lists: the image list first in Image Sequence, else the entries.
    ui->verticalLayout_controls->setStretchFactor(ui->groupBox_data, 1);
    connect(ui->stackedWidget, &QStackedWidget::currentChanged, this, [this](int page) {
        ui->verticalLayout_controls->setStretchFactor(ui->groupBox_params, page == 1 ? 2 : 0);
    });
}

} // namespace torvex
