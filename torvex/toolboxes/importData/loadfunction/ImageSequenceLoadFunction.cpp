#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"

#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/loadfunction/PythonText.h"

#include <stdexcept>

namespace torvex {

namespace {

// The folder shown in the usage comment: the directory of the first listed file.
QString exampleFolder(const QStringList& fileList)
{
    if (fileList.isEmpty()) throw std::runtime_error("list index out of range");
    const QString folder = pythonDirname(fileList.first());
    return folder.isEmpty() ? QStringLiteral("path/to/folder") : folder;
}

} // namespace

QString imageSequenceLoadFunctionText(const QStringList& fileList, const QString& filterText, bool useRegex,
                                      bool naturalOrder, SequenceReading reading)
{
    const QString filterRepr = pythonRepr(filterText.isEmpty() ? QStringLiteral("*.*") : filterText);
    const QString filterComment = (useRegex ? "# regex pattern used: " : "# wildcard pattern used: ") + filterRepr;
    const QString filterCode = useRegex
        ? "import re\n    filtered = [f for f in files if re.search(" + filterRepr + ", os.path.basename(f))]"
        : "import fnmatch\n    filtered = [f for f in files if fnmatch.fnmatch(os.path.basename(f), " + filterRepr + ")]";
    // Written between r" and " unescaped: it only ever lands in a comment. A line
    // end would let the rest of the name run on as code, and Python takes no NUL
    // anywhere in its source: such a name is written as a Python literal instead.
    const QString folder = exampleFolder(fileList);
    const bool staysInComment =
        !folder.contains(u'\n') && !folder.contains(u'\r') && !folder.contains(QChar(u'\0'));
    const QString folderArgument = staysInComment ? "r\"" + folder + "\"" : pythonRepr(folder);

    // The tool's natural order: the parts of re.split(r"(\d+)", name)
    // alternate text and digits, so the lists always compare.
    const QStringList naturalKey = !naturalOrder ? QStringList{} : QStringList{
        "def _natural_key(path):",
        "    \"\"\"Sort key: runs of digits by their value, then the plain name.\"\"\"",
        "    import re",
        "    name = os.path.basename(path)",
        "    parts = re.split(r\"(\\d+)\", name)",
        "    return [int(p) if i % 2 else p for i, p in enumerate(parts)], name",
        "",
        "",
    };
    const QStringList naturalSort =
        !naturalOrder ? QStringList{} : QStringList{"    files = sorted(files, key=_natural_key)"};

    // The loader's kept depth: numpy's promotion is its widening rule, but
    // for floats (always float32) and for types past 32 bits (float64).
    const bool keep = reading.keepDepth;
    const QStringList valueHelpers = !keep ? QStringList{
        "def _normalise_to_uint8(arr):",
        "    \"\"\"Normalise any numeric array to uint8 via min-max scaling.\"\"\"",
        "    if arr.dtype == np.uint8:",
        "        return arr",
        "    a_min, a_max = float(arr.min()), float(arr.max())",
        "    if a_max > a_min:",
        "        return ((arr.astype(np.float64) - a_min) / (a_max - a_min) * 255).astype(np.uint8)",
        "    return np.zeros_like(arr, dtype=np.uint8)",
    } : QStringList{
        "def _stored_values(image):",
        "    \"\"\"The stored values: 1-bit images as 0 and 1 in uint8, any float as float32.\"\"\"",
        "    arr = np.array(image)",
        "    if image.format == \"PNG\" and arr.dtype == np.int32:",
        "        return arr.astype(np.uint16)  # Pillow reads 16-bit PNG pixels as int32",
        "    if arr.dtype == bool:",
        "        return arr.astype(np.uint8)",
        "    if arr.dtype.kind == \"f\":",
        "        return arr.astype(np.float32)",
        "    return arr",
        "",
        "",
        "def _stack_type(arrays):",
        "    \"\"\"The narrowest type that holds every value exactly; any float gives float32.\"\"\"",
        "    dtype = np.result_type(*(a.dtype for a in arrays))",
        "    if dtype.kind == \"f\":",
        "        return np.dtype(np.float32)",
        "    return dtype if dtype.itemsize <= 4 else np.dtype(np.float64)",
    };
    const QStringList valuesDoc = !keep ? QStringList{
        "    All images are normalised to uint8 RGB and centre-padded to",
        QString::fromUtf8("    the largest width \u00d7 height found in the sequence."),
    } : QStringList{
        "    All images keep their stored values in one type that holds them all,",
        QString::fromUtf8("    are brought to RGB and centre-padded to the largest width \u00d7 height."),
    };
    // With every page, each page of a file is read as one image is otherwise.
    const bool pages = reading.allPages;
    const QString image = pages ? "page" : "PIL.Image.open(path)";
    const QString readValues = keep ? "_stored_values(" + image + ")" : "_normalise_to_uint8(np.array(" + image + "))";
    const QStringList readImage = QStringList{
        "            arr = " + readValues,
        "            maxH = max(maxH, arr.shape[0])",
        "            maxW = max(maxW, arr.shape[1] if arr.ndim >= 2 else 1)",
        "            raw.append(arr)",
    };
    QStringList readFile = readImage;
    if (pages) {
        for (QString& row : readFile) row.prepend("    ");
        readFile.prepend("            for page in PIL.ImageSequence.Iterator(PIL.Image.open(path)):");
    }
    const QStringList stackType = !keep ? QStringList{} : QStringList{"    dtype = _stack_type(raw)"};
    const QStringList toStackType = !keep ? QStringList{} : QStringList{"        img = img.astype(dtype, copy=False)"};

    return (QStringList{
        "import os",
        "import numpy as np",
        "import PIL.Image",
    } + (pages ? QStringList{"import PIL.ImageSequence"} : QStringList{}) + QStringList{
        "",
        "",
    } + valueHelpers + QStringList{
        "",
        "",
    } + naturalKey + QStringList{
        "def load_image_sequence(folder_path):",
        "    \"\"\"Load a filtered image sequence from *folder_path*.",
        "",
        "    Non-image files are silently skipped.",
    } + valuesDoc + QStringList{
        "    \"\"\"",
        "    " + filterComment,
        "    files = sorted(",
        "        os.path.join(folder_path, f)",
        "        for f in os.listdir(folder_path)",
        "        if os.path.isfile(os.path.join(folder_path, f))",
        "    )",
    } + naturalSort + QStringList{
        "    " + filterCode,
        "",
        "    raw = []",
        "    maxH = maxW = 0",
        "    for path in filtered:",
        "        try:",
    } + readFile + QStringList{
        "        except Exception:",
        "            pass  # skip non-image / unreadable files",
        "",
        "    if not raw:",
        "        return np.zeros((0, maxH or 1, maxW or 1, 3), dtype=np.uint8)",
    } + stackType + QStringList{
        "",
        "    frames = []",
        "    for img in raw:",
    } + toStackType + QStringList{
        "        # Normalise channels",
        "        if img.ndim == 2:",
        "            img = np.stack((img, img, img), axis=2)",
        "        if img.shape[2] == 4:",
        "            img = img[:, :, :3]",
        "        # Centre-pad height",
        "        h, w = img.shape[:2]",
        "        if h < maxH:",
        "            top = (maxH - h) // 2",
        "            img = np.pad(img, ((top, maxH - h - top), (0, 0), (0, 0)),",
        "                         mode=\"constant\", constant_values=0)",
        "        # Centre-pad width",
        "        if w < maxW:",
        "            left = (maxW - w) // 2",
        "            img = np.pad(img, ((0, 0), (left, maxW - w - left), (0, 0)),",
        "                         mode=\"constant\", constant_values=0)",
        "        frames.append(img)",
        "",
        "    return np.stack(frames, axis=0)",
        "",
        "",
        "# Example usage:",
        "# imgs = load_image_sequence(" + folderArgument + ")",
        "",
    }).join(u'\n');
}

} // namespace torvex
