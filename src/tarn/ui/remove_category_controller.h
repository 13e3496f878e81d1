// The panel that asks, when categories are removed, which remaining category
// takes over the entries of each one: a window with one pop-up for a single
// category and a window with a table for several, both from the interface
// file "RemoveCategory". The controller owns its windows; during a run it
// shares the caller's RemoveCategoryData, where the caller reads the choices.
#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include "tarn/model/category.h"
#include "tarn/ui/pop_up_menu.h"
#include "tarn/ui/table_view.h"

class QComboBox;
class QDialog;
class QWidget;

namespace Ui {
class RemoveCategory;
}

namespace tarn {

// What a run reads and fills.
struct RemoveCategoryData {
  // The categories that may take over: the menu's choices, in order.
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> categories;
  // The categories being removed, one table row each.
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> oldCategories;
  // Per row, the chosen category's number; -1 for none. Padded with -1 to
  // one value per row when a run starts.
  std::vector<std::int32_t> newCategories;
};

class PFRemoveCategoryController : public QObject, public TableDataSource {
  Q_OBJECT

 public:
  // Loads "RemoveCategory" with the new controller as owner; no data.
  PFRemoveCategoryController();
  ~PFRemoveCategoryController() override;

  // One controller for the process, made on first use and kept.
  static PFRemoveCategoryController* sharedRemoveCategoryController();
  // The shared controller's runForCategory and runForCategories.
  static bool sharedRunForCategory(std::shared_ptr<RemoveCategoryData> data);
  static bool sharedRunForCategories(std::shared_ptr<RemoveCategoryData> data);
  // A new controller, owned by the caller.
  static std::shared_ptr<PFRemoveCategoryController> removeCategoryController();

  // Run the one-category or the several-categories window modally with the
  // data; true when the user pressed OK, false for Cancel. The data is
  // released when the run ends.
  bool runForCategory(std::shared_ptr<RemoveCategoryData> data);
  bool runForCategories(std::shared_ptr<RemoveCategoryData> data);

  void setData(std::shared_ptr<RemoveCategoryData> data);
  const std::shared_ptr<RemoveCategoryData>& data() const { return data_; }

  // One item per category (its full name, tagged with its number), then a
  // separator and "None"; nothing for an empty list. Automatic enabling off.
  static PopUpMenu menuForCategories(
      const std::vector<std::shared_ptr<TARNAccountEntryCategory>>& categories);
  // The first of the choices with the number; nullptr without data.
  std::shared_ptr<TARNAccountEntryCategory> categoryWithNumber(std::int32_t number) const;

  // The table: "oldCategory" shows the removed category's full name;
  // "newCategory" holds the menu position of the chosen category (the count
  // of categories when none is chosen) and stores -1 for the separator and
  // "None".
  int numberOfRowsInTableView(TARNTableView* tableView) override;
  QVariant tableViewObjectValue(TARNTableView* tableView, const TARNTableColumn& column,
                                int row) override;
  void tableViewSetObjectValue(TARNTableView* tableView, const QVariant& value,
                               const TARNTableColumn& column, int row) override;

  QDialog* removeCategoryWindow() const { return removeCategoryWindow_; }
  QDialog* removeCategoriesWindow() const { return removeCategoriesWindow_; }
  QComboBox* newCategoryButton() const { return newCategoryButton_; }
  TARNTableView* newCategoriesOutline() const { return newCategoriesOutline_; }

 public slots:
  // Ends the modal run as accepted; cancel ends it as refused.
  void OK();
  void cancel();

 private:
  bool run(QDialog* window, std::shared_ptr<RemoveCategoryData> data);
  void newCategoryChosen(int position);
  void showSingleCategory();

  std::unique_ptr<QWidget> owner_;  // the interface file's root; holds both windows
  std::unique_ptr<Ui::RemoveCategory> ui_;
  QDialog* removeCategoryWindow_ = nullptr;
  QDialog* removeCategoriesWindow_ = nullptr;
  QComboBox* newCategoryButton_ = nullptr;
  TARNTableView* newCategoriesOutline_ = nullptr;
  std::shared_ptr<RemoveCategoryData> data_;
};

}  // namespace tarn
