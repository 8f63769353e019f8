// A short guide to the terms of the parameter panel, for F1.
#include "toolboxes/importData/ui/ImportData.h"

#include <QMessageBox>

namespace torvex {

namespace {

const char* const guide = R"(<h3>Volume Data</h3>
<p>A raw file has no header: you state how its bytes make pictures.</p>
<dl>
<dt><b>Image type</b></dt><dd>The size and kind of one pixel value (8-bit, 16-bit Signed, 24-bit RGB, ...).</dd>
<dt><b>Offset, Gap</b></dt><dd>Bytes skipped before the first frame, and between one frame and the next.</dd>
<dt><b>Read order F / C</b></dt><dd>F: the file runs down the columns (column-major, as Fortran and MATLAB
write). C: the file runs along the rows (row-major, as C and NumPy write).</dd>
<dt><b>Colour order AABBCC / ABCABC</b></dt><dd>AABBCC: one whole plane per channel, one after another.
ABCABC: the channels of each pixel side by side.</dd>
<dt><b>Little / Big endian</b></dt><dd>For values of 16 bits and more: the least or the most significant
byte first. With neither, in this computer's own order.</dd>
<dt><b>Permute</b></dt><dd>A new order of the frame, row and column axes (0, 1, 2): 0,1,2 keeps them;
1,0,2 views the stack from the side, frame i holding row i of every frame.</dd>
<dt><b>Bytes badge</b></dt><dd>Green when the frames use every byte of the file; amber with the bytes left
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

} // namespace

void ImportData::onShowHelp()
{
    if (!_helpGuide) {
        // Beside the window, not over it: the user reads it while setting the panel.
        _helpGuide = new QMessageBox(QMessageBox::Information, "Import Data Guide", guide, QMessageBox::Close, this);
        _helpGuide->setObjectName("helpGuide");
        _helpGuide->setTextFormat(Qt::RichText);
        _helpGuide->setModal(false);
    }
    _helpGuide->show();
    _helpGuide->raise();
}

} // namespace torvex
