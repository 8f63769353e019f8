// torvex [--folder] [--guess] [--import] [--script FILE] [--quit] [PATH]: the stand-in host with the
// Import Data tool (--help tells more).
#include "CommandLine.h"
#include "CommandLineRun.h"
#include "DemoVolume.h"
#include "HostWindow.h"

#include <QApplication>
#include <QTemporaryDir>

#include <cstdio>

int main(int argc, char* argv[])
{
    torvex::answerHelpOrVersion(argc, argv);
    QApplication app(argc, argv);
    torvex::StartOptions options = torvex::readStartOptions(app);

    QTemporaryDir demoFolder;
    if (options.path.isEmpty()) {
        try {
            options.path = torvex::writeDemoVolume(demoFolder.path());
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s\n", e.what());
        }
    }
    torvex::HostWindow window(options.path, options.folder);
    window.show();
    new torvex::CommandLineRun(window, options); // a child of the window
    return app.exec();
}
