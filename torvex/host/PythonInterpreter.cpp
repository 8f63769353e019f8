#include <pybind11/embed.h>

#include "PythonInterpreter.h"

namespace py = pybind11;

namespace torvex {

namespace {

QString statusText(const PyStatus& status)
{
    QString text = status.err_msg ? QString::fromUtf8(status.err_msg) : QString("unknown failure");
    if (status.func) text = QString::fromUtf8(status.func) + ": " + text;
    return text;
}

QString start()
{
    PyConfig config;
    PyConfig_InitPythonConfig(&config);
    // The host owns Ctrl+C and the process's signals, not the interpreter.
    config.install_signal_handlers = 0;
    config.parse_argv = 0;
    // The interpreter finds its library next to the program it names: this
    // build's interpreter, not whichever python3 comes first on PATH.
    PyStatus status = PyConfig_SetBytesString(&config, &config.program_name, TORVEX_PYTHON_EXECUTABLE);
    if (!PyStatus_Exception(status)) status = Py_InitializeFromConfig(&config);
    PyConfig_Clear(&config);
    if (PyStatus_Exception(status)) return "Python could not start (" + statusText(status) + ")";
    QString failure;
    try {
        py::module_::import("numpy");
    } catch (const py::error_already_set& e) {
        failure = QString("NumPy could not be imported in Python ") + Py_GetVersion() + ": " + e.what();
    }
    PyEval_SaveThread();
    return failure;
}

} // namespace

QString startPythonInterpreter()
{
    static const QString failure = start();
    return failure;
}

} // namespace torvex
