// The column-keyed table data source and the outline item tree, on their own
// and shown in Qt views that the user edits and clicks.
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include "tarn/ui/assertion_handler.h"
#include "tarn/ui/outline_view_item.h"
#include "tarn/ui/table_view_data_source.h"

using tarn::TARNOutlineViewItem;

namespace {

// Collects assertion reports while alive.
struct AssertionCapture {
  AssertionCapture() {
    old = tarn::SetAssertionHandler([this](const tarn::AssertionFailure& failure) {
      messages.append(QString::fromStdString(failure.message()));
      files.append(QString::fromStdString(failure.file));
    });
  }
  ~AssertionCapture() { tarn::SetAssertionHandler(old); }
  tarn::AssertionHandler old;
  QStringList messages;
  QStringList files;
};

std::shared_ptr<TARNOutlineViewItem> Item(const QString& identifier, const QString& name) {
  auto item = std::make_shared<TARNOutlineViewItem>();
  item->setIdentifier(identifier);
  item->setObject(name, "name");
  return item;
}

QStringList Identifiers(const TARNOutlineViewItem& parent) {
  QStringList identifiers;
  for (const auto& child : parent.GetChildren()) identifiers.append(child->identifier());
  return identifiers;
}

}  // namespace

class DataSourcesTest : public QObject {
  Q_OBJECT

 private slots:
  void tableColumnsPaddedWithEmptyStrings() {
    tarn::TARNTableView table;
    table.addTableColumn("date", "Date");
    table.addTableColumn("amount", "Amount");
    tarn::TARNTableViewDataSource source;
    source.setTableView(&table);
    QCOMPARE(source.count(), 2);
    source.setNumberOfRows(3);
    QCOMPARE(*source.objectForKey("date"), (QVariantList{"", "", ""}));
    QCOMPARE(*source.objectForKey("amount"), (QVariantList{"", "", ""}));
    source.setNumberOfRows(1);  // never shortened
    QCOMPARE(source.objectForKey("amount")->size(), 3);
    source.setNumberOfRows(3);

    // A column the table does not have is made, padded to the row count.
    source.setObject("late fee", std::optional<QString>("memo"), 2);
    QCOMPARE(*source.objectForKey("memo"), (QVariantList{"", "", "late fee"}));
    QCOMPARE(source.objectForKey("memo", 2), QVariant("late fee"));

    source.setObject(QVariant(12.5), std::optional<QString>("amount"), 0);
    source.clearAllRows();
    QCOMPARE(source.numberOfRows(), 3);
    QCOMPARE(*source.objectForKey("memo"), (QVariantList{"", "", ""}));

    // A second table replaces every column, the extra one included.
    tarn::TARNTableView other;
    other.addTableColumn("payee", "Payee");
    source.setTableView(&other);
    QCOMPARE(source.allKeys(), QStringList{"payee"});
    QCOMPARE(source.objectForKey("payee")->size(), 3);
    source.setTableView(nullptr);
    QCOMPARE(source.tableView(), &other);
  }

  void brokenPreconditionsReportedAndAbandoned() {
    AssertionCapture capture;
    tarn::TARNTableView table;
    table.addTableColumn("date", "Date");
    tarn::TARNTableViewDataSource source;
    source.setTableView(&table);
    source.setNumberOfRows(2);

    source.setNumberOfRows(-1);
    QCOMPARE(source.numberOfRows(), 2);
    source.setObject("x", std::optional<QString>("date"), 2);
    source.setObject("x", std::nullopt, 0);
    QCOMPARE(*source.objectForKey("date"), (QVariantList{"", ""}));
    QVERIFY(!source.objectForKey("missing", 0).isValid());
    QVERIFY(!source.tableViewObjectValue(&table, table.tableColumns()[0], -1).isValid());
    QCOMPARE(
        capture.messages,
        (QStringList{
            "Invalid parameter not satisfying: theNumberOfRows > -1",
            "Invalid parameter not satisfying: theRow < numberOfRows && theKey",
            "Invalid parameter not satisfying: theRow < numberOfRows && theKey",
            "Invalid parameter not satisfying: theRow < numberOfRows && [self objectForKey:theKey]",
            "Invalid parameter not satisfying: theRow >= 0 && theRow < [self "
            "numberOfRowsInTableView:theTableView]"}));
    QCOMPARE(capture.files.first(), QString("TARNUtilities"));
  }

  void tableViewShowsAndEditsTheColumns() {
    tarn::TARNTableView table;
    table.addTableColumn("payee", "Payee");
    table.addTableColumn("amount", "Amount", /*editable=*/false);
    tarn::TARNTableViewDataSource source;
    source.setTableView(&table);
    source.setNumberOfRows(2);
    source.setObject("Corner Grocer", std::optional<QString>("payee"), 0);
    source.setObject("-42.50", std::optional<QString>("amount"), 0);
    table.setDataSource(&source);
    table.resize(400, 200);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));

    QAbstractItemModel* model = table.model();
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->columnCount(), 2);
    QCOMPARE(model->headerData(1, Qt::Horizontal, tarn::TARNTableModel::kColumnIdentifierRole),
             QVariant("amount"));
    QCOMPARE(model->index(0, 0).data(), QVariant("Corner Grocer"));
    QCOMPARE(model->index(1, 1).data(), QVariant(""));

    // The user clicks the payee of the second row, opens it for editing
    // with F2 and types.
    const QRect cell = table.visualRect(model->index(1, 0));
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, cell.center());
    QCOMPARE(table.currentIndex(), model->index(1, 0));
    QTest::keyClick(&table, Qt::Key_F2);
    auto* editor = table.viewport()->findChild<QLineEdit*>();
    QVERIFY(editor != nullptr);
    QTest::keyClicks(editor, "Landlord");
    QTest::keyClick(editor, Qt::Key_Return);
    // The view commits the edit from its event loop.
    QTRY_COMPARE(source.objectForKey("payee", 1), QVariant("Landlord"));
    QCOMPARE(model->index(1, 0).data(), QVariant("Landlord"));
    QVERIFY(!(model->flags(model->index(0, 1)) & Qt::ItemIsEditable));

    // A nil value from the table is stored as the empty string.
    QVERIFY(model->setData(model->index(0, 0), QVariant()));
    QCOMPARE(source.objectForKey("payee", 0), QVariant(QString("")));
  }

  void outlineChildren() {
    TARNOutlineViewItem parent;
    auto a = Item("a", "A");
    auto b = Item("b", "B");
    parent.AddChild(a);
    parent.AddChild(nullptr);
    parent.InsertChild(b, 1);  // equal to the count: appends
    parent.InsertChild(Item("c", "C"), 3);
    parent.InsertChild(Item("d", "D"), -1);
    QCOMPARE(Identifiers(parent), (QStringList{"a", "b"}));
    parent.InsertChild(Item("z", "Z"), 0);
    QCOMPARE(Identifiers(parent), (QStringList{"z", "a", "b"}));
    QCOMPARE(parent.childWithIdentifier(QString("b")), b);
    QCOMPARE(parent.childWithIdentifier(std::nullopt), nullptr);
    QCOMPARE(parent.childWithIdentifier(QString("nope")), nullptr);

    parent.AddChildren({a, b});
    parent.RemoveChild(a);  // every occurrence
    QCOMPARE(Identifiers(parent), (QStringList{"z", "b", "b"}));
    parent.RemoveChildAtIndex(3);
    parent.RemoveChildAtIndex(0);
    QCOMPARE(Identifiers(parent), (QStringList{"b", "b"}));
    parent.RemoveChildren();
    QVERIFY(parent.GetChildren().empty());

    TARNOutlineViewItem item;
    QCOMPARE(item.identifier(), QString(""));
    item.setIdentifier(std::nullopt);
    QCOMPARE(item.identifier(), QString(""));
  }

  void outlineShownInATreeView() {
    auto root = std::make_shared<tarn::TARNOutlineViewDataSource>();
    auto food = Item("food", "Food");
    food->setObject("-120.00", "total");
    auto groceries = Item("groceries", "Groceries");
    auto dining = Item("dining", "Dining");
    food->AddChildren({groceries, dining});
    auto heading = Item("heading", "Expenses");
    heading->SetSelectable(false);
    root->AddChild(heading);
    root->AddChild(food);
    // The same item under a second parent.
    auto travel = Item("travel", "Travel");
    travel->AddChild(dining);
    root->AddChild(travel);

    QVERIFY(root->outlineViewIsItemExpandable(nullptr, nullptr));
    QVERIFY(!root->outlineViewIsItemExpandable(nullptr, groceries.get()));
    QCOMPARE(root->outlineViewNumberOfChildrenOfItem(nullptr, nullptr), 3);
    QCOMPARE(root->outlineViewChildOfItem(nullptr, 1, nullptr), food);
    QVERIFY(!root->outlineViewObjectValue(nullptr, std::nullopt, food.get()).isValid());
    QVERIFY(!root->outlineViewObjectValue(nullptr, QString("name"), nullptr).isValid());

    tarn::TARNOutlineModel model(root, {"name", "total"}, {"Category", "Total"});
    QTreeView view;
    view.setModel(&model);
    view.resize(400, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.expandAll();

    QCOMPARE(model.rowCount(), 3);
    const QModelIndex foodIndex = model.index(1, 0);
    QCOMPARE(foodIndex.data(), QVariant("Food"));
    QCOMPARE(model.index(1, 1).data(), QVariant("-120.00"));
    QCOMPARE(model.rowCount(foodIndex), 2);
    QVERIFY(model.hasChildren(foodIndex));
    QVERIFY(!model.hasChildren(model.index(0, 0)));
    const QModelIndex diningUnderFood = model.index(1, 0, foodIndex);
    const QModelIndex diningUnderTravel = model.index(0, 0, model.index(2, 0));
    QCOMPARE(diningUnderTravel.data(), QVariant("Dining"));
    QCOMPARE(model.parent(diningUnderFood), foodIndex);
    QCOMPARE(model.parent(diningUnderTravel).row(), 2);

    // Clicking the heading selects nothing; clicking Groceries selects it.
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                      view.visualRect(model.index(0, 0)).center());
    QVERIFY(view.selectionModel()->selectedIndexes().isEmpty());
    const QModelIndex groceriesIndex = model.index(0, 0, foodIndex);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                      view.visualRect(groceriesIndex).center());
    QCOMPARE(view.selectionModel()->currentIndex(), groceriesIndex);

    // Edits reach the item.
    QVERIFY(model.setData(model.index(1, 1, foodIndex), "-35.10"));
    QCOMPARE(dining->objectForKey("total"), QVariant("-35.10"));

    food->RemoveChildren();
    model.reloadData();
    QCOMPARE(model.rowCount(model.index(1, 0)), 0);
  }
};

QTEST_MAIN(DataSourcesTest)
#include "tst_data_sources.moc"
