// Switching parts of the interface off while a sheet or modal run is under
// way and back on afterwards, restoring exactly what was enabled before: the
// controls of a widget tree, and the top-level menus of the main menu bar.
// A second pair saves and restores control values so that a panel can be
// reset. Main thread only; the recorded states live in process-wide tables
// that refer to widgets and menus without owning them.
//
// What counts as what (docs/design.md, "Qt panels"): controls are buttons,
// combo boxes, spin boxes and date edits, sliders, line edits and item views;
// text fields are line edits and editable combo boxes; table views are item
// views. A control's own children (a spin box's line edit) belong to it and
// are not walked.
#pragma once

#include <QAction>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <vector>

class QMenu;
class QMenuBar;

namespace tarn {

// Records each control's own enabled flag (text fields and item views are
// left usable) and disables it; the view itself is tested too. One record
// per control: a second call before the matching enable records the
// now-disabled state, so these calls are not to be nested (ModalDisabling,
// below, nests).
void View_ModalDisable(QWidget* view);
// Gives each recorded control its recorded flag; controls never recorded are
// left as they are. Records are kept.
void View_ModalEnable(QWidget* view);
// Disables every control below the view (text fields included), recording
// nothing.
void DisableControls(QWidget* view);

// The saved state of one control.
struct ControlState {
  // The exact class, as RestoreControlStates treats it; a subclass is kOther.
  enum Kind { kOther, kPopUpButton, kButton, kTextField };

  QPointer<QWidget> object;
  bool isEnabled = true;
  Kind kind = kOther;
  int selectedItem = -1;  // kPopUpButton: the current index (saved, not restored)
  int state = 0;          // kButton: 1 on, 0 off, -1 mixed
  QString text;           // kTextField
};

// The states of the controls below the view, depth first; empty when the
// tree holds no control.
std::vector<ControlState> SaveControlStates(QWidget* view);
// Enabled flags for all; button states and line-edit texts back; a combo box
// keeps its current selection. Controls deleted since are skipped. `view` is
// not used.
void RestoreControlStates(QWidget* view, const std::vector<ControlState>& states);

// The menu bar that stands for the application's main menu. Without one set,
// the menu bar of the first visible main window is used.
void SetMainMenuBar(QMenuBar* menuBar);
QMenuBar* MainMenuBar();

// Qt menus have no automatic enabling of their items; the host's menu
// validation reads this flag (on by default) to know whether to run.
bool MenuAutoenablesItems(const QMenu* menu);
void SetMenuAutoenablesItems(QMenu* menu, bool autoenables);

// A top-level menu is named by its title as shown (mnemonic markers removed);
// the first match is used and a title that matches nothing does nothing.
void Menu_ModalDisable(const QString& title);
// Restores the state recorded by the last Menu_ModalDisable of the title (one
// record per title, as for views); a title never recorded ends up disabled.
void Menu_ModalEnable(const QString& title);
// Menu_ModalDisable / Menu_ModalEnable for every top-level menu from the third
// on: the application menu and the one after it are never touched.
void MenuBar_ModalDisable();
void MenuBar_ModalEnable();
// Disable and enable without recording. Menu_Enable does nothing before the
// first Menu_Disable or Menu_ModalDisable; MenuBar_Enable nothing before the
// first MenuBar_Disable.
void Menu_Disable(const QString& title);
void Menu_Enable(const QString& title);
void MenuBar_Disable();
void MenuBar_Enable();

// One modal run's disabling, for hosts whose runs nest (a sheet over a
// window that a panel already disabled): it records the flags it finds in
// itself, not in the process-wide tables, and gives back exactly those when
// it is destroyed, so runs ended in reverse order restore what was enabled
// before the first. Controls are chosen as View_ModalDisable chooses them;
// menus are the top-level menus with the given titles. Refers to the
// widgets and menu items without owning them; ones deleted meanwhile are
// skipped.
class ModalDisabling {
 public:
  explicit ModalDisabling(QWidget* view, const QStringList& menuTitles = {});
  ~ModalDisabling();
  ModalDisabling(const ModalDisabling&) = delete;
  ModalDisabling& operator=(const ModalDisabling&) = delete;

 private:
  struct ControlRecord {
    QPointer<QWidget> control;
    bool enabled;
  };
  struct MenuRecord {
    QPointer<QAction> item;
    bool enabled;
    bool autoenables;
  };
  std::vector<ControlRecord> controls_;
  std::vector<MenuRecord> menus_;
};

}  // namespace tarn
