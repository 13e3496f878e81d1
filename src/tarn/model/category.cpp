#include "tarn/model/category.h"

#include <algorithm>
#include <utility>

#include "tarn/platform/text.h"

namespace tarn {

namespace {

bool NameSortsBefore(const std::shared_ptr<TARNAccountEntryCategory>& a,
                     const std::shared_ptr<TARNAccountEntryCategory>& b) {
  return a->nameIsGreaterThan(*b) < 0;
}

}  // namespace

TARNAccountEntryCategory::~TARNAccountEntryCategory() {
  // Children that outlive the receiver (held elsewhere) must not point at it.
  for (const auto& child : children_) {
    if (child && child->parent_ == this) child->parent_ = nullptr;
  }
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::initWithDictionary(
    const plist::Value& dictionary) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->loadDictionary(dictionary);
  return category;
}

void TARNAccountEntryCategory::loadDictionary(const plist::Value& dictionary) {
  if (!dictionary.isDictionary()) return;
  if (const plist::Value* name = dictionary.find("name"); name && name->isString()) {
    setName(name->stringValue());
  }
  // A missing number reads as 0, not init's -1: the setter always runs.
  const plist::Value* number = dictionary.find("number");
  setNumber(number ? number->intValue() : 0);
  // "parent" is not read: a property list cannot hold a category, and the
  // tree itself gives every child its parent below.
  const plist::Value* children = dictionary.find("children");
  if (!children || !children->isArray()) return;
  // New children have no old parent, so appending them all and sorting once
  // ends exactly where one addChild per child would, without a sort per child.
  const plist::Array& childDictionaries = children->arrayValue();
  children_.reserve(children_.size() + childDictionaries.size());
  for (const plist::Value& childDictionary : childDictionaries) {
    if (!childDictionary.isDictionary()) continue;
    auto child = newChildWithDictionary(childDictionary);
    child->parent_ = this;
    children_.push_back(std::move(child));
  }
  sortOwnChildren();
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::newChildWithDictionary(
    const plist::Value& dictionary) const {
  return TARNAccountEntryCategory::initWithDictionary(dictionary);
}

plist::Value TARNAccountEntryCategory::asDictionary() const {
  plist::Array children;
  children.reserve(children_.size());
  for (const auto& child : children_) children.push_back(child->asDictionary());
  plist::Dictionary dictionary;
  dictionary.emplace("name", name_);
  dictionary.emplace("number", std::int64_t{number_});
  dictionary.emplace("children", std::move(children));
  return dictionary;
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::copy() const {
  return TARNAccountEntryCategory::initWithDictionary(asDictionary());
}

void TARNAccountEntryCategory::setName(std::optional<std::string> name) {
  if (name) name_ = std::move(*name);
}

std::vector<TARNAccountEntryCategory*> TARNAccountEntryCategory::parents() const {
  std::vector<TARNAccountEntryCategory*> ancestors;
  for (TARNAccountEntryCategory* above = parent_; above; above = above->parent_) {
    ancestors.push_back(above);
  }
  std::reverse(ancestors.begin(), ancestors.end());
  return ancestors;
}

void TARNAccountEntryCategory::adopt(std::shared_ptr<TARNAccountEntryCategory> child,
                                     Children::iterator where) {
  children_.insert(where, child);
  // The old parent may be the receiver itself: then every occurrence goes,
  // the one just inserted included, and the child is left out of the list.
  if (TARNAccountEntryCategory* oldParent = child->parent_) oldParent->removeChild(child);
  child->parent_ = this;
  sortOwnChildren();
}

void TARNAccountEntryCategory::addChild(std::shared_ptr<TARNAccountEntryCategory> child) {
  if (!child) return;
  adopt(std::move(child), children_.end());
}

void TARNAccountEntryCategory::insertChild(std::shared_ptr<TARNAccountEntryCategory> child,
                                           int64_t index) {
  if (!child || index < 0 || index > static_cast<int64_t>(children_.size())) return;
  adopt(std::move(child), children_.begin() + index);
}

void TARNAccountEntryCategory::removeChildAtIndex(int64_t index) {
  if (index < 0 || index >= static_cast<int64_t>(children_.size())) return;
  children_.erase(children_.begin() + index);
}

void TARNAccountEntryCategory::removeChild(const std::shared_ptr<TARNAccountEntryCategory>& child) {
  // Compare by address: `child` may be a reference into children_ itself.
  const TARNAccountEntryCategory* target = child.get();
  std::erase_if(children_, [target](const auto& each) { return each.get() == target; });
}

TARNAccountEntryCategory::Children TARNAccountEntryCategory::allChildren() const {
  Children descendants;
  appendDescendants(descendants);
  return descendants;
}

void TARNAccountEntryCategory::appendDescendants(Children& out) const {
  for (const auto& child : children_) {
    out.push_back(child);
    child->appendDescendants(out);
  }
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::childWithName(
    std::optional<std::string_view> name) const {
  if (!name) return nullptr;
  for (const auto& child : children_) {
    if (CaseInsensitiveEqual(child->name_, *name)) return child;
  }
  return nullptr;
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::childWithFullName(
    std::optional<std::string_view> fullName) const {
  if (!fullName) return nullptr;
  std::string path = this->fullName();
  if (CaseInsensitiveEqual(path, *fullName)) {
    return std::const_pointer_cast<TARNAccountEntryCategory>(weak_from_this().lock());
  }
  return findDescendantByFullName(path, *fullName);
}

std::shared_ptr<TARNAccountEntryCategory> TARNAccountEntryCategory::findDescendantByFullName(
    std::string& path, std::string_view fullName) const {
  // One buffer grows and shrinks along the walk instead of a full name per node.
  const size_t base = path.size();
  for (const auto& child : children_) {
    path += ':';
    path += child->name_;
    if (CaseInsensitiveEqual(path, fullName)) return child;
    if (auto found = child->findDescendantByFullName(path, fullName)) return found;
    path.resize(base);
  }
  return nullptr;
}

std::string TARNAccountEntryCategory::fullName() const {
  std::vector<const TARNAccountEntryCategory*> path;
  size_t length = 0;
  for (const TARNAccountEntryCategory* node = this; node; node = node->parent_) {
    path.push_back(node);
    length += node->name_.size() + 1;
  }
  std::string joined;
  joined.reserve(length);
  for (auto it = path.rbegin(); it != path.rend(); ++it) {
    if (it != path.rbegin()) joined += ':';
    joined += (*it)->name_;
  }
  return joined;
}

void TARNAccountEntryCategory::sortOwnChildren() {
  std::stable_sort(children_.begin(), children_.end(), NameSortsBefore);
}

void TARNAccountEntryCategory::sortChildren() {
  sortOwnChildren();
  for (const auto& child : children_) child->sortChildren();
}

int TARNAccountEntryCategory::nameIsGreaterThan(const TARNAccountEntryCategory& other) const {
  return CaseInsensitiveCompare(name_, other.name_);
}

std::shared_ptr<TARNEditingAccountEntryCategory>
TARNEditingAccountEntryCategory::initWithDictionary(const plist::Value& dictionary) {
  auto category = std::make_shared<TARNEditingAccountEntryCategory>();
  category->loadDictionary(dictionary);
  return category;
}

std::shared_ptr<TARNAccountEntryCategory> TARNEditingAccountEntryCategory::newChildWithDictionary(
    const plist::Value& dictionary) const {
  return TARNEditingAccountEntryCategory::initWithDictionary(dictionary);
}

}  // namespace tarn
