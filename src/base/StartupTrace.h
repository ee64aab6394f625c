#pragma once

namespace velmar {

/// With VELMAR_STARTUP_TRACE set in the environment, prints "[Startup] <ms> <phase>": the time
/// since the process started (to the 10 ms the kernel records it in; the differences between
/// phases are exact). Without it, does nothing. Any thread.
void traceStartup(const char* phase);

} // namespace velmar
