#include "toolboxes/importData/model/ImportNotice.h"

#include <QLocale>
#include <QStringList>

namespace torvex {

QString pythonShapeText(const Shape& shape)
{
    QStringList parts;
    for (int64_t extent : shape) parts << QString::number(extent);
    return "(" + parts.join(", ") + (parts.size() == 1 ? ",)" : ")");
}

QString importNotice(const QString& name, const NdArray& array)
{
    const QString size = QLocale::c().formattedDataSize(array.nbytes(), 1, QLocale::DataSizeIecFormat);
    return "Imported " + name + " (" + pythonShapeText(array.shape()) + ", " +
           QString::fromStdString(dtypeName(array.dtype())) + ", " + size + ") into the workspace";
}

} // namespace torvex
