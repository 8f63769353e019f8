#include "AxisTransfer.h"

#include <QStringList>

#include <stdexcept>

namespace torvex {

namespace {

// Python's int() of one piece: blanks around it allowed, nothing else.
int axisNumber(const QString& piece)
{
    bool ok = false;
    const int value = piece.trimmed().toInt(&ok);
    if (!ok) throw std::runtime_error("invalid literal for int() with base 10: '" + piece.toStdString() + "'");
    return value;
}

} // namespace

NdArray transferAxes(const NdArray& stack, const QString& permute, bool hflip, bool vflip)
{
    std::vector<int> axes;
    for (const QString& piece : permute.split(',')) axes.push_back(axisNumber(piece));

    NdArray out = stack;
    if (axes != std::vector<int>{0, 1, 2}) {
        // The channel axis (and a fifth axis, if any) stays where it is.
        if (stack.ndim() == 4) axes.push_back(3);
        else if (stack.ndim() == 5) axes.insert(axes.end(), {3, 4});
        out = stack.transpose(axes);
    }
    if (hflip) out = out.flip(2);
    if (vflip) out = out.flip(1);
    return out;
}

} // namespace torvex
