#pragma once

#include <string>

#include "host/page/signal_history.h"
#include "host/report.h"

/// One self-contained HTML page about a cleaned recording: pictures of all of it, sounds, levels and events. At most
/// 1 MB for a recording of any length. Throws Failure.
std::string ReportPage(const Report& report, const SignalHistory& history);
