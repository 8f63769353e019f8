// The window's raw-volume panel widgets as one VolumeParams value.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/VolumePanelBindings.h"

namespace torvex {

VolumeParams ImportData::_captureVolumeParams()
{
    VolumeParams params;
    const std::vector<VolumePanelBinding>& table = volumePanelBindings();
    for (size_t i = 0; i < table.size(); ++i) table[i].set(params, panelValue(_volumePanel[i]));
    return params;
}

void ImportData::_resetVolumeParams() { _restoreVolumeParams(VolumeParams::resetValues()); }

void ImportData::_restoreVolumeParams(const std::optional<VolumeParams>& params)
{
    if (!params) return;
    // Writing with signals blocked neither decodes nor redraws: the caller refreshes.
    for (QWidget* w : _volumePanel) w->blockSignals(true);
    const std::vector<VolumePanelBinding>& table = volumePanelBindings();
    for (size_t i = 0; i < table.size(); ++i) setPanelValue(_volumePanel[i], table[i].get(*params));
    for (QWidget* w : _volumePanel) w->blockSignals(false);
    // What the widgets took: one that cannot show a value keeps its own.
    _session.volume = _captureVolumeParams();
}

} // namespace torvex
