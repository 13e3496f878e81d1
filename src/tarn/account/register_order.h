// The register's reading order (date, then checks by check number ahead of
// other entries, then entry number) as a flat key, so that long lists sort
// without calling back into each entry. The entries are borrowed, not owned.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <tuple>
#include <vector>

#include "tarn/model/account_entry.h"

namespace tarn {

struct RegisterOrderKey {
  DateNumber date;
  std::int32_t number;
  std::int64_t checkOrder;  // TARNAccountEntry::CheckOrderKey: checks first
  std::uint32_t position;   // list position: equal entry numbers keep list order
  TARNAccountEntry* entry;

  friend bool operator<(const RegisterOrderKey& a, const RegisterOrderKey& b) {
    return std::tie(a.date, a.checkOrder, a.number, a.position) <
           std::tie(b.date, b.checkOrder, b.number, b.position);
  }
};

inline RegisterOrderKey MakeRegisterOrderKey(TARNAccountEntry& entry, std::uint32_t position) {
  return {entry.GetDate(), entry.GetNumber(), entry.CheckOrderKey(), position, &entry};
}

// The entries in the order of DatePrimaryCheckSecondaryIsGreaterThan, ties of
// that comparator (equal entry numbers) in list order. Null entries are left out.
inline std::vector<RegisterOrderKey> SortedInRegisterOrder(
    const std::vector<std::shared_ptr<TARNAccountEntry>>& entries) {
  std::vector<RegisterOrderKey> keys;
  keys.reserve(entries.size());
  std::uint32_t position = 0;
  for (const auto& entry : entries) {
    if (entry) keys.push_back(MakeRegisterOrderKey(*entry, position));
    ++position;
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

}  // namespace tarn
