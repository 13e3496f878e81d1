#include "tarn/account/account_folder.h"

#include <utility>

#include "tarn/account/entry_list_loading.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/localized.h"

namespace tarn {

TARNAccountFolder::TARNAccountFolder() : name_(Localized("Untitled")) {}

std::shared_ptr<TARNAccountFolder> TARNAccountFolder::initWithDictionary(
    const plist::Value& dictionary) {
  if (!dictionary.isNil() && !dictionary.isDictionary()) return nullptr;
  auto folder = std::make_shared<TARNAccountFolder>();
  if (const plist::Value* entries = dictionary.find("entries")) folder->InitEntries(*entries);
  if (const plist::Value* name = dictionary.find("name"); name && name->isString()) {
    folder->setName(name->stringValue());
  }
  return folder;
}

plist::Value TARNAccountFolder::asDictionary() const {
  plist::Array entries;
  entries.reserve(entries_.size());
  for (const auto& entry : entries_) entries.push_back(entry->asDictionary());
  plist::Dictionary dictionary;
  dictionary.emplace("entries", std::move(entries));
  dictionary.emplace("name", name_);
  return plist::Value(std::move(dictionary));
}

const TARNAccountFolder::Entries* TARNAccountFolder::InitEntries(const plist::Value& array) {
  auto entries = LoadEntryList(array);
  if (!entries) return nullptr;
  entries_ = std::move(*entries);
  return &entries_;
}

void TARNAccountFolder::setName(std::optional<std::string> name) {
  name_ = name ? std::move(*name) : Localized("Untitled");
}

double TARNAccountFolder::total() const {
  double total = 0.0;
  for (const auto& entry : entries_) {
    if (!entry->GetVoid()) total += entry->GetAmount();
  }
  return total;
}

}  // namespace tarn
