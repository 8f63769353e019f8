#pragma once

// The window's form, generated from ImportDataForm.ui: Ui::ImportData with
// every widget as a named member.
#include "ui_ImportDataForm.h"
