// Amounts as the window writes and reads them: in the currency of the
// account they belong to, as its formatter writes them (symbol and its
// place, grouping, two decimals, negatives in the currency's own way), and
// read back with or without the symbol and the grouping.
#pragma once

#include <QString>

#include <optional>

namespace tarn {
class PFCurrency;
class TARNAccount;
}  // namespace tarn

// The account's currency; a US dollar when there is no account or the
// account has none.
const tarn::PFCurrency& CurrencyOf(const tarn::TARNAccount* account);

QString MoneyText(const tarn::PFCurrency& currency, double amount);
inline QString MoneyText(const tarn::TARNAccount* account, double amount) {
  return MoneyText(CurrencyOf(account), amount);
}

// What the user typed into an amount field: empty text is nothing typed (0),
// text that is no amount of the currency is nullopt.
std::optional<double> ReadMoney(const tarn::PFCurrency& currency, const QString& text);

// Tells the user that `text` is no amount, with an example of the
// currency's format.
QString NotAnAmount(const tarn::PFCurrency& currency, const QString& text);
