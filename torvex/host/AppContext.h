#pragma once

// The host's side of the Import Data tool's host interface: the tool owns the
// interface, the host provides the context and workspace that fill it.
#include "toolboxes/importData/model/AppContext.h"
