// torvex_icon_sizes DIR ID SIZE...: writes the window's icon as DIR/<S>x<S>/apps/ID.png for each size S,
// the layout of an icon theme's folder.
#include "toolboxes/importData/ImportData.h"

#include <QDir>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>

#include <cstdio>

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: %s DIR ID SIZE...\n", argv[0]);
        return 2;
    }
    const QIcon icon = torvex::ImportData::getIcon("windowIcon");
    // The icon exists at one size: each size is that picture scaled, smoothly.
    const QImage source = icon.pixmap(icon.availableSizes().value(0)).toImage();
    for (const QString& size : args.mid(3)) {
        const int pixels = size.toInt();
        const QString folder = args[1] + "/" + size + "x" + size + "/apps";
        const QString file = folder + "/" + args[2] + ".png";
        if (pixels <= 0 || !QDir().mkpath(folder) ||
            !source.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(file)) {
            std::fprintf(stderr, "Cannot write the %s pixel icon to %s\n", qPrintable(size), qPrintable(file));
            return 1;
        }
    }
    return 0;
}
