// The tool's menus and their shortcuts; the host shows the menus in its menu bar.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/PreviewPlot.h"

#include <QAction>
#include <QMenu>

namespace torvex {

void ImportData::_buildMenus()
{
    // Each action is also the window's own, so its shortcut works in any window that holds the tool.
    auto add = [this](QMenu* menu, const QString& text, const QKeySequence& keys, auto handler) {
        QAction* action = menu->addAction(text);
        action->setShortcut(keys);
        connect(action, &QAction::triggered, this, handler);
        addAction(action);
        return action;
    };
    // Actions of a button go through its click, so they follow its enabled state during a load.
    auto click = [](QPushButton* button) { return [button] { button->click(); }; };

    auto* file = new QMenu("&File", this);
    QAction* openRaw = add(file, "Open &Raw File\u2026", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
                           &ImportData::onOpenRawFile);
    // A window locked to image sequences opens no raw file.
    openRaw->setEnabled(ui->comboBox_outputType->isEnabled());
    add(file, "&Open Files\u2026", QKeySequence(Qt::CTRL | Qt::Key_O), click(ui->pushButton_2));
    add(file, "Open &Folder\u2026", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F), click(ui->pushButton));
    file->addSeparator();
    add(file, "&Quit", QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { window()->close(); });

    auto* data = new QMenu("&Data", this);
    add(data, "&Import", QKeySequence(Qt::CTRL | Qt::Key_I), click(ui->pushButton_import));
    add(data, "&Generate Function\u2026", QKeySequence(Qt::CTRL | Qt::Key_G), click(ui->pushButton_generate_function));

    auto* view = new QMenu("&View", this);
    add(view, "&Reset Zoom", QKeySequence(Qt::CTRL | Qt::Key_0), &ImportData::onResetZoom);
    add(view, "&Fit", QKeySequence(), &ImportData::onFitView);

    auto* help = new QMenu("&Help", this);
    add(help, "&Guide to the Panel", QKeySequence(Qt::Key_F1), &ImportData::onShowHelp);

    _menus = {file, data, view, help};
}

void ImportData::onResetZoom()
{
    (ui->stackedWidget_preview->currentIndex() == 0 ? _preview_plot : _preview_plot2)->resetZoom();
}

void ImportData::onFitView()
{
    (ui->stackedWidget_preview->currentIndex() == 0 ? _preview_plot : _preview_plot2)->autoRange();
}

} // namespace torvex
