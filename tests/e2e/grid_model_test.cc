// Grid models made by the host (this test program, outside the library) reach MATLAB
// through the library's checked downcast.
#include <gtest/gtest.h>

#include <memory>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using namespace tamlo_dispatch;

// Claims to be a real-time model without being one.
class ImpostorModel : public IGridModel {
public:
    GridModelType get_model_type() const override { return GridModelType::RealTime; }
};

GridParameters grid_of(std::shared_ptr<IGridModel> model) {
    GridParameters grid;
    grid.technical_model = std::move(model);
    return grid;
}

TEST(GridModels, HostMadeModelsAppearInMatlab) {
    SimulationParameters parameters = empty_system(fixture_settings("start_report_grids", "d", "e"));
    auto real_time = std::make_shared<RealTime>();
    real_time->realtime_power_price = {0.1, 0.25, 0.3};
    real_time->realtime_sellback_rate = {0.01, 0.02, 0.03};
    parameters.grid_list.push_back(grid_of(real_time));
    auto tariff = std::make_shared<ComplexUtility>();
    tariff->tariff_name = "Winter saver";
    parameters.grid_list.push_back(grid_of(tariff));
    parameters.grid_list.push_back(grid_of(std::make_shared<Scheduled>()));
    // Neither of these may be read through a bad pointer.
    parameters.grid_list.push_back(grid_of(nullptr));
    parameters.grid_list.push_back(grid_of(std::make_shared<ImpostorModel>()));

    ExtensionPtr extension = create_extension();
    auto result = extension->start_simulation(parameters);
    EXPECT_EQ(result->severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(result->message, "MATLAB error: "
              "grid 1: model_type,demand_rate,demand_rate_index,realtime_power_price,realtime_sellback_rate; "
              "prices [0.1 0.25 0.3];"
              "grid 2: model_type,tariff_name,tariff_code,consumption_rates,demand_rates,fixed_rates,minimum_rates,"
              "tax_rates,purchase_price,export_price,demand_price; tariff Winter saver;"
              "grid 3: model_type,demand_rate,demand_rate_index,grid_rate,grid_rate_index;"
              "grid 4: model_type;"
              "grid 5: model_type;");
}

}  // namespace
}  // namespace tamlo_e2e
