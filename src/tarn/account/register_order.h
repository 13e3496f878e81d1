// The register's reading order (date, then checks by check number ahead of
// other entries, then entry number) as a flat key, so that long lists sort
// without calling back into each entry. The entries are borrowed, not owned.
// Internal to the account module: not installed.
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
  std::int32_t nonCheck;     // 0 for a check, 1 otherwise: checks first
  std::int32_t checkNumber;  // compared only between checks (0 otherwise)
  std::int32_t number;
  std::uint32_t position;  // list position: equal entry numbers keep list order
  TARNAccountEntry* entry;

  friend bool operator<(const RegisterOrderKey& a, const RegisterOrderKey& b) {
    return std::tie(a.date, a.nonCheck, a.checkNumber, a.number, a.position) <
           std::tie(b.date, b.nonCheck, b.checkNumber, b.number, b.position);
  }
};

inline RegisterOrderKey MakeRegisterOrderKey(TARNAccountEntry& entry, std::uint32_t position) {
  const bool check = entry.IsCheck();
  return {entry.GetDate(),   check ? 0 : 1, check ? entry.GetCheckNumber() : 0,
          entry.GetNumber(), position,      &entry};
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
