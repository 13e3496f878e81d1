#pragma once

#include <string>
#include <vector>

#include "tarn/platform/log.h"

namespace tarn {

// Collects log lines while alive, then puts the old sink back.
class LogCapture {
 public:
  LogCapture()
      : previous_(SetLogSink([this](std::string_view line) { lines.emplace_back(line); })) {}
  ~LogCapture() { SetLogSink(previous_); }
  std::vector<std::string> lines;

 private:
  LogSink previous_;
};

}  // namespace tarn
