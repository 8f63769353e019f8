#pragma once

// The raw-volume panel set as a user would, each change running its handlers.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/VolumePanelBindings.h"

#include <functional>

namespace torvex::test {

// Sets every panel widget whose value differs from `params`, in the panel's order.
inline void enterVolumePanel(ImportData& w, const VolumeParams& params)
{
    for (const VolumePanelBinding& row : volumePanelBindings())
        setPanelValue(w.findChild<QWidget*>(row.widget), row.get(params));
}

// Changes what `change` changes in the panel's current settings.
inline void editVolumePanel(ImportData& w, const std::function<void(VolumeParams&)>& change)
{
    VolumeParams params = w._captureVolumeParams();
    change(params);
    enterVolumePanel(w, params);
}

// The panel widget that shows the field `change` changes.
template <class Widget> Widget* volumePanelWidget(ImportData& w, const std::function<void(VolumeParams&)>& change)
{
    VolumeParams changed;
    change(changed);
    for (const VolumePanelBinding& row : volumePanelBindings())
        if (row.get(changed) != row.get(VolumeParams{})) return w.findChild<Widget*>(row.widget);
    return nullptr;
}

} // namespace torvex::test
