// A category: one node of the account's tree of named categories ("Auto" with
// its child "Fuel" is Auto:Fuel). A node owns its children; its parent is a
// back reference that it does not own. The editing variant is the copy that the
// category editor works on, with a mark for categories that entries use.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntryCategory : public std::enable_shared_from_this<TARNAccountEntryCategory> {
 public:
  using Children = std::vector<std::shared_ptr<TARNAccountEntryCategory>>;

  // Empty name, number -1 (none yet), no children, no parent.
  TARNAccountEntryCategory() = default;
  virtual ~TARNAccountEntryCategory();
  // Copies would share children with the original; use copy().
  TARNAccountEntryCategory(const TARNAccountEntryCategory&) = delete;
  TARNAccountEntryCategory& operator=(const TARNAccountEntryCategory&) = delete;

  // Reads "name", "number" (0 when missing, unlike init's -1) and "children",
  // each child built as a category of the same class as the receiver. A nil or
  // non-dictionary value leaves the defaults. Never nullptr.
  static std::shared_ptr<TARNAccountEntryCategory> initWithDictionary(
      const plist::Value& dictionary);
  // "name", "number" and "children" (always present, in the current order).
  plist::Value asDictionary() const;
  // A deep copy through the dictionary form: always a plain category (also for
  // an editing one), with new children and no parent.
  std::shared_ptr<TARNAccountEntryCategory> copy() const;

  const std::string& name() const { return name_; }
  // Ignores nullopt.
  void setName(std::optional<std::string> name);
  int32_t number() const { return number_; }
  void setNumber(int32_t number) { number_ = number; }
  TARNAccountEntryCategory* parent() const { return parent_; }
  void setParent(TARNAccountEntryCategory* parent) { parent_ = parent; }

  // The ancestors, root first and the direct parent last; empty at the top.
  std::vector<TARNAccountEntryCategory*> parents() const;

  // Appends the child, has its old parent remove it, makes the receiver its
  // parent and re-sorts the children. A child that already belongs to the
  // receiver thus ends up removed, with its parent still the receiver.
  // A nullptr child is ignored.
  void addChild(std::shared_ptr<TARNAccountEntryCategory> child);
  // As addChild, at an index from 0 to the number of children (others and
  // nullptr are ignored); the sort that follows decides the final place.
  void insertChild(std::shared_ptr<TARNAccountEntryCategory> child, int64_t index);
  // Out-of-range indexes are ignored. The removed child keeps its parent.
  void removeChildAtIndex(int64_t index);
  // Removes every occurrence of the child. The removed child keeps its parent.
  void removeChild(const std::shared_ptr<TARNAccountEntryCategory>& child);

  const Children& children() const { return children_; }
  // All descendants, depth-first pre-order (each child, then its own descendants).
  Children allChildren() const;
  // The first direct child whose name equals the text case-insensitively.
  std::shared_ptr<TARNAccountEntryCategory> childWithName(
      std::optional<std::string_view> name) const;
  // The receiver when its own full name equals the text case-insensitively
  // over the whole length, else the first such descendant in pre-order.
  // (A receiver that no shared_ptr owns cannot be returned: nullptr then.)
  std::shared_ptr<TARNAccountEntryCategory> childWithFullName(
      std::optional<std::string_view> fullName) const;
  // The names from the topmost ancestor down to this one, joined with ":".
  std::string fullName() const;

  // Sorts the children by name and recurses into them (used after renaming).
  void sortChildren();
  // Case-insensitive order of the names as -1, 0 or 1.
  int nameIsGreaterThan(const TARNAccountEntryCategory& other) const;

 protected:
  // Reads the dictionary's keys into the receiver (see initWithDictionary).
  void loadDictionary(const plist::Value& dictionary);
  // A new category of the receiver's own class, built from a child dictionary.
  virtual std::shared_ptr<TARNAccountEntryCategory> newChildWithDictionary(
      const plist::Value& dictionary) const;

 private:
  void sortOwnChildren();
  void appendDescendants(Children& out) const;
  std::shared_ptr<TARNAccountEntryCategory> findDescendantByFullName(
      std::string& path, std::string_view fullName) const;
  void adopt(std::shared_ptr<TARNAccountEntryCategory> child, Children::iterator where);

  std::string name_;
  int32_t number_ = -1;
  Children children_;
  TARNAccountEntryCategory* parent_ = nullptr;
};

class TARNEditingAccountEntryCategory : public TARNAccountEntryCategory {
 public:
  // As a category; inUse starts false.
  TARNEditingAccountEntryCategory() = default;
  // As TARNAccountEntryCategory::initWithDictionary, with editing children.
  static std::shared_ptr<TARNEditingAccountEntryCategory> initWithDictionary(
      const plist::Value& dictionary);

  bool inUse() const { return inUse_; }
  void setInUse(bool inUse) { inUse_ = inUse; }

 protected:
  std::shared_ptr<TARNAccountEntryCategory> newChildWithDictionary(
      const plist::Value& dictionary) const override;

 private:
  bool inUse_ = false;
};

}  // namespace tarn
