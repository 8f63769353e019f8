#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace torvex {

struct PythonRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs the interpreter that generated code must satisfy (TORVEX_TEST_PYTHON,
// else /usr/bin/python3) with input on stdin, and waits for it to end.
PythonRun runPython(const QStringList& arguments, const QByteArray& input = {});

// The folder of these tests' sources, with the checker scripts and data.
inline QString loadFunctionTestDir()
{
    return QStringLiteral(LOADFUNCTION_TEST_DIR);
}

} // namespace torvex
