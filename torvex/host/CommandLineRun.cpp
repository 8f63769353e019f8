#include "CommandLineRun.h"

#include "HostWindow.h"
#include "PythonConsole.h"
#include "PythonWorkspaceManager.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/volume/FileNameText.h"

#include <QCoreApplication>
#include <QListWidget>
#include <QTimer>

#include <cstdio>

namespace torvex {

namespace {

void printError(const QString& text) { std::fprintf(stderr, "torvex: %s\n", qPrintable(text)); }

} // namespace

CommandLineRun::CommandLineRun(HostWindow& window, StartOptions options)
    : QObject(&window), window_(window), options_(std::move(options))
{
    // A folder's images load in the background: what follows waits for them.
    ImageLoad& load = window_.importData()->session().load;
    if (!load.running()) {
        // From the event loop, so that the window has painted first.
        QTimer::singleShot(0, this, &CommandLineRun::afterFirstLoad);
        return;
    }
    loadWatch_ << connect(&load, &ImageLoad::finished, this, &CommandLineRun::afterFirstLoad)
               << connect(&load, &ImageLoad::error, this, [this](int, const QString& message) {
                      printError("cannot load " + printablePath(options_.path) + ": " + message);
                      if (options_.quit) return finish(1);
                      afterFirstLoad();
                  });
}

void CommandLineRun::afterFirstLoad()
{
    for (const QMetaObject::Connection& c : std::as_const(loadWatch_)) disconnect(c);
    loadWatch_.clear();
    ImportData* tool = window_.importData();
    // As a click of the button would: Guess is the window's own handler.
    if (options_.guess && tool->readedBinary) tool->ui->pushButton_guess->click();
    if (options_.import) importEntry();
    if (options_.script.isEmpty()) return finish(0);
    runScript();
}

void CommandLineRun::importEntry()
{
    ImportData* tool = window_.importData();
    // An empty list would ask in a dialog; on the command line it is an error line.
    if (tool->ui->listWidget_data->count() == 0)
        return printError("nothing to import: " + printablePath(options_.path) + " gave no data");
    tool->onImport();
}

void CommandLineRun::runScript()
{
    auto* workspace =
        qobject_cast<PythonWorkspaceManager*>(window_.appContext()->get_component("workspace_manager"));
    connect(workspace, &PythonWorkspaceManager::output, this, [](const QString& text) {
        std::fputs(text.toLocal8Bit().constData(), stdout);
        std::fflush(stdout);
    });
    connect(workspace, &PythonWorkspaceManager::finished, this, [this](bool failed) { finish(failed ? 1 : 0); });
    if (const QString failure = window_.pythonConsole()->runScript(options_.script); !failure.isEmpty()) {
        printError(failure);
        finish(1);
    }
}

void CommandLineRun::finish(int status)
{
    if (options_.quit) QCoreApplication::exit(status);
}

} // namespace torvex
