// The assertion handler through which the ui data sources report a caller's
// broken precondition ("Invalid parameter not satisfying: ..."). The default
// handler writes the report to the log; tests and hosts replace it. After a
// report the operation is abandoned: it changes nothing and returns an empty
// value, so that a bad row never reads or writes past an array.
#pragma once

#include <functional>
#include <string>

namespace tarn {

struct AssertionFailure {
  std::string condition;  // the condition as written, e.g. "theNumberOfRows > -1"
  std::string method;     // the operation that checked it
  std::string file;       // the source file the check is attributed to
  int line = 0;

  // "Invalid parameter not satisfying: <condition>"
  std::string message() const;
};

using AssertionHandler = std::function<void(const AssertionFailure&)>;

// Installs a handler (an empty one restores the default) and returns the one
// it replaces.
AssertionHandler SetAssertionHandler(AssertionHandler handler);

// Hands a failure to the current handler.
void ReportAssertionFailure(const AssertionFailure& failure);

}  // namespace tarn
