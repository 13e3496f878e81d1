// The items of a pop-up menu as the panels build them (a title and a tag per
// item, separators between groups), and their transfer into a combo box,
// where each item's tag is its Qt::UserRole data. A separator takes a
// position of its own, as it does in the menu.
#pragma once

#include <QString>
#include <vector>

class QComboBox;

namespace tarn {

struct PopUpMenu {
  struct Item {
    QString title;
    int tag = 0;
    bool separator = false;
  };

  QString title;
  bool autoenablesItems = true;
  std::vector<Item> items;

  void addItem(QString itemTitle, int tag) { items.push_back({std::move(itemTitle), tag, false}); }
  void addSeparator() { items.push_back({QString(), 0, true}); }
  // The title shown for a position: a separator shows the item after it
  // (a row set to "just past the last category" reads "None"); a position
  // outside the menu shows nothing.
  QString titleShownAt(int position) const;
};

// Replaces the combo box's items by the menu's.
void SetPopUpMenu(QComboBox* comboBox, const PopUpMenu& menu);
// The position of the first item with the tag; -1 when none has it.
int IndexOfItemWithTag(const QComboBox* comboBox, int tag);

}  // namespace tarn
