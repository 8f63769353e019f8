#include "PythonProcess.h"

#include <QProcess>

namespace torvex {

PythonRun runPython(const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.start(qEnvironmentVariable("TORVEX_TEST_PYTHON", "/usr/bin/python3"), arguments);
    if (!process.waitForStarted()) return {-1, {}, process.errorString().toUtf8()};
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(300'000);
    const int exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {exitCode, process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace torvex
