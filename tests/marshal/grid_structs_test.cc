// The grids struct array: technical models of each kind, their rate schedules and tariffs,
// and models the builder cannot read.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

#include "grid_structs.h"
#include "mx_expect.h"
#include "tariff_structs.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal_test;
using namespace std::string_literals;

// A model of a kind the builder does not know.
class OtherModel : public IGridModel {
public:
    explicit OtherModel(std::int32_t type) : type_(type) {}
    GridModelType get_model_type() const override { return static_cast<GridModelType>(type_); }

private:
    std::int32_t type_;
};

// A model that claims to be Scheduled without being one.
class ImpostorModel : public IGridModel {
public:
    GridModelType get_model_type() const override { return GridModelType::Scheduled; }
    std::vector<GridRate> grid_rate{GridRate{}};
};

GridStateFlags flags_with_percent(double percent) {
    GridStateFlags flags;
    flags.grid_is_down = true;
    flags.maintain_state_of_charge_percent = percent;
    return flags;
}

const std::vector<std::string> flag_field_names = {
    "grid_is_down",
    "maintain_state_of_charge",
    "maintain_state_of_charge_has_ended",
    "maintain_state_of_charge_percent",
    "prohibit_any_battery_charging",
    "prohibit_any_grid_sales",
    "prohibit_battery_from_discharging",
    "prohibit_grid_from_charging_battery",
    "prohibit_grid_sales_from_battery"};

std::shared_ptr<RealTime> sample_real_time() {
    auto model = std::make_shared<RealTime>();
    model->demand_rate = {{"peak", flags_with_percent(40.0), 12.5}};
    model->demand_rate_index = {0, 0, 1};
    model->realtime_power_price = {0.1, 0.2};
    model->realtime_sellback_rate = {0.05};
    return model;
}

std::shared_ptr<Scheduled> sample_scheduled() {
    auto model = std::make_shared<Scheduled>();
    model->demand_rate = {{"day", {}, 3.0}, {"night", {}, 1.0}};
    model->demand_rate_index = {1, UINT64_MAX};
    model->grid_rate = {{"summer", flags_with_percent(55.0), 0.3, 0.1}};
    model->grid_rate_index = {0};
    return model;
}

std::shared_ptr<ComplexUtility> sample_complex_utility() {
    auto model = std::make_shared<ComplexUtility>();
    model->tariff_name = "E-19";
    model->tariff_code = "E19S";
    TariffRate energy;
    energy.rate_name = "energy";
    energy.rate_bands = {{0.12, 500.0}, {0.15, 1e9}};
    energy.tou_periods = {{1, -1, 0, 5, 18, 30}};
    energy.season = {5, 1, 10, 31};
    energy.charge_type = "consumption";
    model->consumption_rates = {energy};
    model->demand_rates = {energy, energy};
    model->minimum_rates = {energy};
    model->tax_rates = {energy};
    model->purchase_price = {0.2};
    model->export_price = {0.04, 0.05};
    model->demand_price = {};
    return model;
}

TEST(GridStructs, GridElementHasFieldsInTableOrder) {
    GridParameters grid{sample_real_time(), true, 80.0};
    MxPtr grids(make_grid_parameters({grid}));
    expect_struct(grids.get(), 0,
                  {{"technical_model", Struct{1, 1}},
                   {"limit_net_grid_purchases", true},
                   {"max_net_grid_purchases", 80.0}});
}

TEST(GridStructs, RealTimeModelHasItsFieldsAfterModelType) {
    MxPtr model(make_technical_model(sample_real_time()));
    expect_struct(model.get(), 0,
                  {{"model_type", "RealTime"s},
                   {"demand_rate", Struct{1, 1}},
                   {"demand_rate_index", Column{{0.0, 0.0, 1.0}}},
                   {"realtime_power_price", Column{{0.1, 0.2}}},
                   {"realtime_sellback_rate", Column{{0.05}}}});
    const mxArray* demand_rate = field_of(model.get(), "demand_rate");
    expect_struct(demand_rate, 0, {{"demand_rate", 12.5}, {"grid_label", "peak"s}, {"grid_state", Struct{1, 1}}});
    const mxArray* flags = field_of(demand_rate, "grid_state");
    EXPECT_EQ(field_names(flags), flag_field_names);
    EXPECT_TRUE(mxIsLogicalScalarTrue(field_of(flags, "grid_is_down")));
    EXPECT_EQ(mxGetScalar(field_of(flags, "maintain_state_of_charge_percent")), 40.0);
}

TEST(GridStructs, ScheduledModelHasItsFieldsAfterModelType) {
    MxPtr model(make_technical_model(sample_scheduled()));
    expect_struct(model.get(), 0,
                  {{"model_type", "Scheduled"s},
                   {"demand_rate", Struct{2, 1}},
                   {"demand_rate_index", Column{{1.0, 1.8446744073709552e19}}},
                   {"grid_rate", Struct{1, 1}},
                   {"grid_rate_index", Column{{0.0}}}});
    expect_struct(field_of(model.get(), "demand_rate"), 1,
                  {{"demand_rate", 1.0}, {"grid_label", "night"s}, {"grid_state", Struct{1, 1}}});
    const mxArray* grid_rate = field_of(model.get(), "grid_rate");
    expect_struct(grid_rate, 0,
                  {{"grid_label", "summer"s},
                   {"grid_state", Struct{1, 1}},
                   {"power_price", 0.3},
                   {"sellback_rate", 0.1}});
    EXPECT_EQ(mxGetScalar(field_of(field_of(grid_rate, "grid_state"), "maintain_state_of_charge_percent")), 55.0);
}

TEST(GridStructs, ComplexUtilityModelHasItsFieldsAfterModelType) {
    MxPtr model(make_technical_model(sample_complex_utility()));
    expect_struct(model.get(), 0,
                  {{"model_type", "ComplexUtility"s},
                   {"tariff_name", "E-19"s},
                   {"tariff_code", "E19S"s},
                   {"consumption_rates", Struct{1, 1}},
                   {"demand_rates", Struct{2, 1}},
                   {"fixed_rates", Struct{0, 1}},
                   {"minimum_rates", Struct{1, 1}},
                   {"tax_rates", Struct{1, 1}},
                   {"purchase_price", Column{{0.2}}},
                   {"export_price", Column{{0.04, 0.05}}},
                   {"demand_price", Column{{}}}});
    expect_struct_shape(field_of(model.get(), "fixed_rates"), 0, 1, 0);
}

TEST(TariffStructs, RateHasBandsWithUpperLimitFirstPeriodsAndSeason) {
    MxPtr model(make_technical_model(sample_complex_utility()));
    const mxArray* rates = field_of(model.get(), "consumption_rates");
    expect_struct(rates, 0,
                  {{"rate_name", "energy"s},
                   {"rate_bands", Struct{2, 1}},
                   {"tou_periods", Struct{1, 1}},
                   {"season", Struct{1, 1}},
                   {"charge_type", "consumption"s}});
    expect_struct(field_of(rates, "rate_bands"), 0, {{"upper_limit", 500.0}, {"rate_amount", 0.12}});
    expect_struct(field_of(rates, "rate_bands"), 1, {{"upper_limit", 1e9}, {"rate_amount", 0.15}});
    expect_struct(field_of(rates, "tou_periods"), 0,
                  {{"from_day_of_week", 1.0},
                   {"from_hour", -1.0},
                   {"from_minute", 0.0},
                   {"to_day_of_week", 5.0},
                   {"to_hour", 18.0},
                   {"to_minute", 30.0}});
    expect_struct(field_of(rates, "season"), 0,
                  {{"from_month", 5.0}, {"from_day", 1.0}, {"to_month", 10.0}, {"to_day", 31.0}});
}

TEST(TariffStructs, EmptyBandsAndPeriodsGiveZeroByOneWithoutFields) {
    MxPtr rates(make_tariff_rates({TariffRate{}}));
    expect_struct_shape(field_of(rates.get(), "rate_bands"), 0, 1, 0);
    expect_struct_shape(field_of(rates.get(), "tou_periods"), 0, 1, 0);
}

struct UnreadableModelCase {
    const char* what;
    std::shared_ptr<IGridModel> model;
    std::string model_type;
};

void PrintTo(const UnreadableModelCase& c, std::ostream* os) { *os << c.what; }

class UnreadableModel : public testing::TestWithParam<UnreadableModelCase> {};

TEST_P(UnreadableModel, GivesOnlyModelTypeNamingWhatWasFound) {
    MxPtr model(make_technical_model(GetParam().model));
    expect_struct(model.get(), 0, {{"model_type", GetParam().model_type}});
}

INSTANTIATE_TEST_SUITE_P(
    GridStructs, UnreadableModel,
    testing::Values(UnreadableModelCase{"UnknownKind", std::make_shared<OtherModel>(7), "unknown 7"},
                    UnreadableModelCase{"NegativeKind", std::make_shared<OtherModel>(-4), "unknown -4"},
                    UnreadableModelCase{"ImpostorOfScheduled", std::make_shared<ImpostorModel>(), "unknown 1"},
                    UnreadableModelCase{"ImpostorOfRealTime", std::make_shared<OtherModel>(0), "unknown 0"},
                    UnreadableModelCase{"EmptyPointer", nullptr, "none"}),
    [](const testing::TestParamInfo<UnreadableModelCase>& info) { return std::string(info.param.what); });

TEST(GridStructs, ModelOfADerivedClassIsReadAsItsKind) {
    class TunedRealTime : public RealTime {};
    auto tuned = std::make_shared<TunedRealTime>();
    tuned->realtime_power_price = {0.3};
    MxPtr model(make_technical_model(tuned));
    EXPECT_EQ(text_of(field_of(model.get(), "model_type")), "RealTime");
    EXPECT_EQ(mxGetScalar(field_of(model.get(), "realtime_power_price")), 0.3);
}

TEST(GridStructs, BuildingSharesTheModelWithoutKeepingIt) {
    std::shared_ptr<IGridModel> model = sample_scheduled();
    MxPtr built(make_technical_model(model));
    EXPECT_EQ(model.use_count(), 1);
}

TEST(GridStructs, TwoGridsEachHaveTheirOwnKindsFields) {
    MxPtr grids(make_grid_parameters({{sample_real_time(), false, 0.0}, {sample_complex_utility(), true, 5.0}}));
    expect_struct_shape(grids.get(), 2, 1, 3);
    EXPECT_EQ(mxGetNumberOfFields(field_of(grids.get(), "technical_model", 0)), 5);
    EXPECT_EQ(mxGetNumberOfFields(field_of(grids.get(), "technical_model", 1)), 11);
    EXPECT_EQ(text_of(field_of(field_of(grids.get(), "technical_model", 1), "tariff_code")), "E19S");
}

TEST(GridStructs, NoGridsGiveZeroByOneWithoutFields) {
    MxPtr grids(make_grid_parameters({}));
    expect_struct_shape(grids.get(), 0, 1, 0);
}

}  // namespace
}  // namespace tamlo_marshal
