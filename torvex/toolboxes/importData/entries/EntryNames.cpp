// Names of the window's data entries: unique on creation, valid Python after an edit.
#include "toolboxes/importData/ImportData.h"

#include "VariableNames.h"
#include "toolboxes/importData/ImportDataForm.h"

namespace torvex {

QString ImportData::_getUniqueVarName(const QString& base_name)
{
    QSet<QString> existing;
    for (int i = 0; i < ui->listWidget_data->count(); ++i) existing.insert(ui->listWidget_data->item(i)->text());
    return uniqueVariableName(base_name, existing);
}

void ImportData::onValidate_item_text(QListWidgetItem* item)
{
    // setText fires itemChanged again; the inner run finds a valid name and
    // changes nothing, so the nesting stops after one level.
    item->setText(validVariableName(item->text()));
    ui->listWidget_data->setCurrentItem(item);
}

} // namespace torvex
