// Readers of the grids and their price models: real-time, scheduled, complex-utility tariff.
#include <memory>

#include "scenario_readers.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

namespace {

std::vector<std::uint64_t> to_indices(const std::vector<double>& values) {
    return {values.begin(), values.end()};
}

std::vector<DemandRate> read_demand_rates(ObjectReader& r) {
    std::vector<DemandRate> rates;
    r.list("demand_rate", [&](ObjectReader& e, std::size_t) {
        DemandRate rate;
        e.read("demand_rate", rate.demand_rate);
        e.read("grid_label", rate.grid_label);
        e.object("grid_state", [&](ObjectReader& f) { read_grid_state_flags(f, rate.grid_state); });
        rates.push_back(rate);
    });
    return rates;
}

// demand_rate_index drives the per-step flags of a real-time grid, so it must cover the run
// whenever there are demand rates to point at.
std::vector<std::uint64_t> read_demand_rate_index(ObjectReader& r, ScenarioContext& context, std::size_t rates) {
    std::vector<double> index;
    if (!read_number_list(r, "demand_rate_index", context, index_into(rates, "demand_rate"), rates > 0, index) &&
        rates > 0) {
        r.require("demand_rate_index");
    }
    return to_indices(index);
}

std::vector<TariffRate> read_tariff_rates(ObjectReader& r, const char* key) {
    std::vector<TariffRate> rates;
    r.list(key, [&](ObjectReader& e, std::size_t) {
        TariffRate rate;
        e.read("rate_name", rate.rate_name);
        e.list("rate_bands", [&](ObjectReader& b, std::size_t) {
            RateBand band;
            b.read("upper_limit", band.upper_limit);
            b.read("rate_amount", band.rate_amount);
            rate.rate_bands.push_back(band);
        });
        e.list("tou_periods", [&](ObjectReader& p, std::size_t) {
            TouPeriod period;
            p.read("from_day_of_week", period.from_day_of_week);
            p.read("from_hour", period.from_hour);
            p.read("from_minute", period.from_minute);
            p.read("to_day_of_week", period.to_day_of_week);
            p.read("to_hour", period.to_hour);
            p.read("to_minute", period.to_minute);
            rate.tou_periods.push_back(period);
        });
        e.object("season", [&](ObjectReader& s) {
            s.read("from_month", rate.season.from_month);
            s.read("from_day", rate.season.from_day);
            s.read("to_month", rate.season.to_month);
            s.read("to_day", rate.season.to_day);
        });
        e.read("charge_type", rate.charge_type);
        rates.push_back(rate);
    });
    return rates;
}

std::shared_ptr<IGridModel> read_real_time(ObjectReader& r, ScenarioContext& context) {
    auto model = std::make_shared<RealTime>();
    model->demand_rate = read_demand_rates(r);
    model->demand_rate_index = read_demand_rate_index(r, context, model->demand_rate.size());
    r.require("realtime_power_price");
    read_number_list(r, "realtime_power_price", context, price, true, model->realtime_power_price);
    r.require("realtime_sellback_rate");
    read_number_list(r, "realtime_sellback_rate", context, price, true, model->realtime_sellback_rate);
    return model;
}

std::shared_ptr<IGridModel> read_scheduled(ObjectReader& r, ScenarioContext& context) {
    auto model = std::make_shared<Scheduled>();
    model->demand_rate = read_demand_rates(r);
    std::vector<double> index;
    read_number_list(r, "demand_rate_index", context, index_into(model->demand_rate.size(), "demand_rate"), false,
                     index);
    model->demand_rate_index = to_indices(index);
    r.require("grid_rate");
    r.list("grid_rate", [&](ObjectReader& e, std::size_t) {
        GridRate rate;
        e.read("grid_label", rate.grid_label);
        e.object("grid_state", [&](ObjectReader& f) { read_grid_state_flags(f, rate.grid_state); });
        e.read("power_price", rate.power_price, price);
        e.read("sellback_rate", rate.sellback_rate, price);
        model->grid_rate.push_back(rate);
    });
    r.require("grid_rate_index");
    read_number_list(r, "grid_rate_index", context, index_into(model->grid_rate.size(), "grid_rate"), true, index);
    model->grid_rate_index = to_indices(index);
    return model;
}

std::shared_ptr<IGridModel> read_complex_utility(ObjectReader& r, ScenarioContext& context) {
    auto model = std::make_shared<ComplexUtility>();
    r.read("tariff_name", model->tariff_name);
    r.read("tariff_code", model->tariff_code);
    model->consumption_rates = read_tariff_rates(r, "consumption_rates");
    model->demand_rates = read_tariff_rates(r, "demand_rates");
    model->fixed_rates = read_tariff_rates(r, "fixed_rates");
    model->minimum_rates = read_tariff_rates(r, "minimum_rates");
    model->tax_rates = read_tariff_rates(r, "tax_rates");
    r.require("purchase_price");
    read_number_list(r, "purchase_price", context, price, true, model->purchase_price);
    r.require("export_price");
    read_number_list(r, "export_price", context, price, true, model->export_price);
    read_number_list(r, "demand_price", context, any_number, false, model->demand_price);
    return model;
}

}  // namespace

void read_grid_state_flags(ObjectReader& r, GridStateFlags& flags) {
    r.read("grid_is_down", flags.grid_is_down);
    r.read("maintain_state_of_charge", flags.maintain_state_of_charge);
    r.read("maintain_state_of_charge_has_ended", flags.maintain_state_of_charge_has_ended);
    r.read("maintain_state_of_charge_percent", flags.maintain_state_of_charge_percent);
    r.read("prohibit_any_battery_charging", flags.prohibit_any_battery_charging);
    r.read("prohibit_any_grid_sales", flags.prohibit_any_grid_sales);
    r.read("prohibit_battery_from_discharging", flags.prohibit_battery_from_discharging);
    r.read("prohibit_grid_from_charging_battery", flags.prohibit_grid_from_charging_battery);
    r.read("prohibit_grid_sales_from_battery", flags.prohibit_grid_sales_from_battery);
}

void read_grid(ObjectReader& r, GridParameters& grid, ScenarioContext& context) {
    r.require("technical_model");
    r.object("technical_model", [&](ObjectReader& m) {
        m.require("model_type");
        std::string type;
        m.read("model_type", type);
        if (type == "RealTime") {
            grid.technical_model = read_real_time(m, context);
        } else if (type == "Scheduled") {
            grid.technical_model = read_scheduled(m, context);
        } else if (type == "ComplexUtility") {
            grid.technical_model = read_complex_utility(m, context);
        } else {
            m.fail(m.child_path("model_type"),
                   "expected \"RealTime\", \"Scheduled\" or \"ComplexUtility\", found \"" + type + "\"");
        }
    });
    r.read("limit_net_grid_purchases", grid.limit_net_grid_purchases);
    r.read("max_net_grid_purchases", grid.max_net_grid_purchases, power_kw);
}

}  // namespace tamlo_host
