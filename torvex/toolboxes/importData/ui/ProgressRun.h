#pragma once

#include "toolboxes/importData/volume/Progress.h"

#include <QString>

#include <functional>

class QWidget;

namespace torvex {

// Runs `work` on a pool thread so that long passes over a volume neither
// freeze the window nor stop its painting. Work that ends quickly shows
// nothing; after a short delay a modal progress dialog counts the frames done
// and offers Cancel. Returns false when cancelled; rethrows what work throws.
bool runWithProgress(QWidget* parent, const QString& label, const std::function<void(const Progress&)>& work);

} // namespace torvex
