// Builds the grids struct array of simulation_parameters: each grid's technical_model with
// its demand and grid rate schedules.
#include "grid_structs.h"

#include <string>

#include "simulation_state_struct.h"
#include "struct_primitives.h"
#include "tariff_structs.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_grid_parameters(const std::vector<GridParameters>& grids) {
    mxArray* s = make_struct_array(grids.size());
    for (std::size_t i = 0; i < grids.size(); ++i) {
        const GridParameters& grid = grids[i];
        set_struct_field(s, i, "technical_model", make_technical_model(grid.technical_model));
        set_logical_field(s, i, "limit_net_grid_purchases", grid.limit_net_grid_purchases);
        set_number_field(s, i, "max_net_grid_purchases", grid.max_net_grid_purchases);
    }
    return s;
}

namespace {

// The fields after model_type, one writer per model class.
void add_model_fields(mxArray* s, const RealTime& model) {
    set_struct_field(s, 0, "demand_rate", make_demand_rates(model.demand_rate));
    set_index_list_field(s, "demand_rate_index", model.demand_rate_index);
    set_number_list_field(s, 0, "realtime_power_price", model.realtime_power_price);
    set_number_list_field(s, 0, "realtime_sellback_rate", model.realtime_sellback_rate);
}

void add_model_fields(mxArray* s, const Scheduled& model) {
    set_struct_field(s, 0, "demand_rate", make_demand_rates(model.demand_rate));
    set_index_list_field(s, "demand_rate_index", model.demand_rate_index);
    set_struct_field(s, 0, "grid_rate", make_grid_rates(model.grid_rate));
    set_index_list_field(s, "grid_rate_index", model.grid_rate_index);
}

void add_model_fields(mxArray* s, const ComplexUtility& model) {
    set_string_field(s, 0, "tariff_name", model.tariff_name);
    set_string_field(s, 0, "tariff_code", model.tariff_code);
    set_struct_field(s, 0, "consumption_rates", make_tariff_rates(model.consumption_rates));
    set_struct_field(s, 0, "demand_rates", make_tariff_rates(model.demand_rates));
    set_struct_field(s, 0, "fixed_rates", make_tariff_rates(model.fixed_rates));
    set_struct_field(s, 0, "minimum_rates", make_tariff_rates(model.minimum_rates));
    set_struct_field(s, 0, "tax_rates", make_tariff_rates(model.tax_rates));
    set_number_list_field(s, 0, "purchase_price", model.purchase_price);
    set_number_list_field(s, 0, "export_price", model.export_price);
    set_number_list_field(s, 0, "demand_price", model.demand_price);
}

// Writes model_type and the class's fields when the object really is a Model; the checked
// downcast shares ownership and is released on return.
template <class Model>
bool add_fields_if(mxArray* s, const std::shared_ptr<IGridModel>& model, const char* name) {
    const std::shared_ptr<const Model> concrete = std::dynamic_pointer_cast<const Model>(model);
    if (!concrete) return false;
    set_string_field(s, 0, "model_type", name);
    add_model_fields(s, *concrete);
    return true;
}

struct ModelKind {
    GridModelType type;
    const char* name;
    bool (*add_fields)(mxArray*, const std::shared_ptr<IGridModel>&, const char*);
};

constexpr ModelKind model_kinds[] = {
    {GridModelType::RealTime, "RealTime", &add_fields_if<RealTime>},
    {GridModelType::Scheduled, "Scheduled", &add_fields_if<Scheduled>},
    {GridModelType::ComplexUtility, "ComplexUtility", &add_fields_if<ComplexUtility>},
};

}  // namespace

mxArray* make_technical_model(const std::shared_ptr<IGridModel>& model) {
    mxArray* s = make_single_struct();
    if (!model) {
        set_string_field(s, 0, "model_type", "none");
        return s;
    }
    const GridModelType type = model->get_model_type();
    for (const ModelKind& kind : model_kinds) {
        if (kind.type == type && kind.add_fields(s, model, kind.name)) return s;
    }
    // Another kind, or an object not of the class its type names: only the number is safe to pass on.
    set_string_field(s, 0, "model_type", "unknown " + std::to_string(static_cast<std::int32_t>(type)));
    return s;
}

mxArray* make_demand_rates(const std::vector<DemandRate>& rates) {
    mxArray* s = make_struct_array(rates.size());
    for (std::size_t i = 0; i < rates.size(); ++i) {
        const DemandRate& rate = rates[i];
        set_number_field(s, i, "demand_rate", rate.demand_rate);
        set_string_field(s, i, "grid_label", rate.grid_label);
        set_struct_field(s, i, "grid_state", make_grid_state_flags(rate.grid_state));
    }
    return s;
}

mxArray* make_grid_rates(const std::vector<GridRate>& rates) {
    mxArray* s = make_struct_array(rates.size());
    for (std::size_t i = 0; i < rates.size(); ++i) {
        const GridRate& rate = rates[i];
        set_string_field(s, i, "grid_label", rate.grid_label);
        set_struct_field(s, i, "grid_state", make_grid_state_flags(rate.grid_state));
        set_number_field(s, i, "power_price", rate.power_price);
        set_number_field(s, i, "sellback_rate", rate.sellback_rate);
    }
    return s;
}

}  // namespace tamlo_marshal
