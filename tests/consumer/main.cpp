// Links against the installed library and checks one rounding result.
#include <tarn/model/decimal_rounding.h>

int main() {
  return tarn::RoundDecimalPlain(2.675, 2) == 2.68 ? 0 : 1;
}
