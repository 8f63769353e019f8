// torvex [--script FILE] [PATH] | torvex --folder PATH: the stand-in host with the Import Data tool.
#include "DemoVolume.h"
#include "HostWindow.h"
#include "PythonConsole.h"
#include "PythonWorkspaceManager.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("torvex");

    QCommandLineParser parser;
    parser.setApplicationDescription("Torvex with the Import Data tool");
    parser.addHelpOption();
    parser.addOption({"folder", "Open PATH as a folder of images (Image Sequence only)."});
    parser.addOption({"script", "Run the Python FILE in the workspace once the window is up and PATH is open.", "FILE"});
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
    if (parser.isSet("script")) {
        // A scripted session also prints what the workspace's Python prints, for logs and tests.
        auto* workspace = qobject_cast<torvex::PythonWorkspaceManager*>(
            window.appContext()->get_component("workspace_manager"));
        if (!workspace->unavailableReason().isEmpty())
            std::fprintf(stderr, "%s\n", qPrintable(workspace->unavailableReason()));
        QObject::connect(workspace, &torvex::PythonWorkspaceManager::output, [](const QString& text) {
            std::fputs(text.toLocal8Bit().constData(), stdout);
            std::fflush(stdout);
        });
        // From the event loop, so that the window has painted before the script starts.
        QTimer::singleShot(0, &window, [&window, script = parser.value("script")] {
            window.pythonConsole()->runScript(script);
        });
    }
    return app.exec();
}
