// Writing and reading amounts through the currency's formatter.

#include "money_text.h"

#include <QCoreApplication>

#include "tarn/account/account.h"
#include "tarn/model/currency.h"

const tarn::PFCurrency& CurrencyOf(const tarn::TARNAccount* account) {
  if (account && account->currency()) return *account->currency();
  static const tarn::PFCurrency dollar = [] {
    tarn::PFCurrency currency;
    currency.setCode(std::string("USD"));
    currency.setDescription(std::string("US Dollar"));
    return currency;
  }();
  return dollar;
}

QString MoneyText(const tarn::PFCurrency& currency, double amount) {
  return QString::fromStdString(currency.formatter()->stringForObjectValue(amount));
}

std::optional<double> ReadMoney(const tarn::PFCurrency& currency, const QString& text) {
  if (text.trimmed().isEmpty()) return 0.0;
  return currency.amountFromString(text.toStdString());
}

QString NotAnAmount(const tarn::PFCurrency& currency, const QString& text) {
  return QCoreApplication::translate("MoneyText", "\"%1\" is not an amount in %2, such as %3.")
      .arg(text.trimmed(), QString::fromStdString(currency.code()),
           MoneyText(currency, 1234.56).trimmed());
}
