// A short guide to the terms of the parameter panel, for F1.
#include "toolboxes/importData/ui/ImportData.h"
#include "toolboxes/importData/ui/VolumePanelBindings.h"

#include <QMessageBox>

namespace torvex {

namespace {

// The panel's own terms come from its binding table, so that a new control
// is explained where it is bound.
QString guide()
{
    return R"(<h3>Volume Data</h3>
<p>A raw file has no header: you state how its bytes make pictures.</p>
<dl>
)" + volumePanelGuide() +
           R"(<dt><b>Bytes badge</b></dt><dd>Green when the frames use every byte of the file; amber with the bytes left
over (+) or missing (&minus;).</dd>
</dl>
<h3>Output</h3>
<dl>
<dt><b>DHWC / HWCD</b></dt><dd>The axis order of the imported array: D frames, H rows (height), W columns
(width), C channels. DHWC puts the frames first, HWCD last.</dd>
<dt><b>Keep a single channel axis</b></dt><dd>Keeps C for gray data, where it has size 1; otherwise it is
dropped.</dd>
</dl>
<h3>Image Sequence</h3>
<p>The checked images of the list, in its order, make the frames. The filter takes a wildcard or a
regular expression; press Enter to apply it.</p>)";
}

} // namespace

void ImportData::onShowHelp()
{
    if (!_helpGuide) {
        // Beside the window, not over it: the user reads it while setting the panel.
        _helpGuide = new QMessageBox(QMessageBox::Information, "Import Data Guide", guide(), QMessageBox::Close, this);
        _helpGuide->setObjectName("helpGuide");
        _helpGuide->setTextFormat(Qt::RichText);
        _helpGuide->setModal(false);
    }
    _helpGuide->show();
    _helpGuide->raise();
}

} // namespace torvex
