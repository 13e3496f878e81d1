// While a modal panel or sheet runs over the window, the window's controls
// and every menu of its menu bar are disabled through tarn_ui's modal
// enabling, and given back exactly as they were when the run ends, also when
// runs nest. Make one on the stack around the panel's exec().
#pragma once

#include "tarn/ui/modal_states.h"

class QMainWindow;

class ModalRun {
 public:
  explicit ModalRun(QMainWindow* window);
  ModalRun(const ModalRun&) = delete;
  ModalRun& operator=(const ModalRun&) = delete;

 private:
  tarn::ModalDisabling disabling_;
};
