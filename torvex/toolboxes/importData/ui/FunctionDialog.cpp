// The window's Generate Function dialog and the saving of its text.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/volume/FileSaving.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QIODevice>
#include <QMessageBox>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace torvex {

QString ImportData::_gen_function(const LoadFunctionParams& p) { return volumeLoadFunctionText(p); }

void ImportData::onGenerateFunction()
{
    try {
        QString function_body;
        if (_mode() == Mode::VolumeData) {
            function_body = _gen_function(LoadFunctionParams::from(
                _captureVolumeParams(), ui->comboBox_out_format->currentText(), ui->checkBox_keepc->isChecked()));
        } else {
            const EntryStore::Entry* entry = _session.entries.find(ui->listWidget_data->currentRow());
            const QStringList file_list = entry ? entry->record.file_list.value_or(QStringList()) : QStringList();
            function_body = imageSequenceLoadFunctionText(file_list, ui->lineEdit_filter->text(),
                                                          ui->radioButton_regex->isChecked(),
                                                          ui->checkBox_naturalOrder->isChecked(), _session.reading);
        }

        QDialog dialog(this);
        dialog.setWindowTitle("Generated Load Function");
        dialog.setMinimumSize(600, 400);
        auto* layout = new QVBoxLayout(&dialog);
        auto* textEdit = new QTextEdit(&dialog);
        textEdit->setPlainText(function_body);
        textEdit->setReadOnly(true);
        textEdit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        textEdit->setLineWrapMode(QTextEdit::NoWrap);
        layout->addWidget(textEdit);
        auto* buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
        QPushButton* buttonSave = buttonBox->addButton("Save to File", QDialogButtonBox::ActionRole);
        connect(buttonSave, &QPushButton::clicked, this, [this, function_body] { onSaveToFile(function_body); });
        connect(buttonBox, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
        layout->addWidget(buttonBox);
        dialog.exec();
    } catch (const std::exception& e) {
        QMessageBox::critical(this, "Error", "Failed to generate function: " + QString::fromStdString(e.what()));
    }
}

void ImportData::onSaveToFile(const QString& function_body)
{
    const QString fileName = QFileDialog::getSaveFileName(this, "Save Function to File", "",
                                                          "Python Files (*.py);;All Files (*)");
    if (fileName.isEmpty()) return;
    try {
        const QByteArray utf8 = function_body.toUtf8();
        saveFile(fileName, [&utf8](QIODevice& file) { file.write(utf8); });
    } catch (const std::exception& e) {
        QMessageBox::critical(this, "Error", "Failed to save function: " + QString::fromStdString(e.what()));
        return;
    }
    QMessageBox::information(this, "Success", "Function saved successfully.");
}

} // namespace torvex
