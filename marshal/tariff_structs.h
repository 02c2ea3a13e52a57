// Builds the rate components of a complex utility tariff: rates, their blocks, time-of-use
// periods and seasons.
#ifndef TAMLO_MARSHAL_TARIFF_STRUCTS_H
#define TAMLO_MARSHAL_TARIFF_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/grid_models.h"

namespace tamlo_marshal {

// New N x 1 struct arrays; the caller owns them.
mxArray* make_tariff_rates(const std::vector<tamlo_dispatch::TariffRate>& rates);
mxArray* make_rate_bands(const std::vector<tamlo_dispatch::RateBand>& bands);
mxArray* make_tou_periods(const std::vector<tamlo_dispatch::TouPeriod>& periods);
// New 1 x 1 season struct; the caller owns it.
mxArray* make_tariff_season(const tamlo_dispatch::TariffSeason& season);

}  // namespace tamlo_marshal

#endif
