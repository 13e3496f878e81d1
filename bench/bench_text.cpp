// Case-insensitive comparison and search of names: the ASCII path against the
// C library's strcasecmp, accented names, the matcher over many haystacks, and
// sorting a million names.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tarn/platform/text.h"

namespace {

// Payee-like names built from syllables; with `accented`, about half carry
// an accented or folded-expanding letter.
std::vector<std::string> makeNames(size_t count, bool accented, unsigned seed) {
  static const char* const kAscii[] = {"mar", "ket",  "shell", "gas",  "ren",   "tal", "co",
                                       "fee", "bank", "st",    "john", "smith", "wal", "green"};
  static const char* const kAccented[] = {"é", "ü", "ß", "Ö", "ç", "À", "ñ", "Ø"};
  std::mt19937 random(seed);
  std::vector<std::string> names;
  names.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    std::string name;
    const int syllables = 2 + static_cast<int>(random() % 4);
    for (int s = 0; s < syllables; ++s) {
      std::string syllable = kAscii[random() % std::size(kAscii)];
      if (random() % 3 == 0) {
        for (char& c : syllable) c = static_cast<char>(c - 'a' + 'A');
      }
      name += syllable;
      if (accented && random() % 4 == 0) name += kAccented[random() % std::size(kAccented)];
      if (s + 1 < syllables && random() % 3 == 0) name += ' ';
    }
    names.push_back(std::move(name));
  }
  return names;
}

// The same name with its letter case flipped at random: equal, so every byte is read.
std::vector<std::string> caseVariants(const std::vector<std::string>& names, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::string> variants = names;
  for (std::string& name : variants) {
    for (char& c : name) {
      if (random() % 2 && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return variants;
}

constexpr size_t kPairs = 4096;

template <class Compare>
void comparePairs(benchmark::State& state, const std::vector<std::string>& left,
                  const std::vector<std::string>& right, Compare compare) {
  for (auto _ : state) {
    int sum = 0;
    for (size_t i = 0; i < kPairs; ++i) sum += compare(left[i], right[i]);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPairs));
}

const std::vector<std::string>& asciiNames() {
  static const auto names = makeNames(kPairs, false, 1);
  return names;
}
const std::vector<std::string>& otherAsciiNames() {
  static const auto names = makeNames(kPairs, false, 2);
  return names;
}
const std::vector<std::string>& accentedNames() {
  static const auto names = makeNames(kPairs, true, 3);
  return names;
}
const std::vector<std::string>& otherAccentedNames() {
  static const auto names = makeNames(kPairs, true, 4);
  return names;
}

int tarnCompare(const std::string& a, const std::string& b) {
  return tarn::CaseInsensitiveCompare(a, b);
}
int libcCompare(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str());
}

void BM_CompareAsciiNames(benchmark::State& state) {
  comparePairs(state, asciiNames(), otherAsciiNames(), tarnCompare);
}
void BM_StrcasecmpAsciiNames(benchmark::State& state) {
  comparePairs(state, asciiNames(), otherAsciiNames(), libcCompare);
}
void BM_CompareAsciiEqualNames(benchmark::State& state) {
  static const auto variants = caseVariants(asciiNames(), 5);
  comparePairs(state, asciiNames(), variants, tarnCompare);
}
void BM_StrcasecmpAsciiEqualNames(benchmark::State& state) {
  static const auto variants = caseVariants(asciiNames(), 5);
  comparePairs(state, asciiNames(), variants, libcCompare);
}
void BM_CompareAccentedNames(benchmark::State& state) {
  comparePairs(state, accentedNames(), otherAccentedNames(), tarnCompare);
}
void BM_CompareAccentedEqualNames(benchmark::State& state) {
  static const auto variants = caseVariants(accentedNames(), 6);
  comparePairs(state, accentedNames(), variants, tarnCompare);
}
BENCHMARK(BM_CompareAsciiNames);
BENCHMARK(BM_StrcasecmpAsciiNames);
BENCHMARK(BM_CompareAsciiEqualNames);
BENCHMARK(BM_StrcasecmpAsciiEqualNames);
BENCHMARK(BM_CompareAccentedNames);
BENCHMARK(BM_CompareAccentedEqualNames);

// A smart-folder keystroke: one needle over 100,000 descriptions.
void matchAll(benchmark::State& state, const std::vector<std::string>& haystacks,
              const std::string& needle, tarn::TextAnchor anchor) {
  for (auto _ : state) {
    const tarn::CaseInsensitiveMatcher matcher(needle, anchor);
    size_t found = 0;
    for (const std::string& haystack : haystacks) found += matcher.matches(haystack);
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * haystacks.size()));
}
void BM_MatcherContainsAscii(benchmark::State& state) {
  static const auto haystacks = makeNames(100000, false, 7);
  matchAll(state, haystacks, "MART", tarn::TextAnchor::Anywhere);
}
void BM_MatcherContainsAccented(benchmark::State& state) {
  static const auto haystacks = makeNames(100000, true, 8);
  matchAll(state, haystacks, "mart", tarn::TextAnchor::Anywhere);
}
void BM_MatcherStartsWithAccented(benchmark::State& state) {
  static const auto haystacks = makeNames(100000, true, 8);
  matchAll(state, haystacks, "MARé", tarn::TextAnchor::AtStart);
}
void BM_OneShotContainsAccented(benchmark::State& state) {
  static const auto haystacks = makeNames(100000, true, 8);
  for (auto _ : state) {
    size_t found = 0;
    for (const std::string& haystack : haystacks) {
      found += tarn::CaseInsensitiveContains(haystack, "mart");
    }
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * haystacks.size()));
}
BENCHMARK(BM_MatcherContainsAscii)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatcherContainsAccented)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatcherStartsWithAccented)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneShotContainsAccented)->Unit(benchmark::kMillisecond);

void sortNames(benchmark::State& state, const std::vector<std::string>& names) {
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::string> copy = names;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), [](const std::string& a, const std::string& b) {
      return tarn::CaseInsensitiveCompare(a, b) < 0;
    });
    benchmark::DoNotOptimize(copy.data());
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * names.size()));
}
void BM_SortMillionAsciiNames(benchmark::State& state) {
  static const auto names = makeNames(1000000, false, 9);
  sortNames(state, names);
}
void BM_SortMillionAsciiNamesStrcasecmp(benchmark::State& state) {
  static const auto names = makeNames(1000000, false, 9);
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::string> copy = names;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), [](const std::string& a, const std::string& b) {
      return strcasecmp(a.c_str(), b.c_str()) < 0;
    });
    benchmark::DoNotOptimize(copy.data());
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * names.size()));
}
void BM_SortMillionAccentedNames(benchmark::State& state) {
  static const auto names = makeNames(1000000, true, 10);
  sortNames(state, names);
}
BENCHMARK(BM_SortMillionAsciiNames)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_SortMillionAsciiNamesStrcasecmp)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_SortMillionAccentedNames)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
