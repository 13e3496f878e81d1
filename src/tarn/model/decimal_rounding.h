// Rounding of amounts as decimal numbers, the way the platform's decimal
// arithmetic rounds them: the double is first read as the shortest decimal
// text that converts back to the same double, so 10.125 is "10.125" and not
// 10.12499999999999964..., then rounded half away from zero.
#pragma once

namespace tarn {

// Rounds to `scale` decimals, halves away from zero (10.125 -> 10.13,
// -2.125 -> -2.13, 2.675 -> 2.68). NaN and infinities are returned as they are.
double RoundDecimalPlain(double value, int scale);

}  // namespace tarn
