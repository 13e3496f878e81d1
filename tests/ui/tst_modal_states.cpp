// Disabling a window's controls and the menu bar for a modal run and putting
// back exactly what was enabled, and saving and restoring control values.
// The menu tables are process-wide, so the slots run in an order in which
// "before any disable" still holds for the first ones.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTableView>
#include <QTest>
#include <QVBoxLayout>

#include "tarn/ui/modal_states.h"

namespace {

// The application menu, the one after it, and three more; "Edit" already
// disabled by the host.
struct MenuWindow {
  MenuWindow() {
    for (const char* title : {"Tarn", "&File", "&Edit", "&Account", "&Window"}) {
      QMenu* menu = window.menuBar()->addMenu(title);
      menu->addAction("Item");
      menus.append(menu);
    }
    menus[2]->menuAction()->setEnabled(false);
    tarn::SetMenuAutoenablesItems(menus[3], false);
    window.show();
  }
  QList<bool> enabledFlags() const {
    QList<bool> flags;
    for (QMenu* menu : menus) flags.append(menu->menuAction()->isEnabled());
    return flags;
  }
  QMainWindow window;
  QList<QMenu*> menus;
};

class LineEditOfMyOwn : public QLineEdit {};

}  // namespace

class ModalStatesTest : public QObject {
  Q_OBJECT

 private slots:
  void menuEnableBeforeAnyDisableDoesNothing() {
    MenuWindow menus;
    tarn::Menu_Enable("Edit");
    tarn::MenuBar_Enable();
    QVERIFY(!menus.menus[2]->menuAction()->isEnabled());
  }

  void menuBarModalRunLeavesFirstTwoMenusAlone() {
    MenuWindow menus;
    QCOMPARE(tarn::MainMenuBar(), menus.window.menuBar());
    const QList<bool> before = menus.enabledFlags();
    tarn::MenuBar_ModalDisable();
    QCOMPARE(menus.enabledFlags(), (QList<bool>{true, true, false, false, false}));
    QVERIFY(tarn::MenuAutoenablesItems(menus.menus[0]));
    QVERIFY(tarn::MenuAutoenablesItems(menus.menus[1]));
    QVERIFY(!tarn::MenuAutoenablesItems(menus.menus[4]));
    tarn::MenuBar_ModalEnable();
    QCOMPARE(menus.enabledFlags(), before);
    QVERIFY(!tarn::MenuAutoenablesItems(menus.menus[3]));  // it was off before
    QVERIFY(tarn::MenuAutoenablesItems(menus.menus[4]));

    // The process-wide record is one per title: a second disable before the
    // enable records the disabled state, and the menus stay off.
    tarn::MenuBar_ModalDisable();
    tarn::MenuBar_ModalDisable();
    tarn::MenuBar_ModalEnable();
    QCOMPARE(menus.enabledFlags(), (QList<bool>{true, true, false, false, false}));
    for (QMenu* menu : menus.menus) menu->menuAction()->setEnabled(true);
  }

  void nestedRunsGiveBackWhatWasEnabled() {
    MenuWindow menus;
    tarn::SetMainMenuBar(menus.window.menuBar());
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* save = new QPushButton("Save");
    auto* remove = new QPushButton("Delete");
    remove->setEnabled(false);
    auto* group = new QGroupBox("Sheet");
    auto* groupLayout = new QVBoxLayout(group);
    auto* amount = new QSpinBox;
    auto* field = new QLineEdit;
    groupLayout->addWidget(amount);
    groupLayout->addWidget(field);
    layout->addWidget(save);
    layout->addWidget(remove);
    layout->addWidget(group);
    menus.window.setCentralWidget(central);
    const QList<bool> before = menus.enabledFlags();
    {
      tarn::ModalDisabling window(central, {"File", "Edit", "Account", "Window"});
      QCOMPARE(menus.enabledFlags(), (QList<bool>{true, false, false, false, false}));
      QVERIFY(!save->isEnabled());
      QVERIFY(field->isEnabled());
      {
        // A sheet over the disabled window disables its part and the
        // "Account" menu again; its end leaves them off.
        tarn::ModalDisabling sheet(group, {"Account"});
        QVERIFY(!amount->isEnabled());
      }
      QVERIFY(!amount->isEnabled());
      QVERIFY(!save->isEnabled());
      QCOMPARE(menus.enabledFlags(), (QList<bool>{true, false, false, false, false}));
    }
    QVERIFY(save->isEnabled());
    QVERIFY(!remove->isEnabled());
    QVERIFY(amount->isEnabled());
    QCOMPARE(menus.enabledFlags(), before);
    QVERIFY(!tarn::MenuAutoenablesItems(menus.menus[3]));
    QVERIFY(tarn::MenuAutoenablesItems(menus.menus[4]));
    tarn::SetMainMenuBar(nullptr);
  }

  void singleMenusByTitle() {
    MenuWindow menus;
    tarn::SetMainMenuBar(menus.window.menuBar());
    tarn::Menu_ModalDisable("Account");  // shown title: the "&" marker does not count
    QVERIFY(!menus.menus[3]->menuAction()->isEnabled());
    tarn::Menu_ModalDisable("No such menu");
    tarn::Menu_ModalEnable("Account");
    QVERIFY(menus.menus[3]->menuAction()->isEnabled());
    // A title never recorded (the menu-bar functions never touch "File")
    // comes back disabled.
    tarn::Menu_ModalEnable("File");
    QVERIFY(!menus.menus[1]->menuAction()->isEnabled());
    QVERIFY(!tarn::MenuAutoenablesItems(menus.menus[1]));
    tarn::Menu_Enable("File");
    QVERIFY(menus.menus[1]->menuAction()->isEnabled());
    QVERIFY(tarn::MenuAutoenablesItems(menus.menus[1]));
    menus.menus[2]->menuAction()->setEnabled(true);
    tarn::MenuBar_Disable();
    QCOMPARE(menus.enabledFlags(), (QList<bool>{true, true, false, false, false}));
    tarn::MenuBar_Enable();
    QCOMPARE(menus.enabledFlags(), (QList<bool>{true, true, true, true, true}));
    tarn::SetMainMenuBar(nullptr);
  }

  void windowControlsDisabledAndRestored() {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* enabledButton = new QPushButton("Save");
    auto* disabledButton = new QPushButton("Delete");
    disabledButton->setEnabled(false);
    auto* field = new QLineEdit;
    auto* table = new QTableView;
    auto* group = new QGroupBox("Options");
    auto* groupLayout = new QVBoxLayout(group);
    auto* spinBox = new QSpinBox;
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setEnabled(false);
    auto* editableBox = new QComboBox;
    editableBox->setEditable(true);
    auto* popUp = new QComboBox;
    popUp->addItems({"One", "Two"});
    groupLayout->addWidget(spinBox);
    groupLayout->addWidget(slider);
    groupLayout->addWidget(editableBox);
    groupLayout->addWidget(popUp);
    for (QWidget* widget : {static_cast<QWidget*>(enabledButton),
                            static_cast<QWidget*>(disabledButton), static_cast<QWidget*>(field),
                            static_cast<QWidget*>(table), static_cast<QWidget*>(group)}) {
      layout->addWidget(widget);
    }
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicks(enabledButton, &QPushButton::clicked);

    tarn::View_ModalDisable(&window);
    QVERIFY(!enabledButton->isEnabled());
    QVERIFY(!disabledButton->isEnabled());
    QVERIFY(!spinBox->isEnabled());
    QVERIFY(!popUp->isEnabled());
    QVERIFY(field->isEnabled());        // text fields stay usable
    QVERIFY(editableBox->isEnabled());  // an editable combo box is a text field
    QVERIFY(table->isEnabled());
    QTest::mouseClick(enabledButton, Qt::LeftButton);
    QCOMPARE(clicks.count(), 0);
    QTest::keyClicks(field, "typed");
    QCOMPARE(field->text(), QString("typed"));

    tarn::View_ModalEnable(&window);
    QVERIFY(enabledButton->isEnabled());
    QVERIFY(!disabledButton->isEnabled());
    QVERIFY(spinBox->isEnabled());
    QVERIFY(!slider->isEnabled());
    QVERIFY(popUp->isEnabled());
    QTest::mouseClick(enabledButton, Qt::LeftButton);
    QCOMPARE(clicks.count(), 1);
    // The spin box's own line edit was never touched: typing still works.
    spinBox->setFocus();
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "42");
    QCOMPARE(spinBox->value(), 42);

    // The process-wide record is one per control: a sheet that disables the
    // group box again while the window is disabled records the disabled
    // state, and the spin box stays off after both ends.
    tarn::View_ModalDisable(&window);
    tarn::View_ModalDisable(group);
    tarn::View_ModalEnable(group);
    tarn::View_ModalEnable(&window);
    QVERIFY(!spinBox->isEnabled());
    QVERIFY(!popUp->isEnabled());
    QVERIFY(enabledButton->isEnabled());
    QVERIFY(!disabledButton->isEnabled());
    spinBox->setEnabled(true);
    popUp->setEnabled(true);

    // A control inside a container that the host disabled is not disabled
    // itself: the run must not leave it off once the container comes back.
    group->setEnabled(false);
    tarn::View_ModalDisable(&window);
    tarn::View_ModalEnable(&window);
    group->setEnabled(true);
    QVERIFY(spinBox->isEnabled());
    QVERIFY(popUp->isEnabled());
    QVERIFY(!slider->isEnabled());

    // Unrecorded disabling reaches text fields too, but not the insides of
    // a spin box.
    tarn::DisableControls(&window);
    QVERIFY(!field->isEnabled());
    QVERIFY(!table->isEnabled());
    spinBox->setEnabled(true);
    spinBox->setFocus();
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "7");
    QCOMPARE(spinBox->value(), 7);
  }

  void controlValuesSavedAndRestored() {
    QWidget empty;
    new QGroupBox(&empty);
    QVERIFY(tarn::SaveControlStates(&empty).empty());
    QVERIFY(tarn::SaveControlStates(nullptr).empty());

    QWidget panel;
    auto* layout = new QVBoxLayout(&panel);
    auto* check = new QCheckBox("Resolved");
    check->setChecked(true);
    auto* first = new QRadioButton("QIF");
    auto* second = new QRadioButton("Text");
    first->setChecked(true);
    auto* field = new QLineEdit("Groceries");
    auto* ownField = new LineEditOfMyOwn;
    ownField->setText("kept as typed");
    auto* popUp = new QComboBox;
    popUp->addItems({"Daily", "Weekly", "Monthly"});
    auto* button = new QPushButton("Go");
    button->setEnabled(false);
    for (QWidget* widget :
         {static_cast<QWidget*>(check), static_cast<QWidget*>(first), static_cast<QWidget*>(second),
          static_cast<QWidget*>(field), static_cast<QWidget*>(ownField),
          static_cast<QWidget*>(popUp), static_cast<QWidget*>(button)}) {
      layout->addWidget(widget);
    }
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    const std::vector<tarn::ControlState> saved = tarn::SaveControlStates(&panel);
    QCOMPARE(saved.size(), size_t{7});
    QCOMPARE(saved[0].kind, tarn::ControlState::kButton);
    QCOMPARE(saved[4].kind, tarn::ControlState::kOther);  // a subclass does not count
    QCOMPARE(saved[5].kind, tarn::ControlState::kPopUpButton);
    QCOMPARE(saved[5].selectedItem, 0);

    // Clicked on their indicators, at the left edge: a stretched check box
    // does not react to clicks beside its label.
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(6, check->height() / 2));
    QTest::mouseClick(second, Qt::LeftButton, {}, QPoint(6, second->height() / 2));
    field->selectAll();
    QTest::keyClicks(field, "Rent");
    ownField->selectAll();
    QTest::keyClicks(ownField, "changed");
    popUp->setCurrentIndex(2);
    button->setEnabled(true);
    QVERIFY(!check->isChecked());
    QVERIFY(second->isChecked());

    tarn::RestoreControlStates(nullptr, saved);
    QVERIFY(check->isChecked());
    QVERIFY(first->isChecked());
    QVERIFY(!second->isChecked());
    QCOMPARE(field->text(), QString("Groceries"));
    QCOMPARE(ownField->text(), QString("changed"));
    QCOMPARE(popUp->currentIndex(), 2);  // the selection is not put back
    QVERIFY(!button->isEnabled());

    // A control deleted since saving is skipped.
    delete field;
    tarn::RestoreControlStates(nullptr, saved);
    QVERIFY(check->isChecked());
  }
};

QTEST_MAIN(ModalStatesTest)
#include "tst_modal_states.moc"
