#pragma once

// The host's side of the Import Data tool's host interface: the tool owns the
// interface, the host provides the context and workspace that fill it.
#include "toolboxes/importData/model/AppContext.h"

namespace torvex {

// Makes every AppContext created afterwards keep its workspace in the embedded
// Python (PythonWorkspaceManager). Where this header is included that is done
// before main, so a plain `AppContext context;` of the host is Python-backed.
bool usePythonWorkspace();
inline const bool pythonWorkspaceInUse = usePythonWorkspace();

} // namespace torvex
