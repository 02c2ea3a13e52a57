// The simulator's grid price models (real-time, scheduled, complex utility tariff) and the
// grid flags record shared with the per-step grid state.
#ifndef TAMLO_DISPATCH_GRID_MODELS_H
#define TAMLO_DISPATCH_GRID_MODELS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The grid model classes keep default visibility even inside a library built with hidden
// symbols: their type information is shared with the host, so that a model the host made
// passes the extension's checked downcast.
#if defined(_WIN32)
#define TAMLO_SHARED_TYPE
#else
#define TAMLO_SHARED_TYPE __attribute__((visibility("default")))
#endif

namespace tamlo_dispatch {

struct GridStateFlags {
    bool maintain_state_of_charge = false;
    bool prohibit_grid_from_charging_battery = false;
    bool prohibit_any_battery_charging = false;
    bool prohibit_battery_from_discharging = false;
    bool prohibit_grid_sales_from_battery = false;
    bool prohibit_any_grid_sales = false;
    bool grid_is_down = false;
    bool maintain_state_of_charge_has_ended = false;
    double maintain_state_of_charge_percent = 0.0;
};

enum class GridModelType : std::int32_t {
    RealTime = 0,
    Scheduled = 1,
    ComplexUtility = 2,
};

class TAMLO_SHARED_TYPE IGridModel {
public:
    virtual ~IGridModel() = default;
    virtual GridModelType get_model_type() const = 0;
};

struct DemandRate {
    std::string grid_label;
    GridStateFlags grid_state;
    double demand_rate = 0.0;
};

struct GridRate {
    std::string grid_label;
    GridStateFlags grid_state;
    double power_price = 0.0;
    double sellback_rate = 0.0;
};

struct RateBand {
    double rate_amount = 0.0;
    double upper_limit = 0.0;
};

struct TouPeriod {
    std::int32_t from_day_of_week = 0;
    std::int32_t from_hour = 0;
    std::int32_t from_minute = 0;
    std::int32_t to_day_of_week = 0;
    std::int32_t to_hour = 0;
    std::int32_t to_minute = 0;
};

struct TariffSeason {
    std::int32_t from_month = 0;
    std::int32_t from_day = 0;
    std::int32_t to_month = 0;
    std::int32_t to_day = 0;
};

struct TariffRate {
    std::string rate_name;
    std::vector<RateBand> rate_bands;
    std::vector<TouPeriod> tou_periods;
    TariffSeason season;
    std::string charge_type;
};

class TAMLO_SHARED_TYPE RealTime : public IGridModel {
public:
    GridModelType get_model_type() const override { return GridModelType::RealTime; }

    std::vector<DemandRate> demand_rate;
    std::vector<std::uint64_t> demand_rate_index;
    std::vector<double> realtime_power_price;
    std::vector<double> realtime_sellback_rate;
};

class TAMLO_SHARED_TYPE Scheduled : public IGridModel {
public:
    GridModelType get_model_type() const override { return GridModelType::Scheduled; }

    std::vector<DemandRate> demand_rate;
    std::vector<std::uint64_t> demand_rate_index;
    std::vector<GridRate> grid_rate;
    std::vector<std::uint64_t> grid_rate_index;
};

class TAMLO_SHARED_TYPE ComplexUtility : public IGridModel {
public:
    GridModelType get_model_type() const override { return GridModelType::ComplexUtility; }

    std::string tariff_name;
    std::string tariff_code;
    std::vector<TariffRate> consumption_rates;
    std::vector<TariffRate> demand_rates;
    std::vector<TariffRate> fixed_rates;
    std::vector<TariffRate> minimum_rates;
    std::vector<TariffRate> tax_rates;
    std::vector<double> purchase_price;
    std::vector<double> export_price;
    std::vector<double> demand_price;
};

struct GridParameters {
    std::shared_ptr<IGridModel> technical_model;
    bool limit_net_grid_purchases = false;
    double max_net_grid_purchases = 0.0;
};

static_assert(sizeof(GridModelType) == 4);
static_assert(offsetof(GridStateFlags, maintain_state_of_charge_has_ended) == 7);
static_assert(offsetof(GridStateFlags, maintain_state_of_charge_percent) == 8);
static_assert(sizeof(GridStateFlags) == 16);
static_assert(offsetof(DemandRate, grid_state) == sizeof(std::string));
static_assert(offsetof(DemandRate, demand_rate) == sizeof(std::string) + 16);
static_assert(offsetof(GridRate, sellback_rate) == sizeof(std::string) + 24);
static_assert(offsetof(RateBand, upper_limit) == 8);
static_assert(sizeof(TouPeriod) == 24 && offsetof(TouPeriod, to_minute) == 20);
static_assert(sizeof(TariffSeason) == 16 && offsetof(TariffSeason, to_day) == 12);
static_assert(offsetof(TariffRate, season) == sizeof(std::string) + 2 * sizeof(std::vector<RateBand>));
static_assert(offsetof(TariffRate, charge_type) ==
              sizeof(std::string) + 2 * sizeof(std::vector<RateBand>) + sizeof(TariffSeason));
static_assert(offsetof(GridParameters, limit_net_grid_purchases) == sizeof(std::shared_ptr<IGridModel>));
static_assert(offsetof(GridParameters, max_net_grid_purchases) == sizeof(std::shared_ptr<IGridModel>) + 8);

}  // namespace tamlo_dispatch

#endif
