// The account's lists: the register's entries, the schedules, the folders
// and the smart folders.
#include <algorithm>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"

namespace tarn {

namespace {

template <typename List, typename Item>
void AddUnlessPresent(List& list, Item item) {
  if (item && std::find(list.begin(), list.end(), item) == list.end()) {
    list.push_back(std::move(item));
  }
}

template <typename List>
void RemoveAtIndex(List& list, std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= list.size()) return;
  list.erase(list.begin() + index);
}

}  // namespace

void TARNAccount::SetEntries(Entries entries) {
  entries_ = std::move(entries);
  for (const auto& entry : entries_) entry->SetAccount(this);
}

void TARNAccount::SetSchedules(Schedules schedules) {
  schedules_ = std::move(schedules);
  for (const auto& schedule : schedules_) schedule->SetAccount(this);
}

void TARNAccount::AddEntry(const std::shared_ptr<TARNAccountEntry>& entry) {
  if (!entry) return;
  entry->SetAccount(this);
  if (auto selected = folder()) {
    selected->entries().push_back(entry);
  } else {
    entries_.push_back(entry);
  }
}

void TARNAccount::RemoveEntry(const std::shared_ptr<TARNAccountEntry>& entry) {
  if (!entry) return;
  if (auto found = std::find(entries_.begin(), entries_.end(), entry); found != entries_.end()) {
    entries_.erase(found);
    return;
  }
  for (const auto& each : folders_) std::erase(each->entries(), entry);
}

void TARNAccount::addSmartFolder(std::shared_ptr<TARNFilter> smartFolder) {
  AddUnlessPresent(smartFolders_, std::move(smartFolder));
}

void TARNAccount::removeSmartFolder(const std::shared_ptr<TARNFilter>& smartFolder) {
  std::erase(smartFolders_, smartFolder);
}

void TARNAccount::removeSmartFolderAtIndex(std::int32_t index) {
  RemoveAtIndex(smartFolders_, index);
}

void TARNAccount::addFolder(std::shared_ptr<TARNAccountFolder> folder) {
  AddUnlessPresent(folders_, std::move(folder));
}

void TARNAccount::removeFolder(const std::shared_ptr<TARNAccountFolder>& folder) {
  std::erase(folders_, folder);
}

void TARNAccount::removeFolderAtIndex(std::int32_t index) {
  RemoveAtIndex(folders_, index);
}

void TARNAccount::SetFolders(Folders folders) {
  folders_ = std::move(folders);
  std::erase(folders_, nullptr);
  for (const auto& each : folders_) {
    for (const auto& entry : each->entries()) entry->SetAccount(this);
  }
}

}  // namespace tarn
