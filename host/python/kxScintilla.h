#pragma once

// The editor's headers are written with Qt's short keywords, which are switched off everywhere else.
#define signals Q_SIGNALS
#define slots Q_SLOTS
#include <Qsci/qscilexerpython.h>
#include <Qsci/qsciscintilla.h>
#undef slots
#undef signals
