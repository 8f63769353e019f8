#pragma once

#include <QString>

class QCoreApplication;

namespace torvex {

// What the host's command line asks for.
struct StartOptions {
    QString path;        // a raw file or a folder; empty for the demo volume
    bool folder = false; // PATH is a folder of images, Image Sequence only
    bool guess = false;  // a raw PATH takes the layout Guess finds
    bool import = false; // the first load's entry goes into the workspace, as Import does
    QString script;      // a Python file run in the workspace once that is done
    bool quit = false;   // exit after the script: 0, or 1 when it failed
};

// Answers --help and --version and ends the process; returns for any other
// line. Called before the application object: neither needs a display
// (--help-all, which lists Qt's own options too, is left to the application).
void answerHelpOrVersion(int argc, char* argv[]);

// The options of the application's command line. A line that cannot be run
// (an unknown option, a PATH that is not there) ends the process with status 1
// and says why on stderr.
StartOptions readStartOptions(const QCoreApplication& app);

} // namespace torvex
