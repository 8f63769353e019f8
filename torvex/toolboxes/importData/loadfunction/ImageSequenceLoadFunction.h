#pragma once

#include <QString>
#include <QStringList>

namespace torvex {

// The text of a stand-alone Python module part with load_image_sequence(folder_path),
// which filters a folder's files by filterText (a regular expression if useRegex,
// else a wildcard; "*.*" when empty) and stacks the images as the loader does.
// fileList is the current entry's list; its first name gives the folder of the
// usage comment. Throws std::runtime_error when fileList is empty.
QString imageSequenceLoadFunctionText(const QStringList& fileList, const QString& filterText, bool useRegex);

} // namespace torvex
