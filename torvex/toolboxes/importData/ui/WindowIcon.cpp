#include "toolboxes/importData/ui/ImportData.h"

#include <QImage>
#include <QPixmap>

namespace torvex {

namespace {

// The tool's icon, a 48 x 48 RGBA PNG kept as Base64 text so the library
// needs no resource files.
constexpr char kWindowIconPng[] =
    "iVBORw0KGgoAAAANSUhEUgAAADAAAAAwCAYAAABXAvmHAAAACXBIWXMAAA7EAAAOxAGVKw4bAAABXElEQVR42u2YMY7CMBBF8y1aakQajsFFqOEMSLRUtEi7V2BpuQjHoCHiFENBggx4SbBnSEYZl0Qa+43n//yQZbbaXQj9SERn9o2AXAJgEDo4jrMx90b32swg7qVTAoeXrOv8Dklt4kNwj6fTLmL1AIM2NvXHKFXUrQBMdqsxlzu1PkI+jFoNTHaraHcyF+qlC3G6U6cARpv5x+7U2RHyYdRqYLSZ17qTuZABGIABGIAB3LMHTQ+FaNaZHorU/F97A1IQUnUfwlwVnCT+mePu/Ns06idAIjpLbW4i7gUAgPy02Iq602mxLZrm/+gbkIJIrdvok1LSnWo7/4u3z5HyAR577Z+sy3B/O+gyfFY1IqafjNS7UAgiGgBAfln/ibpTqP4zBJI6Uoo6RgvVbEc3sNQEWK42xp1q3KUpBLomyl5FCSwzOM2HZ9PAN0ft+YXmNHZdJcB/UUJthKjWFXU8jGZFLjOgAAAAAElFTkSuQmCC";

QIcon _iconFromBase64(const QByteArray& base64)
{
    return QIcon(QPixmap::fromImage(QImage::fromData(QByteArray::fromBase64(base64))));
}

} // namespace

QIcon ImportData::getIcon(const QString& iconName)
{
    if (iconName == QLatin1String("windowIcon")) return _iconFromBase64(QByteArray(kWindowIconPng));
    return QIcon();
}

} // namespace torvex
