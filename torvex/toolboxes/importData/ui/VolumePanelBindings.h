#pragma once

#include "toolboxes/importData/entries/VolumeParams.h"

#include <QVariant>

#include <functional>
#include <vector>

class QObject;
class QWidget;

namespace torvex {

// One widget of the raw-volume panel and the field of VolumeParams it shows.
// Capture, restore, the Guess button, the change handlers and the tests all
// walk the table of them, so that a control added to the form and to the
// table is read, written and reacted to everywhere at once.
struct VolumePanelBinding {
    // What a change of the widget runs: a new decode, or a new view of the decoded frames.
    enum class Reaction { Decode, Transfer };

    const char* widget; // its object name in the form
    QVariant (*get)(const VolumeParams&);
    void (*set)(VolumeParams&, const QVariant&);
    Reaction reaction = Reaction::Decode;
    // A check box of a group of which at most one is checked.
    bool exclusive = false;
    // The frame count: a change starts the frame slider again at frame 1.
    bool restartsFrames = false;
    // Its term in the F1 guide and what it means there; a row without one is
    // explained under the term of a row before it ("Offset, Gap").
    const char* term = nullptr;
    const char* meaning = nullptr;
};

// The panel's widgets in the order of capture and restore.
const std::vector<VolumePanelBinding>& volumePanelBindings();

// The panel's terms for the guide, in the table's order, as HTML <dt>/<dd> pairs.
QString volumePanelGuide();

// The widget's value: a combo box's text, a spin box's number, a check box's state.
QVariant panelValue(const QWidget* widget);
void setPanelValue(QWidget* widget, const QVariant& value);
// Runs `changed` whenever the user or the code changes the widget's value.
void onPanelValueChanged(QWidget* widget, QObject* context, const std::function<void()>& changed);

} // namespace torvex
