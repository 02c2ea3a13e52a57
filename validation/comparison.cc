// Tolerant comparisons of powers: the primitives every dispatch check is made of.
#include "comparison.h"

#include <cmath>
#include <limits>

namespace tamlo_validation {
namespace {

// The larger magnitude of the two, NaN when either is NaN (std::max would drop a NaN in
// second position and could let it pass as negligible).
double larger_magnitude(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double abs_a = std::fabs(a);
    const double abs_b = std::fabs(b);
    return abs_a > abs_b ? abs_a : abs_b;
}

}  // namespace

bool approximately_equal(double a, double b, double t) {
    if (t > larger_magnitude(a, b)) {
        return true;
    }
    // The signed maximum: values of opposite sign whose maximum is 0 give an infinite
    // quotient and so never match.
    const double signed_max = a > b ? a : b;
    return std::fabs((a - b) / signed_max) <= t;
}

bool definitely_greater(double a, double b, double t) {
    const double m = larger_magnitude(a, b);
    if (t > m) {
        return false;
    }
    return !((b - a) / m > -t);
}

bool not_definitely_greater(double a, double b, double t) {
    const double m = larger_magnitude(a, b);
    if (t > m) {
        return true;
    }
    return (b - a) / m > -t;
}

bool definitely_less(double a, double b, double t) {
    const double m = larger_magnitude(a, b);
    if (t > m) {
        return false;
    }
    return !((a - b) / m > -t);
}

}  // namespace tamlo_validation
