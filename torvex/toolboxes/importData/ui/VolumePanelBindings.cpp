#include "toolboxes/importData/ui/VolumePanelBindings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSpinBox>

namespace torvex {

namespace {

using Reaction = VolumePanelBinding::Reaction;

// A check box that stands for one byte order: checking it sets that order,
// leaving it unchecked leaves the order to the other box.
template <ByteOrder order> QVariant isOrder(const VolumeParams& p) { return p.layout.byteOrder == order; }
template <ByteOrder order> void setOrder(VolumeParams& p, const QVariant& checked)
{
    if (checked.toBool()) p.layout.byteOrder = order;
}

template <auto part, auto field> QVariant get(const VolumeParams& p) { return QVariant::fromValue(p.*part.*field); }
template <auto part, auto field> void set(VolumeParams& p, const QVariant& value)
{
    p.*part.*field = value.value<std::remove_cvref_t<decltype(p.*part.*field)>>();
}
// A widget that shows one field as it is.
template <auto part, auto field> VolumePanelBinding bind(const char* widget, Reaction reaction = Reaction::Decode)
{
    return {.widget = widget, .get = get<part, field>, .set = set<part, field>, .reaction = reaction};
}

VolumePanelBinding term(VolumePanelBinding row, const char* term, const char* meaning)
{
    row.term = term;
    row.meaning = meaning;
    return row;
}

} // namespace

const std::vector<VolumePanelBinding>& volumePanelBindings()
{
    constexpr auto layout = &VolumeParams::layout;
    constexpr auto transfer = &VolumeParams::transfer;
    static const std::vector<VolumePanelBinding> table = {
        term(bind<layout, &RawLayout::imgType>("comboBox_imgType"), "Image type",
             "The size and kind of one pixel value (8-bit, 16-bit Signed, 24-bit RGB, ...)."),
        term(bind<layout, &RawLayout::offset>("spinBox_offset"), "Offset, Gap",
             "Bytes skipped before the first frame, and between one frame and the next."),
        bind<layout, &RawLayout::gap>("spinBox_gap"),
        term(bind<layout, &RawLayout::width>("spinBox_width"), "Width, Height, Frames",
             "Pixels in a row, rows in a frame, and frames in the file."),
        bind<layout, &RawLayout::height>("spinBox_height"),
        {.widget = "spinBox_totalFrame", .get = get<layout, &RawLayout::frame>, .set = set<layout, &RawLayout::frame>,
         .restartsFrames = true},
        {.widget = "checkBox_littleEndian", .get = isOrder<ByteOrder::Little>, .set = setOrder<ByteOrder::Little>,
         .exclusive = true, .term = "Little / Big endian",
         .meaning = "For values of 16 bits and more: the least or the most significant byte first. With neither, "
                    "in this computer's own order."},
        term(bind<layout, &RawLayout::readOrder>("comboBox_order"), "Read order F / C",
             "F: the file runs down the columns (column-major, as Fortran and MATLAB write). C: the file runs "
             "along the rows (row-major, as C and NumPy write)."),
        term(bind<layout, &RawLayout::colorOrder>("comboBox_colorOrder"), "Colour order AABBCC / ABCABC",
             "AABBCC: one whole plane per channel, one after another. ABCABC: the channels of each pixel side "
             "by side."),
        term(bind<transfer, &AxisTransfer::permute>("comboBox_permute", Reaction::Transfer), "Permute",
             "A new order of the frame, row and column axes (0, 1, 2): 0,1,2 keeps them; 1,0,2 views the stack "
             "from the side, frame i holding row i of every frame."),
        term(bind<transfer, &AxisTransfer::hflip>("checkBox_hflip", Reaction::Transfer), "Flips",
             "Mirror every frame left to right, or top to bottom, after the permutation."),
        bind<transfer, &AxisTransfer::vflip>("checkBox_vflip", Reaction::Transfer),
        {.widget = "checkBox_bigEndian", .get = isOrder<ByteOrder::Big>, .set = setOrder<ByteOrder::Big>,
         .exclusive = true},
    };
    return table;
}

QString volumePanelGuide()
{
    QString html;
    for (const VolumePanelBinding& row : volumePanelBindings())
        if (row.term)
            html += QString("<dt><b>%1</b></dt><dd>%2</dd>\n").arg(row.term, row.meaning);
    return html;
}

QVariant panelValue(const QWidget* widget)
{
    if (const auto* combo = qobject_cast<const QComboBox*>(widget)) return combo->currentText();
    if (const auto* spin = qobject_cast<const QSpinBox*>(widget)) return spin->value();
    return qobject_cast<const QAbstractButton*>(widget)->isChecked();
}

void setPanelValue(QWidget* widget, const QVariant& value)
{
    if (auto* combo = qobject_cast<QComboBox*>(widget)) return combo->setCurrentText(value.toString());
    if (auto* spin = qobject_cast<QSpinBox*>(widget)) return spin->setValue(value.toInt());
    qobject_cast<QAbstractButton*>(widget)->setChecked(value.toBool());
}

void onPanelValueChanged(QWidget* widget, QObject* context, const std::function<void()>& changed)
{
    if (auto* combo = qobject_cast<QComboBox*>(widget))
        QObject::connect(combo, &QComboBox::currentIndexChanged, context, changed);
    else if (auto* spin = qobject_cast<QSpinBox*>(widget))
        QObject::connect(spin, &QSpinBox::valueChanged, context, changed);
    else QObject::connect(qobject_cast<QCheckBox*>(widget), &QCheckBox::stateChanged, context, changed);
}

} // namespace torvex
