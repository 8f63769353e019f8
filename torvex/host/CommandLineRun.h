#pragma once

#include "CommandLine.h"

#include <QObject>

namespace torvex {

class HostWindow;

// Does what the command line asks of the open window, in this order, once
// the first load of PATH has ended: Guess, Import, the script, the exit.
// The script's output also goes to stdout, for logs and shell pipes.
class CommandLineRun : public QObject {
    Q_OBJECT
public:
    CommandLineRun(HostWindow& window, StartOptions options);

private:
    void afterFirstLoad();
    void importEntry();
    void runScript();
    // Ends the application with `status` if --quit asked for it.
    void finish(int status);

    HostWindow& window_;
    StartOptions options_;
    QList<QMetaObject::Connection> loadWatch_;
};

} // namespace torvex
