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

} // namespace

const std::vector<VolumePanelBinding>& volumePanelBindings()
{
    constexpr auto layout = &VolumeParams::layout;
    constexpr auto transfer = &VolumeParams::transfer;
    static const std::vector<VolumePanelBinding> table = {
        bind<layout, &RawLayout::imgType>("comboBox_imgType"),
        bind<layout, &RawLayout::offset>("spinBox_offset"),
        bind<layout, &RawLayout::gap>("spinBox_gap"),
        bind<layout, &RawLayout::width>("spinBox_width"),
        bind<layout, &RawLayout::height>("spinBox_height"),
        {.widget = "spinBox_totalFrame", .get = get<layout, &RawLayout::frame>, .set = set<layout, &RawLayout::frame>,
         .restartsFrames = true},
        {.widget = "checkBox_littleEndian", .get = isOrder<ByteOrder::Little>, .set = setOrder<ByteOrder::Little>,
         .exclusive = true},
        bind<layout, &RawLayout::readOrder>("comboBox_order"),
        bind<layout, &RawLayout::colorOrder>("comboBox_colorOrder"),
        bind<transfer, &AxisTransfer::permute>("comboBox_permute", Reaction::Transfer),
        bind<transfer, &AxisTransfer::hflip>("checkBox_hflip", Reaction::Transfer),
        bind<transfer, &AxisTransfer::vflip>("checkBox_vflip", Reaction::Transfer),
        {.widget = "checkBox_bigEndian", .get = isOrder<ByteOrder::Big>, .set = setOrder<ByteOrder::Big>,
         .exclusive = true},
    };
    return table;
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
