// Options for the import fuzz targets, taken from the first bytes of the
// input, so that one input chooses both the options and the file's text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tarn::fuzz {

class OptionBytes {
 public:
  OptionBytes(const std::uint8_t* data, std::size_t size)
      : data_(reinterpret_cast<const char*>(data)), size_(size) {}

  std::uint8_t next() { return used_ < size_ ? static_cast<std::uint8_t>(data_[used_++]) : 0; }
  // What is left, the file's text.
  std::string_view rest() const { return std::string_view(data_ + used_, size_ - used_); }

  std::string dateFormat() {
    static constexpr const char* kFormats[] = {"%m/%d/%y", "%d/%m/%Y", "%Y/%m/%d", "%m/%d",
                                               "%y/%m/%d", "%e %b %Y", "%j/%y",    "",
                                               "%m/%Y/%d", "%Y%m%d",   "%d.%m.%y", "y"};
    return kFormats[next() % std::size(kFormats)];
  }
  std::pair<std::string, std::string> separators() {
    static constexpr std::pair<const char*, const char*> kSeparators[] = {
        {".", ","},  {",", "."}, {",", " "},          {"", ""},
        {"ab", "x"}, {"'", "'"}, {"\u066b", "\u066c"}};
    const auto& chosen = kSeparators[next() % std::size(kSeparators)];
    return {chosen.first, chosen.second};
  }
  // -1 to 3: every field, and a value that drops the line.
  std::int32_t swapOption() { return static_cast<std::int32_t>(next() % 5) - 1; }

 private:
  const char* data_;
  std::size_t size_;
  std::size_t used_ = 0;
};

}  // namespace tarn::fuzz
