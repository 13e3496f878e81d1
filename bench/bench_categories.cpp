// Loading, flattening and searching a large category tree.
#include <benchmark/benchmark.h>

#include <cctype>
#include <string>

#include "tarn/model/category.h"

namespace {

tarn::plist::Value CategoryDictionary(std::string name, int number, tarn::plist::Array children) {
  tarn::plist::Value dictionary;
  dictionary.set("name", std::move(name));
  dictionary.set("number", number);
  dictionary.set("children", std::move(children));
  return dictionary;
}

// `width` top-level categories under one root, each with `width` children.
tarn::plist::Value CategoryTree(int width) {
  tarn::plist::Array top;
  int number = 1;
  for (int i = width; i > 0; --i) {  // reversed, so loading has to sort
    tarn::plist::Array children;
    for (int j = width; j > 0; --j) {
      children.push_back(CategoryDictionary("Sub " + std::to_string(j), number++, {}));
    }
    top.push_back(CategoryDictionary("Cat " + std::to_string(i), number++, std::move(children)));
  }
  return CategoryDictionary("Root", 0, std::move(top));
}

void BM_LoadCategoryTree(benchmark::State& state) {
  const auto tree = CategoryTree(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(tarn::TARNAccountEntryCategory::initWithDictionary(tree));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0));
}
BENCHMARK(BM_LoadCategoryTree)->Arg(30)->Arg(100);

void BM_AllChildren(benchmark::State& state) {
  const auto root = tarn::TARNAccountEntryCategory::initWithDictionary(
      CategoryTree(static_cast<int>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(root->allChildren());
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0));
}
BENCHMARK(BM_AllChildren)->Arg(100);

// The worst case: the last category in pre-order, found case-insensitively.
void BM_ChildWithFullNameLast(benchmark::State& state) {
  const int width = static_cast<int>(state.range(0));
  const auto root = tarn::TARNAccountEntryCategory::initWithDictionary(CategoryTree(width));
  std::string last = root->allChildren().back()->fullName();
  for (char& c : last) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (auto _ : state) benchmark::DoNotOptimize(root->childWithFullName(last));
  state.SetItemsProcessed(state.iterations() * width * width);
}
BENCHMARK(BM_ChildWithFullNameLast)->Arg(100);

void BM_AddChildren(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    auto parent = std::make_shared<tarn::TARNAccountEntryCategory>();
    for (int i = count; i > 0; --i) {
      auto child = std::make_shared<tarn::TARNAccountEntryCategory>();
      child->setName("Child " + std::to_string(i));
      parent->addChild(std::move(child));
    }
    benchmark::DoNotOptimize(parent);
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_AddChildren)->Arg(200);

}  // namespace
