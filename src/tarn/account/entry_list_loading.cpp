#include "tarn/account/entry_list_loading.h"

#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/platform/log.h"

namespace tarn {

namespace {

template <typename Record>
std::optional<std::vector<std::shared_ptr<Record>>> LoadList(const plist::Value& array,
                                                             std::string_view invalidArray,
                                                             std::string_view invalidElement) {
  if (!array.isArray()) {
    Log(invalidArray);
    return std::nullopt;
  }
  const plist::Array& elements = array.arrayValue();
  std::vector<std::shared_ptr<Record>> records;
  records.reserve(elements.size());
  for (const plist::Value& element : elements) {
    if (!element.isDictionary()) {
      Log(invalidElement);
      continue;
    }
    if (auto record = Record::initWithDictionary(element)) records.push_back(std::move(record));
  }
  return records;
}

}  // namespace

std::optional<std::vector<std::shared_ptr<TARNAccountEntry>>> LoadEntryList(
    const plist::Value& array) {
  return LoadList<TARNAccountEntry>(array,
                                    "Invalid theArray supplied to -[TARNAccount InitEntries]",
                                    "Invalid theValue encountered in -[TARNAccount InitEntries]");
}

std::optional<std::vector<std::shared_ptr<TARNAccountSchedule>>> LoadScheduleList(
    const plist::Value& array) {
  return LoadList<TARNAccountSchedule>(
      array, "Invalid theArray supplied to TARNAccount:InitSchedules",
      "Invalid theDictionary encountered in TARNAccount:InitSchedules");
}

}  // namespace tarn
