// torvex [PATH] | torvex --folder PATH: the stand-in host with the Import Data tool.
#include "DemoVolume.h"
#include "HostWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTemporaryDir>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("torvex");

    QCommandLineParser parser;
    parser.setApplicationDescription("Torvex with the Import Data tool");
    parser.addHelpOption();
    parser.addOption({"folder", "Open PATH as a folder of images (Image Sequence only)."});
    parser.addPositionalArgument("PATH", "A raw file or a folder to open; none opens a demo volume.");
    parser.process(app);

    QString path = parser.positionalArguments().value(0);
    QTemporaryDir demoFolder;
    if (path.isEmpty()) {
        try {
            path = torvex::writeDemoVolume(demoFolder.path());
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s\n", e.what());
        }
    }
    torvex::HostWindow window(path, parser.isSet("folder"));
    window.show();
    return app.exec();
}
