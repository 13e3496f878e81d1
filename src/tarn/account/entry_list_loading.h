// Loading of entry and schedule lists from their stored arrays, shared by the
// account and its folders so that both log the same lines.
// Internal to the account module: not installed.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntry;
class TARNAccountSchedule;

// The entries of an array of entry dictionaries, in order. nullopt (and the
// "Invalid theArray" line) for a value that is not an array; an element that
// is no dictionary is logged and skipped, one whose entry does not load is
// skipped silently.
std::optional<std::vector<std::shared_ptr<TARNAccountEntry>>> LoadEntryList(
    const plist::Value& array);
// The same for schedule dictionaries, with the schedule loader's wording.
std::optional<std::vector<std::shared_ptr<TARNAccountSchedule>>> LoadScheduleList(
    const plist::Value& array);

}  // namespace tarn
