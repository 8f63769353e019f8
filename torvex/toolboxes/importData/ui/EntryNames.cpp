// Names of the window's data entries: unique on creation, valid Python after an edit.
#include "toolboxes/importData/ui/ImportData.h"

namespace torvex {

QString ImportData::_getUniqueVarName(const QString& base_name) { return _session.entries.uniqueName(base_name); }

void ImportData::onValidate_item_text(QListWidgetItem* item)
{
    const int row = ui->listWidget_data->row(item);
    // setText fires itemChanged again; the inner run finds a valid name and
    // changes nothing, so the nesting stops after one level.
    item->setText(_session.entries.rename(row, item->text()));
    ui->listWidget_data->setCurrentItem(item);
}

} // namespace torvex
