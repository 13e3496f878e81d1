// The export and QIF import accessories: the encoding list and its order,
// the format and date-format choices, and the stored values they show.
#include <QComboBox>
#include <QRadioButton>
#include <QTest>
#include <set>

#include "tarn/ui/export_accessory_manager.h"
#include "tarn/ui/qif_import_accessory_manager.h"

using tarn::TARNExportAccessoryManager;
using tarn::TARNQIFImportAccessoryManager;

class AccessoryManagersTest : public QObject {
  Q_OBJECT

 private slots:
  void encodingList() {
    auto manager = TARNExportAccessoryManager::exportAccessoryManager();
    QComboBox* popUp = manager->encodingPopUp();
    QCOMPARE(popUp->objectName(), QString("encoding_PopUp"));
    const tarn::StringEncoding defaultEncoding = tarn::DefaultCStringEncoding();
    // Under the tests' C.UTF-8 locale the default 8-bit encoding is UTF-8
    // itself, which is then listed once.
    QCOMPARE(popUp->itemData(0).toULongLong(), qulonglong{defaultEncoding});
    QCOMPARE(manager->encoding(), defaultEncoding);
    std::vector<qulonglong> head;
    int separator = -1;
    for (int i = 0; i < popUp->count(); ++i) {
      if (!popUp->itemData(i).isValid()) {
        separator = i;
        break;
      }
      head.push_back(popUp->itemData(i).toULongLong());
    }
    QVERIFY(separator > 0);
    QVERIFY(std::find(head.begin(), head.end(), qulonglong{tarn::kUnicodeStringEncoding}) !=
            head.end());
    QVERIFY(std::find(head.begin(), head.end(), qulonglong{tarn::kUTF8StringEncoding}) !=
            head.end());

    // After the separator: every other encoding once, ordered by name.
    std::set<qulonglong> seen(head.begin(), head.end());
    QStringList names;
    for (int i = separator + 1; i < popUp->count(); ++i) {
      QVERIFY2(seen.insert(popUp->itemData(i).toULongLong()).second,
               qPrintable(popUp->itemText(i)));
      names.append(popUp->itemText(i));
    }
    QCOMPARE(seen.size(), tarn::AvailableStringEncodings().size());
    QStringList sorted = names;
    std::sort(sorted.begin(), sorted.end(),
              [](const QString& a, const QString& b) { return a.compare(b) < 0; });
    QCOMPARE(names, sorted);

    manager->setEncoding(tarn::kMacOSRomanStringEncoding);
    QCOMPARE(manager->encoding(), tarn::kMacOSRomanStringEncoding);
    manager->setEncoding(0x12345);  // none has it: unchanged
    QCOMPARE(manager->encoding(), tarn::kMacOSRomanStringEncoding);
  }

  void exportTypeChosenByTheUser() {
    TARNExportAccessoryManager manager;
    QWidget* view = manager.view();
    QCOMPARE(view->objectName(), QString("encoding_View"));
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view));
    manager.setExportType(-5);  // a new account's value shows the first format
    QCOMPARE(manager.exportType(), TARNExportAccessoryManager::kExportTypeQIF);
    auto* text = view->findChild<QRadioButton*>("exportTypeText");
    QTest::mouseClick(text, Qt::LeftButton, {}, QPoint(6, text->height() / 2));
    QCOMPARE(manager.exportType(), TARNExportAccessoryManager::kExportTypeTabDelimited);
    manager.setExportType(TARNExportAccessoryManager::kExportTypeQIF);
    QVERIFY(!text->isChecked());
    manager.setExportType(TARNExportAccessoryManager::kExportTypeTabDelimited);
    QVERIFY(text->isChecked());
    manager.setExportType(42);
    QCOMPARE(manager.exportType(), TARNExportAccessoryManager::kExportTypeQIF);
  }

  void qifDateFormats() {
    auto manager = TARNQIFImportAccessoryManager::QIFImportAccessoryManager();
    QCOMPARE(manager->GetView()->objectName(), QString("accessory_View"));
    QCOMPARE(manager->GetDateFormat(), 0);
    QCOMPARE(tarn::QIFImportDateFormatString(0), std::string("%m/%d/%y"));
    manager->SetDateFormat(3);
    QCOMPARE(manager->GetDateFormat(), 3);
    QCOMPARE(tarn::QIFImportDateFormatString(manager->GetDateFormat()), std::string("%d/%m/%Y"));
    manager->SetDateFormat(99);  // no item has it: unchanged
    QCOMPARE(manager->GetDateFormat(), 3);
    QCOMPARE(tarn::QIFImportDateFormatString(99), std::string("%m/%d/%y"));

    // The user picks with the keyboard.
    QComboBox* popUp = manager->dateFormatPopUp();
    manager->GetView()->show();
    popUp->setFocus();
    QTest::keyClick(popUp, Qt::Key_Down);
    QCOMPARE(manager->GetDateFormat(), 4);
    QCOMPARE(tarn::QIFImportDateFormatString(4), std::string("%Y-%m-%d"));
  }
};

QTEST_MAIN(AccessoryManagersTest)
#include "tst_accessory_managers.moc"
