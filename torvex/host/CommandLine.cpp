#include "CommandLine.h"

#include "toolboxes/importData/volume/FileNameText.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>

namespace torvex {

namespace {

void describeOptions(QCommandLineParser& parser)
{
    QCoreApplication::setApplicationName("torvex");
    QCoreApplication::setApplicationVersion(TORVEX_VERSION);
    QGuiApplication::setDesktopFileName(TORVEX_APP_ID);
    parser.setApplicationDescription(
        "Torvex with the Import Data tool: raw volume files and image sequences become arrays in a Python "
        "workspace.\nBatch use: torvex --import --quit --script stats.py scan.raw (QT_QPA_PLATFORM=offscreen "
        "runs it without a window).");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {"folder", "Open PATH as a folder of images (Image Sequence only)."},
        {"guess", "Open a raw PATH in the layout Guess finds."},
        {"import", "Once PATH is open and loaded, import its entry into the workspace, as Import does."},
        {"script", "Run the Python FILE in the workspace once PATH is open (and imported), printing its output.",
         "FILE"},
        {"quit", "Exit after the script (or the import): status 0, or 1 when the script failed."},
    });
    parser.addPositionalArgument("PATH", "A raw file or a folder to open; none opens a demo volume.");
}

[[noreturn]] void refuse(const QString& message)
{
    std::fprintf(stderr, "torvex: %s\n", qPrintable(message));
    std::exit(1);
}

} // namespace

void answerHelpOrVersion(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    describeOptions(parser);
    // Qt's own options (-platform ...) are unknown here; the full check comes with the application.
    parser.parse(arguments);
    if (parser.isSet("version")) parser.showVersion();
    if (parser.isSet("help")) {
        // Without an application object Qt cannot name the program itself.
        std::fputs(qPrintable(parser.helpText().replace("<executable_name>", "torvex")), stdout);
        std::exit(0);
    }
}

StartOptions readStartOptions(const QCoreApplication& app)
{
    QCommandLineParser parser;
    describeOptions(parser);
    parser.process(app);
    const QStringList paths = parser.positionalArguments();
    if (paths.size() > 1) refuse("one PATH at a time, not " + QString::number(paths.size()));
    StartOptions options{paths.value(0),          parser.isSet("folder"), parser.isSet("guess"),
                         parser.isSet("import"), parser.value("script"), parser.isSet("quit")};
    // Checked here: the window reports a missing source in a dialog, which nobody answers in a batch run.
    if (const QString unreachable = unreachableNameReason(options.path); !unreachable.isEmpty())
        refuse(printablePath(options.path) + ": " + unreachable);
    if (!options.path.isEmpty() && !QFileInfo(options.path).isReadable())
        refuse(printablePath(options.path) + ": no such file or folder, or not readable");
    return options;
}

} // namespace torvex
