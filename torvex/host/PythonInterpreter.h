#pragma once

#include <QString>

namespace torvex {

// The one CPython interpreter of this process, with NumPy. Started on first
// use from the thread that calls this first (the GUI thread), which then
// releases the GIL: every later use takes it. It is never finalized, since
// NumPy cannot be loaded twice into one process. Returns an empty text when
// the interpreter runs, else why it could not start (the same every call).
QString startPythonInterpreter();

} // namespace torvex
