#include "tarn/ui/assertion_handler.h"

#include <utility>

#include "tarn/platform/log.h"

namespace tarn {
namespace {

void LogFailure(const AssertionFailure& failure) {
  Log("*** Assertion failure in " + failure.method + ", " + failure.file + ":" +
      std::to_string(failure.line) + ": " + failure.message());
}

AssertionHandler& CurrentHandler() {
  static AssertionHandler handler = LogFailure;
  return handler;
}

}  // namespace

std::string AssertionFailure::message() const {
  return "Invalid parameter not satisfying: " + condition;
}

AssertionHandler SetAssertionHandler(AssertionHandler handler) {
  AssertionHandler old = std::move(CurrentHandler());
  CurrentHandler() = handler ? std::move(handler) : AssertionHandler(LogFailure);
  return old;
}

void ReportAssertionFailure(const AssertionFailure& failure) {
  CurrentHandler()(failure);
}

}  // namespace tarn
