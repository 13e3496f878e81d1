// The category-removal panel driven as the user drives it: choosing the
// replacement of one category in its pop-up, or of several in the table, and
// pressing OK or Cancel.
#include <QComboBox>
#include <QDialog>
#include <QTest>

#include "tarn/ui/remove_category_controller.h"
#include "ui_test_support.h"

using tarn::PFRemoveCategoryController;
using tarn::RemoveCategoryData;
using tarn::TARNAccountEntryCategory;

namespace {

std::shared_ptr<TARNAccountEntryCategory> Category(const std::string& name, int32_t number,
                                                   TARNAccountEntryCategory* parent = nullptr) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setName(name);
  category->setNumber(number);
  category->setParent(parent);
  return category;
}

// Food (3) with Groceries (7), Rent (12); Dining (20) and Travel (21) go.
struct Categories {
  Categories() {
    food = Category("Food", 3);
    groceries = Category("Groceries", 7, food.get());
    rent = Category("Rent", 12);
    dining = Category("Dining", 20, food.get());
    travel = Category("Travel", 21);
  }
  std::shared_ptr<RemoveCategoryData> data(std::vector<int32_t> choices) const {
    auto data = std::make_shared<RemoveCategoryData>();
    data->categories = {food, groceries, rent};
    data->oldCategories = {dining, travel};
    data->newCategories = std::move(choices);
    return data;
  }
  std::shared_ptr<TARNAccountEntryCategory> food, groceries, rent, dining, travel;
};

QStringList ItemTitles(const QComboBox* box) {
  QStringList titles;
  for (int i = 0; i < box->count(); ++i) titles.append(box->itemText(i));
  return titles;
}

// The combo box that the table shows in the row's "newCategory" cell.
QComboBox* CellPopUp(tarn::TARNTableView* table, int row) {
  return qobject_cast<QComboBox*>(table->indexWidget(table->model()->index(row, 1)));
}

// Chooses an item of a combo box with the keyboard, as a user does: focus,
// go to the first item, then down to the wanted one (separators are skipped).
void ChooseWithKeyboard(QComboBox* box, int index) {
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Home);
  for (int i = 0; i < index; ++i) QTest::keyClick(box, Qt::Key_Down);
}

}  // namespace

class RemoveCategoryTest : public QObject {
  Q_OBJECT

 private slots:
  void menuOfCategories() {
    Categories c;
    const tarn::PopUpMenu menu =
        PFRemoveCategoryController::menuForCategories({c.food, c.groceries});
    QCOMPARE(menu.title, QString(""));
    QVERIFY(!menu.autoenablesItems);
    QCOMPARE(menu.items.size(), size_t{4});
    QCOMPARE(menu.items[1].title, QString("Food:Groceries"));
    QCOMPARE(menu.items[1].tag, 7);
    QVERIFY(menu.items[2].separator);
    QCOMPARE(menu.items[3].title, QString("None"));
    QVERIFY(PFRemoveCategoryController::menuForCategories({}).items.empty());
  }

  void tableValuesAndChoices() {
    Categories c;
    PFRemoveCategoryController controller;
    tarn::TARNTableView* table = controller.newCategoriesOutline();
    QCOMPARE(controller.numberOfRowsInTableView(table), 0);
    QCOMPARE(controller.categoryWithNumber(7), nullptr);

    auto data = c.data({12, -1});
    controller.setData(data);
    QCOMPARE(controller.categoryWithNumber(7), c.groceries);
    QCOMPARE(controller.categoryWithNumber(99), nullptr);
    QAbstractItemModel* model = table->model();
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->index(0, 0).data(), QVariant("Food:Dining"));
    QCOMPARE(model->index(0, 1).data(Qt::EditRole), QVariant(2));  // Rent's place
    // -1 shows the place just past the last category: the separator, read as "None".
    QCOMPARE(model->index(1, 1).data(Qt::EditRole), QVariant(3));
    QCOMPARE(model->index(1, 1).data(), QVariant("None"));
    QCOMPARE(CellPopUp(table, 1)->currentText(), QString("None"));

    QVERIFY(model->setData(model->index(1, 1), 1));
    QCOMPARE(data->newCategories[1], 7);
    QVERIFY(model->setData(model->index(0, 1), 3));  // the separator
    QCOMPARE(data->newCategories[0], -1);
    QVERIFY(model->setData(model->index(1, 1), 4));  // "None"
    QCOMPARE(data->newCategories[1], -1);
    // The removed categories' column takes no edits.
    model->setData(model->index(0, 0), 0);
    QCOMPARE(data->oldCategories[0], c.dining);

    // A list of choices shorter than the rows is padded with "none".
    auto shortData = c.data({});
    controller.setData(shortData);
    QCOMPARE(shortData->newCategories, (std::vector<int32_t>{-1, -1}));
    controller.setData(nullptr);
    QCOMPARE(model->rowCount(), 0);
  }

  void severalCategoriesChosenInTheTableAndAccepted() {
    Categories c;
    PFRemoveCategoryController controller;
    auto data = c.data({-1, -1});
    auto ran = tarn::uitest::WhenModal([&](QWidget* window) {
      QCOMPARE(window, static_cast<QWidget*>(controller.removeCategoriesWindow()));
      tarn::TARNTableView* table = controller.newCategoriesOutline();
      QComboBox* first = CellPopUp(table, 0);
      QComboBox* second = CellPopUp(table, 1);
      QVERIFY(first != nullptr && second != nullptr);
      QCOMPARE(ItemTitles(first), (QStringList{"Food", "Food:Groceries", "Rent", "", "None"}));
      ChooseWithKeyboard(first, 1);   // Food:Groceries
      ChooseWithKeyboard(second, 2);  // Rent
      tarn::uitest::ClickButton(window, "OK");
    });
    QVERIFY(controller.runForCategories(data));
    QVERIFY(*ran);
    QCOMPARE(data->newCategories, (std::vector<int32_t>{7, 12}));
    QVERIFY(!controller.removeCategoriesWindow()->isVisible());
    QCOMPARE(controller.data(), nullptr);  // released after the run
  }

  void oneCategoryChosenInThePopUp() {
    Categories c;
    PFRemoveCategoryController controller;
    auto data = std::make_shared<RemoveCategoryData>();
    data->categories = {c.food, c.groceries, c.rent};
    data->oldCategories = {c.dining};
    data->newCategories = {3};
    auto ran = tarn::uitest::WhenModal([&](QWidget* window) {
      QComboBox* popUp = controller.newCategoryButton();
      QCOMPARE(popUp->currentText(), QString("Food"));
      ChooseWithKeyboard(popUp, 2);
      QCOMPARE(popUp->currentText(), QString("Rent"));
      tarn::uitest::ClickButton(window, "OK");
    });
    QVERIFY(controller.runForCategory(data));
    QVERIFY(*ran);
    QCOMPARE(data->newCategories, (std::vector<int32_t>{12}));

    // Choosing "None" (the keyboard skips the separator) and then Cancel:
    // the run answers false; the caller decides what the choice means.
    ran = tarn::uitest::WhenModal([&](QWidget* window) {
      ChooseWithKeyboard(controller.newCategoryButton(), 3);
      QCOMPARE(controller.newCategoryButton()->currentText(), QString("None"));
      tarn::uitest::ClickButton(window, "Cancel");
    });
    QVERIFY(!controller.runForCategory(data));
    QVERIFY(*ran);
    QCOMPARE(data->newCategories, (std::vector<int32_t>{-1}));
  }

  void escapeCancelsAndTheSharedControllerForwards() {
    Categories c;
    auto data = c.data({3, 3});
    auto ran =
        tarn::uitest::WhenModal([](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); });
    QVERIFY(!PFRemoveCategoryController::sharedRunForCategories(data));
    QVERIFY(*ran);
    QCOMPARE(PFRemoveCategoryController::sharedRemoveCategoryController(),
             PFRemoveCategoryController::sharedRemoveCategoryController());
    QCOMPARE(data->newCategories, (std::vector<int32_t>{3, 3}));
  }
};

QTEST_MAIN(RemoveCategoryTest)
#include "tst_remove_category.moc"
