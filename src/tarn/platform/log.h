// The system log of the library: one line per message. Loading code logs
// missing or malformed keys here; tests capture the lines by replacing the sink.
#pragma once

#include <functional>
#include <string_view>

namespace tarn {

using LogSink = std::function<void(std::string_view line)>;

// Writes one line to the current sink (standard error by default).
void Log(std::string_view line);
// Replaces the sink and returns the previous one. An empty function restores
// the standard-error sink.
LogSink SetLogSink(LogSink sink);

}  // namespace tarn
