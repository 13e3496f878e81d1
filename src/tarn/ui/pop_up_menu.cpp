#include "tarn/ui/pop_up_menu.h"

#include <QComboBox>

namespace tarn {

QString PopUpMenu::titleShownAt(int position) const {
  if (position < 0) return QString();
  for (std::size_t i = static_cast<std::size_t>(position); i < items.size(); ++i) {
    if (!items[i].separator) return items[i].title;
  }
  return QString();
}

void SetPopUpMenu(QComboBox* comboBox, const PopUpMenu& menu) {
  if (comboBox == nullptr) return;
  comboBox->clear();
  for (const PopUpMenu::Item& item : menu.items) {
    if (item.separator) {
      comboBox->insertSeparator(comboBox->count());
    } else {
      comboBox->addItem(item.title, item.tag);
    }
  }
}

int IndexOfItemWithTag(const QComboBox* comboBox, int tag) {
  if (comboBox == nullptr) return -1;
  for (int i = 0; i < comboBox->count(); ++i) {
    const QVariant data = comboBox->itemData(i);
    // Separators carry no tag.
    if (data.isValid() && data.toInt() == tag) return i;
  }
  return -1;
}

}  // namespace tarn
