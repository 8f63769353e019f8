#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QString>

#include <vector>

// A folder of still images and other files, written once per test run by
// make_sequence_images.py.
QString sequenceFile(const QString& name);

// Elements of a uint8 array in C order.
std::vector<int> bytesOf(const torvex::NdArray& array);
