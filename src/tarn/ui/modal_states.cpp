#include "tarn/ui/modal_states.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <functional>
#include <optional>
#include <typeinfo>
#include <unordered_map>

namespace tarn {
namespace {

const char* const kAutoenablesProperty = "tarnAutoenablesItems";
const char* const kTrackedProperty = "tarnModalStateTracked";

bool IsControl(const QWidget* widget) {
  return qobject_cast<const QAbstractButton*>(widget) != nullptr ||
         qobject_cast<const QComboBox*>(widget) != nullptr ||
         qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
         qobject_cast<const QAbstractSlider*>(widget) != nullptr ||
         qobject_cast<const QLineEdit*>(widget) != nullptr ||
         qobject_cast<const QAbstractItemView*>(widget) != nullptr;
}

bool IsTextField(const QWidget* widget) {
  if (qobject_cast<const QLineEdit*>(widget) != nullptr) return true;
  const auto* comboBox = qobject_cast<const QComboBox*>(widget);
  return comboBox != nullptr && comboBox->isEditable();
}

bool IsTableView(const QWidget* widget) {
  return qobject_cast<const QAbstractItemView*>(widget) != nullptr;
}

// Text fields and table views stay usable during a modal run on purpose.
bool IsModalControl(const QWidget* widget) {
  return !IsTextField(widget) && !IsTableView(widget);
}

// The control's own flag: a control inside a disabled container is not
// enabled on screen, but it is not disabled itself either.
bool OwnEnabledFlag(const QWidget* widget) {
  return !widget->testAttribute(Qt::WA_ForceDisabled);
}

// Calls `visit` for every control below `view` (and for `view` itself when
// asked), depth first in child order. Windows parented to a widget (dialogs,
// menus) are not part of its tree, and a control's children belong to it.
void ForEachControl(QWidget* view, bool includeView, const std::function<void(QWidget*)>& visit) {
  if (includeView && IsControl(view)) {
    visit(view);
    return;
  }
  for (QObject* child : view->children()) {
    auto* widget = qobject_cast<QWidget*>(child);
    if (widget == nullptr || widget->isWindow()) continue;
    ForEachControl(widget, true, visit);
  }
}

// One recorded flag per control and per menu title: a second disable before
// the matching enable records the now-disabled state over the first.
std::unordered_map<const QObject*, bool>* viewModalStates = nullptr;

void ForgetWhenDestroyed(QWidget* widget) {
  if (widget->property(kTrackedProperty).toBool()) return;
  widget->setProperty(kTrackedProperty, true);
  QObject::connect(widget, &QObject::destroyed, [](QObject* object) {
    if (viewModalStates != nullptr) viewModalStates->erase(object);
  });
}

struct MenuState {
  bool autoenablesItems = false;
  bool isEnabled = false;
};
std::unordered_map<QString, MenuState>* menuModalStates = nullptr;
bool menuBarDisabled = false;
QPointer<QMenuBar> mainMenuBar;

QString TitleWithoutMnemonic(const QString& text) {
  QString title;
  title.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] == '&' && i + 1 < text.size()) ++i;  // "&&" is a literal "&"
    title.append(text[i]);
  }
  return title;
}

QList<QAction*> TopLevelItems() {
  QMenuBar* menuBar = MainMenuBar();
  return menuBar != nullptr ? menuBar->actions() : QList<QAction*>();
}

QAction* TopLevelItemWithTitle(const QString& title) {
  for (QAction* item : TopLevelItems()) {
    if (TitleWithoutMnemonic(item->text()) == title) return item;
  }
  return nullptr;
}

void SetItemState(QAction* item, bool enabled, bool autoenables) {
  item->setEnabled(enabled);
  if (item->menu() != nullptr) SetMenuAutoenablesItems(item->menu(), autoenables);
}

void MakeMenuTable() {
  if (menuModalStates == nullptr) menuModalStates = new std::unordered_map<QString, MenuState>();
}

// Titles of the top-level items from the third on.
QStringList TitlesFromThird() {
  QStringList titles;
  const QList<QAction*> items = TopLevelItems();
  for (qsizetype i = 2; i < items.size(); ++i)
    titles.append(TitleWithoutMnemonic(items[i]->text()));
  return titles;
}

}  // namespace

void View_ModalDisable(QWidget* view) {
  if (view == nullptr) return;
  if (viewModalStates == nullptr) viewModalStates = new std::unordered_map<const QObject*, bool>();
  ForEachControl(view, true, [](QWidget* control) {
    if (!IsModalControl(control)) return;
    ForgetWhenDestroyed(control);
    (*viewModalStates)[control] = OwnEnabledFlag(control);
    control->setEnabled(false);
  });
}

void View_ModalEnable(QWidget* view) {
  if (view == nullptr || viewModalStates == nullptr) return;
  ForEachControl(view, true, [](QWidget* control) {
    auto found = viewModalStates->find(control);
    if (found != viewModalStates->end()) control->setEnabled(found->second);
  });
}

void DisableControls(QWidget* view) {
  if (view == nullptr) return;
  ForEachControl(view, false, [](QWidget* control) { control->setEnabled(false); });
}

std::vector<ControlState> SaveControlStates(QWidget* view) {
  std::vector<ControlState> states;
  if (view == nullptr) return states;
  ForEachControl(view, false, [&states](QWidget* control) {
    ControlState state;
    state.object = control;
    state.isEnabled = OwnEnabledFlag(control);
    // The exact class, subclasses without a meta-object of their own included.
    const std::type_info& type = typeid(*control);
    if (type == typeid(QComboBox) && !static_cast<QComboBox*>(control)->isEditable()) {
      state.kind = ControlState::kPopUpButton;
      state.selectedItem = static_cast<QComboBox*>(control)->currentIndex();
    } else if (type == typeid(QCheckBox)) {
      state.kind = ControlState::kButton;
      switch (static_cast<QCheckBox*>(control)->checkState()) {
        case Qt::Checked:
          state.state = 1;
          break;
        case Qt::PartiallyChecked:
          state.state = -1;
          break;
        case Qt::Unchecked:
          state.state = 0;
          break;
      }
    } else if (type == typeid(QPushButton) || type == typeid(QRadioButton) ||
               type == typeid(QToolButton)) {
      state.kind = ControlState::kButton;
      state.state = static_cast<QAbstractButton*>(control)->isChecked() ? 1 : 0;
    } else if (type == typeid(QLineEdit)) {
      state.kind = ControlState::kTextField;
      state.text = static_cast<QLineEdit*>(control)->text();
    }
    states.push_back(std::move(state));
  });
  return states;
}

void RestoreControlStates(QWidget* /*view*/, const std::vector<ControlState>& states) {
  for (const ControlState& state : states) {
    QWidget* control = state.object.data();
    if (control == nullptr) continue;
    control->setEnabled(state.isEnabled);
    switch (state.kind) {
      case ControlState::kButton:
        if (auto* checkBox = qobject_cast<QCheckBox*>(control)) {
          checkBox->setCheckState(state.state == 1    ? Qt::Checked
                                  : state.state == -1 ? Qt::PartiallyChecked
                                                      : Qt::Unchecked);
        } else if (auto* button = qobject_cast<QAbstractButton*>(control); button->isCheckable()) {
          button->setChecked(state.state == 1);
        }
        break;
      case ControlState::kTextField:
        static_cast<QLineEdit*>(control)->setText(state.text);
        break;
      case ControlState::kPopUpButton:  // the selection is saved but not put back
      case ControlState::kOther:
        break;
    }
  }
}

void SetMainMenuBar(QMenuBar* menuBar) {
  mainMenuBar = menuBar;
}

QMenuBar* MainMenuBar() {
  if (mainMenuBar != nullptr) return mainMenuBar;
  QMenuBar* fallback = nullptr;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    auto* window = qobject_cast<QMainWindow*>(widget);
    if (window == nullptr) continue;
    // menuWidget(), unlike menuBar(), does not make a menu bar that is not there.
    auto* menuBar = qobject_cast<QMenuBar*>(window->menuWidget());
    if (menuBar == nullptr) continue;
    if (window->isVisible()) return menuBar;
    if (fallback == nullptr) fallback = menuBar;
  }
  return fallback;
}

bool MenuAutoenablesItems(const QMenu* menu) {
  if (menu == nullptr) return false;
  const QVariant value = menu->property(kAutoenablesProperty);
  return value.isValid() ? value.toBool() : true;
}

void SetMenuAutoenablesItems(QMenu* menu, bool autoenables) {
  if (menu != nullptr) menu->setProperty(kAutoenablesProperty, autoenables);
}

void Menu_ModalDisable(const QString& title) {
  MakeMenuTable();
  QAction* item = TopLevelItemWithTitle(title);
  if (item == nullptr) return;
  (*menuModalStates)[title] = MenuState{MenuAutoenablesItems(item->menu()), item->isEnabled()};
  SetItemState(item, false, false);
}

void Menu_ModalEnable(const QString& title) {
  if (menuModalStates == nullptr) return;
  QAction* item = TopLevelItemWithTitle(title);
  if (item == nullptr) return;
  MenuState state;  // a title never recorded reads as disabled
  auto found = menuModalStates->find(title);
  if (found != menuModalStates->end()) state = found->second;
  SetItemState(item, state.isEnabled, state.autoenablesItems);
}

void MenuBar_ModalDisable() {
  for (const QString& title : TitlesFromThird()) Menu_ModalDisable(title);
}

void MenuBar_ModalEnable() {
  for (const QString& title : TitlesFromThird()) Menu_ModalEnable(title);
}

void Menu_Disable(const QString& title) {
  MakeMenuTable();
  if (QAction* item = TopLevelItemWithTitle(title)) SetItemState(item, false, false);
}

void Menu_Enable(const QString& title) {
  if (menuModalStates == nullptr) return;
  if (QAction* item = TopLevelItemWithTitle(title)) SetItemState(item, true, true);
}

void MenuBar_Disable() {
  menuBarDisabled = true;
  const QList<QAction*> items = TopLevelItems();
  for (qsizetype i = 2; i < items.size(); ++i) SetItemState(items[i], false, false);
}

void MenuBar_Enable() {
  if (!menuBarDisabled) return;
  const QList<QAction*> items = TopLevelItems();
  for (qsizetype i = 2; i < items.size(); ++i) SetItemState(items[i], true, true);
}

ModalDisabling::ModalDisabling(QWidget* view, const QStringList& menuTitles) {
  for (const QString& title : menuTitles) {
    QAction* item = TopLevelItemWithTitle(title);
    if (item == nullptr) continue;
    menus_.push_back({item, item->isEnabled(), MenuAutoenablesItems(item->menu())});
    SetItemState(item, false, false);
  }
  if (view == nullptr) return;
  ForEachControl(view, true, [this](QWidget* control) {
    if (!IsModalControl(control)) return;
    controls_.push_back({control, OwnEnabledFlag(control)});
    control->setEnabled(false);
  });
}

ModalDisabling::~ModalDisabling() {
  for (const ControlRecord& record : controls_) {
    if (record.control != nullptr) record.control->setEnabled(record.enabled);
  }
  for (const MenuRecord& record : menus_) {
    if (record.item != nullptr) SetItemState(record.item, record.enabled, record.autoenables);
  }
}

}  // namespace tarn
