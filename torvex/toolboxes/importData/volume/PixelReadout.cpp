#include "PixelReadout.h"

#include <QStringList>

#include <cmath>

namespace torvex {

std::optional<QString> pixelReadout(const NdArray& frame, const QPointF& pt)
{
    if (frame.ndim() < 2 || !std::isfinite(pt.x()) || !std::isfinite(pt.y())) return std::nullopt;
    const double xf = std::trunc(pt.x()), yf = std::trunc(pt.y());
    const int64_t h = frame.extent(0), w = frame.extent(1);
    if (!(xf >= 0 && xf < static_cast<double>(w) && yf >= 0 && yf < static_cast<double>(h))) return std::nullopt;
    const auto x = static_cast<int64_t>(xf), y = static_cast<int64_t>(yf);

    const NdArray value = frame.index(y).index(x);
    QStringList parts;
    value.forEach([&](const std::byte* p) { parts << QString::fromStdString(value.elementText(p)); });
    return QStringLiteral("X:%1  Y:%2  \u25b6  %3").arg(x).arg(y).arg(parts.join(QStringLiteral("  ")));
}

} // namespace torvex
