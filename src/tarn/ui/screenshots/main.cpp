// tarn-screenshots: renders each panel of tarn_ui offscreen into PNG files,
// for the design notes. Usage: tarn-screenshots <output folder>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPixmap>
#include <QTest>
#include <cstdio>

#include "tarn/ui/edit_currency_controller.h"
#include "tarn/ui/export_accessory_manager.h"
#include "tarn/ui/qif_import_accessory_manager.h"
#include "tarn/ui/remove_category_controller.h"

namespace {

QString folder;

bool Save(QWidget* widget, const char* name) {
  widget->show();
  QApplication::processEvents();
  QTest::qWait(300);  // lets the rate part's resize finish
  const QString path = QDir(folder).filePath(QString::fromLatin1(name) + ".png");
  const bool saved = widget->grab().save(path);
  widget->hide();
  std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
  return saved;
}

std::shared_ptr<tarn::TARNAccountEntryCategory> Category(
    const char* name, int32_t number, tarn::TARNAccountEntryCategory* parent = nullptr) {
  auto category = std::make_shared<tarn::TARNAccountEntryCategory>();
  category->setName(std::string(name));
  category->setNumber(number);
  category->setParent(parent);
  return category;
}

bool RemoveCategoryPanels() {
  auto food = Category("Food", 1);
  auto groceries = Category("Groceries", 2, food.get());
  auto dining = Category("Dining", 3, food.get());
  auto housing = Category("Housing", 4);
  auto rent = Category("Rent", 5, housing.get());
  auto travel = Category("Travel", 6);
  auto fares = Category("Fares", 7, travel.get());
  tarn::PFRemoveCategoryController controller;

  auto one = std::make_shared<tarn::RemoveCategoryData>();
  one->categories = {food, groceries, housing, rent};
  one->oldCategories = {dining};
  one->newCategories = {1};
  controller.setData(one);
  bool saved = Save(controller.removeCategoryWindow(), "remove-category");

  auto several = std::make_shared<tarn::RemoveCategoryData>();
  several->categories = {food, groceries, housing, rent};
  several->oldCategories = {dining, travel, fares};
  several->newCategories = {1, -1, -1};
  controller.setData(several);
  saved = Save(controller.removeCategoriesWindow(), "remove-categories") && saved;
  controller.setData(nullptr);
  return saved;
}

bool EditCurrencyPanels() {
  auto usd = tarn::PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0, 20240105);
  auto eur = tarn::PFCurrency::initWithCode("EUR", "Euro", "\xE2\x82\xAC", false, ".", ",", 1.08,
                                            20240105);
  tarn::PFEditCurrencyController controller;
  controller.setBaseCurrency(usd);
  controller.setCurrencies({usd, eur});
  controller.setEditCurrency(eur);
  controller.editCurrencyWindow_Populate();
  bool saved = Save(controller.editCurrencyWindow(), "edit-currency");
  controller.setEditCurrency(usd);
  controller.editCurrencyWindow_Populate();
  saved = Save(controller.editCurrencyWindow(), "edit-base-currency") && saved;
  return saved;
}

bool AccessoryViews() {
  auto exportManager = tarn::TARNExportAccessoryManager::exportAccessoryManager();
  bool saved = Save(exportManager->view(), "export-accessory");
  auto importManager = tarn::TARNQIFImportAccessoryManager::QIFImportAccessoryManager();
  saved = Save(importManager->GetView(), "qif-import-accessory") && saved;
  return saved;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
  if (!QDir().mkpath(folder)) {
    std::fprintf(stderr, "tarn-screenshots: cannot make the folder %s\n", qPrintable(folder));
    return 1;
  }
  // Every panel is rendered, even after one fails to save.
  int failures = 0;
  for (bool (*render)() : {RemoveCategoryPanels, EditCurrencyPanels, AccessoryViews}) {
    if (!render()) ++failures;
  }
  return failures == 0 ? 0 : 1;
}
