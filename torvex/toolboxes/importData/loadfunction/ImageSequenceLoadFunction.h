#pragma once

#include "toolboxes/importData/sequence/SequenceReading.h"

#include <QString>
#include <QStringList>

namespace torvex {

// The text of a stand-alone Python module part with load_image_sequence(folder_path),
// which filters a folder's files by filterText (a regular expression if useRegex,
// else a wildcard; "*.*" when empty) and stacks the images as the loader does.
// fileList is the current entry's list; its first name gives the folder of the
// usage comment. With naturalOrder the files are sorted by the natural order
// of their names (see naturalLess) instead of plainly. `reading` as the loader
// took it: with keepDepth the images keep their stored values in the one type
// the loader widens them to, instead of the 8-bit stretch; with allPages every
// page of a file is an image of the sequence.
// Throws std::runtime_error when fileList is empty.
QString imageSequenceLoadFunctionText(const QStringList& fileList, const QString& filterText, bool useRegex,
                                      bool naturalOrder = false, SequenceReading reading = {});

} // namespace torvex
