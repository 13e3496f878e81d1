// A small account for the export tests: three categories shared through a
// controller, two types, and a register whose entries exercise every field
// of the exports (a check, a split, a void entry, an entry without category),
// plus one entry set aside in a folder.
#pragma once

#include <memory>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn::testing_support {

struct ExportLedger {
  InMemoryAccountsController controller;
  std::shared_ptr<TARNAccount> account = SignedInAccount();

  ExportLedger() {
    auto home = std::make_shared<TARNAccountEntryCategory>();
    home->setName(std::string("Home"));
    home->setNumber(1);
    auto rent = std::make_shared<TARNAccountEntryCategory>();
    rent->setName(std::string("Rent"));
    rent->setNumber(2);
    home->addChild(rent);
    auto food = std::make_shared<TARNAccountEntryCategory>();
    food->setName(std::string("Food"));
    food->setNumber(3);
    controller.categories() = {home, food};
    account->setAccountsController(&controller);

    auto checkType = std::make_shared<TARNAccountEntryType>();
    checkType->SetName(std::string("Check"));
    checkType->SetNumber(10);
    checkType->SetIsCheck(true);
    auto payType = std::make_shared<TARNAccountEntryType>();
    payType->SetName(std::string("Payroll"));
    payType->SetNumber(11);
    payType->SetIsDeposit(true);
    account->types() = {checkType, payType};

    account->SetName(std::string("Everyday"));
    account->SetStartingBalance(100.0);

    auto check = Add(*account, {.number = 1,
                                .date = 20240105,
                                .amount = -1200.0,
                                .kind = Kind::Check,
                                .checkNumber = 101,
                                .description = "January rent",
                                .toFrom = "Landlord",
                                .cleared = true});
    check->SetType(10);
    check->SetCategory(2);
    auto salary = Add(*account, {.number = 2,
                                 .date = 20240103,
                                 .amount = 2500.5,
                                 .kind = Kind::Deposit,
                                 .description = "Salary",
                                 .toFrom = "Employer"});
    salary->SetType(11);
    salary->SetTaxDeductible(true);
    auto groceries = Add(*account, {.number = 3,
                                    .date = 20240105,
                                    .description = "Groceries & more",
                                    .toFrom = "Market",
                                    .cleared = true});
    groceries->SetCategory(3);
    groceries->addSplitLineItemWithCategory(3, "Food", "Market", -40.0);
    groceries->addSplitLineItemWithCategory(2, "Bits", "Market", -5.67);
    groceries->addSplitLineItemWithCategory(99, "Unknown", "Market", -0.01);
    // Void, numbered 0 without being a check, with an unknown category.
    auto voided = Add(*account, {.number = 4,
                                 .date = 20240110,
                                 .amount = -10.0,
                                 .checkNumber = 0,
                                 .description = "Cancelled",
                                 .toFrom = "Nobody",
                                 .isVoid = true});
    voided->SetCategory(42);

    // The folder's entry is the account's earliest: it dates the starting
    // balance but is not exported itself.
    auto folder = std::make_shared<TARNAccountFolder>();
    folder->setEntries({MakeEntry({.number = 5, .date = 20231201, .amount = -3.0})});
    account->addFolder(folder);
  }
};

}  // namespace tarn::testing_support
