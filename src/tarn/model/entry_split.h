// The older fixed split of an entry into ten parts, each with a description,
// a party, an amount and an enabled mark. Kept so that account files written
// in that form can be read and converted to line items; owns all its texts.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntrySplit {
 public:
  static constexpr int kPartCount = 10;

  TARNAccountEntrySplit() = default;

  // nullptr for nullptr, else a new copy through initWithSplit.
  static std::shared_ptr<TARNAccountEntrySplit> splitWithSplit(
      const std::shared_ptr<TARNAccountEntrySplit>& split);
  // Reads "descriptions", "toFrom" (the ten payees, under the singular key)
  // and "amounts"; a missing key or one that is no array is logged.
  static std::shared_ptr<TARNAccountEntrySplit> initWithDictionary(const plist::Value& dictionary);
  // A fresh split, then, for a split given, its dictionary read back in (so the
  // enabled marks, which the dictionary does not hold, are not copied).
  static std::shared_ptr<TARNAccountEntrySplit> initWithSplit(const TARNAccountEntrySplit* split);

  plist::Value asDictionary() const;

  // nullopt is ignored, as is an index outside the ten parts.
  void SetDescription(std::optional<std::string> description, int index);
  void SetToFrom(std::optional<std::string> toFrom, int index);
  // Rounds to cents like the entry's SetAmount; an index above 9 is logged.
  void SetAmount(double amount, int index);
  // Accepts indexes 0 to 10: the eleventh mark is stored and never read.
  void SetEnabled(bool enabled, int index);

  // The empty string for an index outside the ten parts.
  const std::string& GetDescription(int index) const;
  const std::string& GetToFrom(int index) const;
  // 0.0 (respectively false) for an index outside the ten parts.
  double GetAmount(int index) const;
  bool GetEnabled(int index) const;
  // All ten amounts, enabled or not.
  double GetTotal() const;

 private:
  static bool isPart(int index) { return index >= 0 && index < kPartCount; }
  void loadFromDictionary(const plist::Value& dictionary);

  std::array<std::string, kPartCount> descriptions_;
  std::array<std::string, kPartCount> toFroms_;
  std::array<double, kPartCount> amounts_{};
  std::array<std::uint8_t, kPartCount + 1> states_{};
};

}  // namespace tarn
