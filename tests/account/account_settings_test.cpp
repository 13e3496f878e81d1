// The account's remembered settings taken and given as whole values: each
// group goes through the account dictionary unchanged, touches only its own
// keys, and the register and reconcile views keep their settings apart.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/filters/filter.h"

namespace tarn {
namespace {

using namespace testing;
using Keys = std::set<std::string>;

// The keys whose values differ between two account dictionaries, or that
// only one of them holds.
Keys ChangedKeys(const plist::Value& before, const plist::Value& after) {
  Keys keys;
  for (const auto& [key, value] : before.dictionaryValue()) {
    const plist::Value* other = after.find(key);
    if (!other || !(*other == value)) keys.insert(key);
  }
  for (const auto& [key, value] : after.dictionaryValue()) {
    if (!before.find(key)) keys.insert(key);
  }
  return keys;
}

Keys ViewFilterKeys(const std::string& prefix) {
  Keys keys;
  for (const char* suffix :
       {"FilterType", "FilterData", "ResolvedFilterType", "TaxDeductibleFilterType",
        "DateFilterType", "DateFilterStartDate", "DateFilterEndDate"}) {
    keys.insert(prefix + suffix);
  }
  return keys;
}

// Settings that differ from the defaults, and from each other, in every field.
ViewFilterSettings RegisterView() {
  return {kViewSearchToFrom,
          plist::Value("rent"),
          kViewUnresolvedOnly,
          kViewNotTaxDeductible,
          kViewDateCustom,
          20240101,
          20240131};
}

ViewFilterSettings ReconcileView() {
  return {kViewSearchDescription,
          plist::Value("fuel"),
          kViewResolvedOnly,
          kViewTaxDeductibleOnly,
          41,
          20230301,
          20230331};
}

std::shared_ptr<TARNAccount> Reloaded(const TARNAccount& account) {
  CapturedLog quiet;
  return TARNAccount::initWithDictionary(account.asDictionary(), nullptr);
}

TEST(AccountSettings, EachGroupRoundTripsWholeAndTouchesOnlyItsOwnKeys) {
  PinnedClock clock;
  const TARNAccount plain;
  const plist::Value defaults = plain.asDictionary();

  // Every field away from its default.
  const OFXImportSettings ofx{false, 5, 4, 3, 2, 1};
  const QIFImportSettings qif{30, 2, ",", ".", false, true, false, 2, 1, 0};
  const TextImportSettings text{12, std::vector<std::int32_t>{3, 0, -1, 7}, true, 1, 3, ";", " ",
                                0};
  const TextExportSettings exportSettings{2, 5};
  ASSERT_NE(ofx, plain.ofxImportSettings());
  ASSERT_NE(qif, plain.qifImportSettings());
  ASSERT_NE(text, plain.textImportSettings());
  ASSERT_NE(exportSettings, plain.textExportSettings());

  {
    TARNAccount account;
    account.setOFXImportSettings(ofx);
    EXPECT_EQ(Reloaded(account)->ofxImportSettings(), ofx);
    EXPECT_EQ(
        ChangedKeys(defaults, account.asDictionary()),
        (Keys{"OFXImportZeroAmountsAsDeposits", "OFXImport_SwapOptions_Name",
              "OFXImport_SwapOptions_Payee", "OFXImport_SwapOptions_Memo",
              "OFXImport_SwapOptions_TransactionType", "OFXImport_SwapOptions_ReferenceNumber"}));
    // The field accessors read the same value.
    EXPECT_EQ(account.GetOFXImport_SwapOptions_Memo(), 3);
    EXPECT_FALSE(account.GetOFXImportZeroAmountsAsDeposits());
  }
  {
    TARNAccount account;
    account.setQIFImportSettings(qif);
    EXPECT_EQ(Reloaded(account)->qifImportSettings(), qif);
    EXPECT_EQ(
        ChangedKeys(defaults, account.asDictionary()),
        (Keys{"QIFImportEncoding", "QIFImportDateFormat", "QIFImportDecimalSeparator",
              "QIFImportThousandsSeparator", "QIFImportZeroAmountsAsDeposits",
              "QIFImportAllCategories", "QIFImportSplitLineItems", "QIFImport_SwapOptions_ToFrom",
              "QIFImport_SwapOptions_Category", "QIFImport_SwapOptions_Description"}));
    EXPECT_EQ(account.GetQIFImportDecimalSeparator(), ",");
  }
  {
    TARNAccount account;
    account.setTextImportSettings(text);
    EXPECT_EQ(Reloaded(account)->textImportSettings(), text);
    EXPECT_EQ(ChangedKeys(defaults, account.asDictionary()),
              (Keys{"textImportEncoding", "textImportDataLayout", "textImportSkipFirstRow",
                    "textImportDataFormat", "textImportDateFormat", "textImportDecimalSeparator",
                    "textImportThousandsSeparator", "textImportZeroAmountsAsDeposits"}));
    EXPECT_EQ(account.asDictionary().find("textImportDataLayout")->stringValue(), "3,0,-1,7");
    // No layout is no key, and reads back as no layout.
    TextImportSettings noLayout = text;
    noLayout.dataLayout.reset();
    account.setTextImportSettings(noLayout);
    EXPECT_EQ(account.asDictionary().find("textImportDataLayout"), nullptr);
    EXPECT_EQ(Reloaded(account)->textImportSettings(), noLayout);
  }
  {
    TARNAccount account;
    account.setTextExportSettings(exportSettings);
    EXPECT_EQ(Reloaded(account)->textExportSettings(), exportSettings);
    EXPECT_EQ(ChangedKeys(defaults, account.asDictionary()),
              (Keys{"textExport_ExportType", "textExport_Encoding"}));
  }
  {
    TARNAccount account;
    account.setEntryViewFilterSettings(RegisterView());
    EXPECT_EQ(Reloaded(account)->entryViewFilterSettings(), RegisterView());
    EXPECT_EQ(ChangedKeys(defaults, account.asDictionary()), ViewFilterKeys("entry"));
    account.setReconcileViewFilterSettings(ReconcileView());
    EXPECT_EQ(Reloaded(account)->reconcileViewFilterSettings(), ReconcileView());
  }

  // All groups at once, and a default account, come back as they went.
  TARNAccount all;
  all.setOFXImportSettings(ofx);
  all.setQIFImportSettings(qif);
  all.setTextImportSettings(text);
  all.setTextExportSettings(exportSettings);
  auto reloaded = Reloaded(all);
  EXPECT_EQ(reloaded->ofxImportSettings(), ofx);
  EXPECT_EQ(reloaded->qifImportSettings(), qif);
  EXPECT_EQ(reloaded->textImportSettings(), text);
  EXPECT_EQ(reloaded->textExportSettings(), exportSettings);
  auto plainReloaded = Reloaded(plain);
  EXPECT_EQ(plainReloaded->ofxImportSettings(), plain.ofxImportSettings());
  EXPECT_EQ(plainReloaded->entryViewFilterSettings(), plain.entryViewFilterSettings());
  EXPECT_EQ(plainReloaded->reconcileViewFilterSettings(), plain.reconcileViewFilterSettings());
}

TEST(AccountSettings, RegisterAndReconcileViewsKeepTheirSettingsApart) {
  PinnedClock clock;
  TARNAccount account;
  // The register view keeps the first, the reconcile view the second.
  Add(account, 1, 20240110, -20.0, "rent", "rent office");
  auto fuel = Add(account, 2, 20240520, -12.5, "fuel", "garage");
  fuel->SetCleared(1);
  fuel->SetTaxDeductible(true);
  Add(account, 3, 20240521, -30.0, "fuel", "garage");

  account.setEntryViewFilterSettings(RegisterView());
  EXPECT_EQ(account.reconcileViewFilterSettings(), TARNAccount().reconcileViewFilterSettings());
  account.setReconcileViewFilterSettings(ReconcileView());
  EXPECT_EQ(account.entryViewFilterSettings(), RegisterView());

  // Stored under each view's own prefix.
  const plist::Value saved = account.asDictionary();
  EXPECT_EQ(*saved.find("entryFilterType"), plist::Value(kViewSearchToFrom));
  EXPECT_EQ(*saved.find("reconcileFilterType"), plist::Value(kViewSearchDescription));
  EXPECT_EQ(*saved.find("entryFilterData"), plist::Value("rent"));
  EXPECT_EQ(*saved.find("reconcileFilterData"), plist::Value("fuel"));
  EXPECT_EQ(*saved.find("entryDateFilterStartDate"), plist::Value(20240101));
  EXPECT_EQ(*saved.find("reconcileDateFilterStartDate"), plist::Value(20230301));

  auto reloaded = Reloaded(account);
  EXPECT_EQ(reloaded->entryViewFilterSettings(), RegisterView());
  EXPECT_EQ(reloaded->reconcileViewFilterSettings(), ReconcileView());

  // A dictionary holding one view's keys leaves the other at its defaults.
  plist::Dictionary registerOnly;
  for (const std::string& key : ViewFilterKeys("entry"))
    registerOnly.emplace(key, *saved.find(key));
  CapturedLog quiet;
  auto loaded = TARNAccount::initWithDictionary(plist::Value(std::move(registerOnly)), nullptr);
  EXPECT_EQ(loaded->entryViewFilterSettings(), RegisterView());
  EXPECT_EQ(loaded->reconcileViewFilterSettings(), TARNAccount().reconcileViewFilterSettings());

  // Each view's filter comes from its own settings.
  auto conditions = [](const TARNFilter& filter) {
    std::vector<plist::Value> data;
    for (const auto& group : filter.conditionGroups()) {
      for (const auto& condition : group->conditions()) data.push_back(condition->data());
    }
    return data;
  };
  EXPECT_EQ(reloaded->entryFilter()->name(), "To/From");
  EXPECT_EQ(reloaded->reconcileFilter()->name(), "Description");
  EXPECT_EQ(conditions(*reloaded->entryFilter()),
            conditions(*reloaded->filterForViewFilterSettings(RegisterView())));
  EXPECT_EQ(conditions(*reloaded->reconcileFilter()),
            conditions(*reloaded->filterForViewFilterSettings(ReconcileView())));
  EXPECT_EQ(Numbers(reloaded->entryFilteredEntries()), (std::vector<std::int32_t>{1}));
  EXPECT_EQ(Numbers(reloaded->reconcileFilteredEntries()), (std::vector<std::int32_t>{2}));

  // A nil search text is not stored; it reads back as the empty search.
  ViewFilterSettings nilSearch = RegisterView();
  nilSearch.filterData = plist::Value();
  account.setEntryViewFilterSettings(nilSearch);
  EXPECT_EQ(account.asDictionary().find("entryFilterData"), nullptr);
  EXPECT_EQ(Reloaded(account)->entryFilterData(), plist::Value(std::string()));
  EXPECT_EQ(Reloaded(account)->reconcileFilterData(), plist::Value("fuel"));
}

}  // namespace
}  // namespace tarn
