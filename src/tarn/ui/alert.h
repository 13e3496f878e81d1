// The panels' alert: a modal message box with no title, a warning icon, a
// bold statement, an explanatory message and one "OK" button that Return
// presses. Texts are looked up through Localized.
#pragma once

#include <QString>

class QWidget;

namespace tarn {

// Runs the alert modally over `parent` (may be null) until the user presses OK.
void RunAlert(QWidget* parent, const QString& statement, const QString& message);

}  // namespace tarn
