#include "tarn/ui/remove_category_controller.h"

#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>

#include "tarn/platform/localized.h"
#include "tarn/ui/window_placement.h"
#include "ui_RemoveCategory.h"

namespace tarn {
namespace {

const QString kOldCategoryColumn = QStringLiteral("oldCategory");
const QString kNewCategoryColumn = QStringLiteral("newCategory");

QString Translated(const char* key) {
  return QString::fromStdString(Localized(key));
}

}  // namespace

PFRemoveCategoryController::PFRemoveCategoryController()
    : owner_(std::make_unique<QWidget>()), ui_(std::make_unique<Ui::RemoveCategory>()) {
  owner_->setObjectName("RemoveCategory");
  ui_->setupUi(owner_.get());
  removeCategoryWindow_ = ui_->removeCategoryWindow;
  removeCategoriesWindow_ = ui_->removeCategoriesWindow;
  newCategoryButton_ = ui_->newCategoryButton;
  newCategoriesOutline_ = ui_->newCategoriesOutline;

  newCategoriesOutline_->addTableColumn(kOldCategoryColumn, Translated("Removed Category"), false);
  newCategoriesOutline_->addTableColumn(kNewCategoryColumn, Translated("Move Entries To"));
  newCategoriesOutline_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  newCategoriesOutline_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  newCategoriesOutline_->setDataSource(this);
  // The one-category window is no taller than its controls.
  removeCategoryWindow_->resize(removeCategoryWindow_->width(),
                                removeCategoryWindow_->sizeHint().height());

  connect(ui_->removeCategoryOKButton, &QPushButton::clicked, this,
          &PFRemoveCategoryController::OK);
  connect(ui_->removeCategoriesOKButton, &QPushButton::clicked, this,
          &PFRemoveCategoryController::OK);
  connect(ui_->removeCategoryCancelButton, &QPushButton::clicked, this,
          &PFRemoveCategoryController::cancel);
  connect(ui_->removeCategoriesCancelButton, &QPushButton::clicked, this,
          &PFRemoveCategoryController::cancel);
  // The one-category window's choice is row 0 of the table's data.
  connect(newCategoryButton_, &QComboBox::activated, this,
          &PFRemoveCategoryController::newCategoryChosen);
}

PFRemoveCategoryController::~PFRemoveCategoryController() {
  // The table asks its data source while it goes; it must not ask this one.
  newCategoriesOutline_->setDataSource(nullptr);
}

PFRemoveCategoryController* PFRemoveCategoryController::sharedRemoveCategoryController() {
  // Kept for the life of the process: its windows must not outlive the
  // application object in a static destructor.
  static auto* shared = new PFRemoveCategoryController();
  return shared;
}

bool PFRemoveCategoryController::sharedRunForCategory(std::shared_ptr<RemoveCategoryData> data) {
  return sharedRemoveCategoryController()->runForCategory(std::move(data));
}

bool PFRemoveCategoryController::sharedRunForCategories(std::shared_ptr<RemoveCategoryData> data) {
  return sharedRemoveCategoryController()->runForCategories(std::move(data));
}

std::shared_ptr<PFRemoveCategoryController> PFRemoveCategoryController::removeCategoryController() {
  return std::make_shared<PFRemoveCategoryController>();
}

bool PFRemoveCategoryController::runForCategory(std::shared_ptr<RemoveCategoryData> data) {
  return run(removeCategoryWindow_, std::move(data));
}

bool PFRemoveCategoryController::runForCategories(std::shared_ptr<RemoveCategoryData> data) {
  return run(removeCategoriesWindow_, std::move(data));
}

bool PFRemoveCategoryController::run(QDialog* window, std::shared_ptr<RemoveCategoryData> data) {
  setData(std::move(data));
  CenterWindow(window);
  const int response = window->exec();
  window->hide();
  setData(nullptr);
  return response == QDialog::Accepted;
}

void PFRemoveCategoryController::OK() {
  for (QDialog* window : {removeCategoryWindow_, removeCategoriesWindow_}) {
    if (window->isVisible()) window->accept();
  }
}

void PFRemoveCategoryController::cancel() {
  for (QDialog* window : {removeCategoryWindow_, removeCategoriesWindow_}) {
    if (window->isVisible()) window->reject();
  }
}

void PFRemoveCategoryController::setData(std::shared_ptr<RemoveCategoryData> data) {
  data_ = std::move(data);
  if (data_ == nullptr) {
    newCategoriesOutline_->reloadData();
    return;
  }
  if (data_->newCategories.size() < data_->oldCategories.size())
    data_->newCategories.resize(data_->oldCategories.size(), -1);
  const PopUpMenu menu = menuForCategories(data_->categories);
  SetPopUpMenu(newCategoryButton_, menu);
  newCategoriesOutline_->setDataCellMenu(kNewCategoryColumn, menu);
  newCategoriesOutline_->reloadData();
  showSingleCategory();
}

// The one-category window names the category and shows row 0's choice.
void PFRemoveCategoryController::showSingleCategory() {
  if (data_->oldCategories.empty()) {
    newCategoryButton_->setCurrentIndex(-1);
    return;
  }
  const QString name = QString::fromStdString(data_->oldCategories.front()->fullName());
  ui_->removeCategoryMessage->setText(
      Translated("Entries filed under \xE2\x80\x9C%1\xE2\x80\x9D will move to:").arg(name));
  const TARNTableColumn* column =
      newCategoriesOutline_->tableColumnWithIdentifier(kNewCategoryColumn);
  int position = tableViewObjectValue(newCategoriesOutline_, *column, 0).toInt();
  // The separator cannot be shown as a choice; "None" after it stands in.
  if (position < newCategoryButton_->count() && !newCategoryButton_->itemData(position).isValid())
    ++position;
  newCategoryButton_->setCurrentIndex(position < newCategoryButton_->count() ? position : -1);
}

void PFRemoveCategoryController::newCategoryChosen(int position) {
  if (data_ == nullptr || data_->oldCategories.empty()) return;
  const TARNTableColumn* column =
      newCategoriesOutline_->tableColumnWithIdentifier(kNewCategoryColumn);
  tableViewSetObjectValue(newCategoriesOutline_, position, *column, 0);
}

PopUpMenu PFRemoveCategoryController::menuForCategories(
    const std::vector<std::shared_ptr<TARNAccountEntryCategory>>& categories) {
  PopUpMenu menu;
  menu.title = QString("");
  menu.autoenablesItems = false;
  if (categories.empty()) return menu;
  for (const auto& category : categories) {
    menu.addItem(QString::fromStdString(category->fullName()), category->number());
  }
  menu.addSeparator();
  menu.addItem(Translated("None"), -1);
  return menu;
}

std::shared_ptr<TARNAccountEntryCategory> PFRemoveCategoryController::categoryWithNumber(
    std::int32_t number) const {
  if (data_ == nullptr) return nullptr;
  for (const auto& category : data_->categories) {
    if (category->number() == number) return category;
  }
  return nullptr;
}

int PFRemoveCategoryController::numberOfRowsInTableView(TARNTableView* /*tableView*/) {
  return data_ == nullptr ? 0 : static_cast<int>(data_->oldCategories.size());
}

QVariant PFRemoveCategoryController::tableViewObjectValue(TARNTableView* /*tableView*/,
                                                          const TARNTableColumn& column, int row) {
  if (data_ == nullptr || row < 0 || static_cast<std::size_t>(row) >= data_->oldCategories.size()) {
    return QVariant();
  }
  const auto index = static_cast<std::size_t>(row);
  if (column.identifier == kOldCategoryColumn) {
    return QString::fromStdString(data_->oldCategories[index]->fullName());
  }
  if (column.identifier == kNewCategoryColumn) {
    const std::int32_t number = data_->newCategories[index];
    const auto& categories = data_->categories;
    for (std::size_t position = 0; position < categories.size(); ++position) {
      if (categories[position]->number() == number) return static_cast<int>(position);
    }
    return static_cast<int>(categories.size());
  }
  return QVariant();
}

void PFRemoveCategoryController::tableViewSetObjectValue(TARNTableView* /*tableView*/,
                                                         const QVariant& value,
                                                         const TARNTableColumn& column, int row) {
  if (column.identifier != kNewCategoryColumn || data_ == nullptr || row < 0 ||
      static_cast<std::size_t>(row) >= data_->newCategories.size()) {
    return;
  }
  const int position = value.toInt();
  const auto& categories = data_->categories;
  data_->newCategories[static_cast<std::size_t>(row)] =
      position >= 0 && static_cast<std::size_t>(position) < categories.size()
          ? categories[static_cast<std::size_t>(position)]->number()
          : -1;
}

}  // namespace tarn
