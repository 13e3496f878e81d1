// Placing the panels' windows before a modal run.
#pragma once

class QWidget;

namespace tarn {

// Centres the window over its parent window, or on the primary screen when
// it has none, at its current size.
void CenterWindow(QWidget* window);

}  // namespace tarn
