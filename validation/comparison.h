// Tolerant comparisons of powers: the primitives every dispatch check is made of.
#ifndef TAMLO_VALIDATION_COMPARISON_H
#define TAMLO_VALIDATION_COMPARISON_H

namespace tamlo_validation {

// Relative tolerance of every comparison, and the absolute threshold in kW below which a
// power counts as zero ("is producing power", "power is being purchased").
inline constexpr double validation_tolerance = 1e-6;

// Efficiencies are stored in percent.
inline constexpr double percent_divisor = 100.0;

// A NaN operand is never negligible: it always reaches the final comparison, so a NaN
// counts as a mismatch or a violation and is reported rather than hidden.

// True when both values are negligible (below t in magnitude) or differ by at most t
// relative to the larger signed value.
bool approximately_equal(double a, double b, double t);

// True when a exceeds b by at least t relative to the larger magnitude.
bool definitely_greater(double a, double b, double t);

// Exactly !definitely_greater(a, b, t).
bool not_definitely_greater(double a, double b, double t);

// True when a falls short of b by at least t relative to the larger magnitude.
bool definitely_less(double a, double b, double t);

}  // namespace tamlo_validation

#endif
