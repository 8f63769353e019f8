#include "DemoVolume.h"

#include <QFile>

#include <array>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

struct Ellipse {
    double intensity, a, b, x0, y0, degrees;
};

// The modified Shepp-Logan head phantom, the classic CT test picture.
constexpr std::array<Ellipse, 10> kPhantom = {{{1.0, .69, .92, 0, 0, 0},
                                               {-.8, .6624, .874, 0, -.0184, 0},
                                               {-.2, .11, .31, .22, 0, -18},
                                               {-.2, .16, .41, -.22, 0, 18},
                                               {.1, .21, .25, 0, .35, 0},
                                               {.1, .046, .046, 0, .1, 0},
                                               {.1, .046, .046, 0, -.1, 0},
                                               {.1, .046, .023, -.08, -.605, 0},
                                               {.1, .023, .023, 0, -.606, 0},
                                               {.1, .023, .046, .06, -.605, 0}}};

} // namespace

QString writeDemoVolume(const QString& folder)
{
    constexpr int width = 400, height = 640;
    std::vector<char> bytes(static_cast<size_t>(width) * height);
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < height; ++y) {
            // Unit square centred in the frame, y pointing up.
            const double u = (x + 0.5 - width / 2.0) / (width / 2.0);
            const double v = (height / 2.0 - y - 0.5) / (width / 2.0);
            double value = 0;
            for (const Ellipse& e : kPhantom) {
                const double t = e.degrees * M_PI / 180.0;
                const double du = u - e.x0, dv = v - e.y0;
                const double p = (du * std::cos(t) + dv * std::sin(t)) / e.a;
                const double q = (-du * std::sin(t) + dv * std::cos(t)) / e.b;
                if (p * p + q * q <= 1) value += e.intensity;
            }
            // Column-major: the file runs down the columns.
            bytes[static_cast<size_t>(x) * height + y] = static_cast<char>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
        }
    const QString path = folder + "/demo_phantom_400x640_8bit.raw";
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), static_cast<qint64>(bytes.size())) != static_cast<qint64>(bytes.size()))
        throw std::runtime_error("Cannot write the demo volume to " + path.toStdString());
    return path;
}

} // namespace torvex
