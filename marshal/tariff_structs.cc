// Builds the rate components of a complex utility tariff: rates, their blocks, time-of-use
// periods and seasons.
#include "tariff_structs.h"

#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_tariff_rates(const std::vector<TariffRate>& rates) {
    mxArray* s = make_struct_array(rates.size());
    for (std::size_t i = 0; i < rates.size(); ++i) {
        const TariffRate& rate = rates[i];
        set_string_field(s, i, "rate_name", rate.rate_name);
        set_struct_field(s, i, "rate_bands", make_rate_bands(rate.rate_bands));
        set_struct_field(s, i, "tou_periods", make_tou_periods(rate.tou_periods));
        set_struct_field(s, i, "season", make_tariff_season(rate.season));
        set_string_field(s, i, "charge_type", rate.charge_type);
    }
    return s;
}

// The limit comes first in MATLAB, the reverse of the record's order.
mxArray* make_rate_bands(const std::vector<RateBand>& bands) {
    mxArray* s = make_struct_array(bands.size());
    for (std::size_t i = 0; i < bands.size(); ++i) {
        set_number_field(s, i, "upper_limit", bands[i].upper_limit);
        set_number_field(s, i, "rate_amount", bands[i].rate_amount);
    }
    return s;
}

mxArray* make_tou_periods(const std::vector<TouPeriod>& periods) {
    mxArray* s = make_struct_array(periods.size());
    for (std::size_t i = 0; i < periods.size(); ++i) {
        const TouPeriod& period = periods[i];
        set_number_field(s, i, "from_day_of_week", count_to_double(period.from_day_of_week));
        set_number_field(s, i, "from_hour", count_to_double(period.from_hour));
        set_number_field(s, i, "from_minute", count_to_double(period.from_minute));
        set_number_field(s, i, "to_day_of_week", count_to_double(period.to_day_of_week));
        set_number_field(s, i, "to_hour", count_to_double(period.to_hour));
        set_number_field(s, i, "to_minute", count_to_double(period.to_minute));
    }
    return s;
}

mxArray* make_tariff_season(const TariffSeason& season) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "from_month", count_to_double(season.from_month));
    set_number_field(s, 0, "from_day", count_to_double(season.from_day));
    set_number_field(s, 0, "to_month", count_to_double(season.to_month));
    set_number_field(s, 0, "to_day", count_to_double(season.to_day));
    return s;
}

}  // namespace tamlo_marshal
