#include "tarn/model/list_utils.h"

#include <utility>

#include "tarn/platform/localized.h"

namespace tarn {
namespace {

template <typename T>
void bubbleSort(T* values, int count) {
  for (int limit = count - 1; limit >= 1; --limit) {
    for (int i = 0; i < limit; ++i) {
      if (values[i + 1] < values[i]) std::swap(values[i], values[i + 1]);
    }
  }
}

}  // namespace

void BubbleSort_Long(std::int32_t* values, int count) {
  bubbleSort(values, count);
}
void BubbleSort_Float(float* values, int count) {
  bubbleSort(values, count);
}
void BubbleSort_Double(double* values, int count) {
  bubbleSort(values, count);
}

std::string StringsToEnglishList(const std::vector<std::string>& strings) {
  if (strings.empty()) return {};
  std::string list = strings.front();
  if (strings.size() == 1) return list;
  for (std::size_t i = 1; i + 1 < strings.size(); ++i) {
    list += ", ";
    list += strings[i];
  }
  list += ' ';
  list += Localized("and");
  list += ' ';
  list += strings.back();
  return list;
}

}  // namespace tarn
