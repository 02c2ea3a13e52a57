// Builds the grids struct array of simulation_parameters: each grid's technical_model with
// its demand and grid rate schedules.
#ifndef TAMLO_MARSHAL_GRID_STRUCTS_H
#define TAMLO_MARSHAL_GRID_STRUCTS_H

#include <memory>
#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/grid_models.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per grid; the caller owns it.
mxArray* make_grid_parameters(const std::vector<tamlo_dispatch::GridParameters>& grids);

// New 1 x 1 technical_model struct; the caller owns it. Its first field, model_type, is the
// model's class name ("RealTime", "Scheduled", "ComplexUtility") followed by that class's
// fields; a model of none of these classes gets "unknown " + its type number and an empty
// pointer "none", each without further fields.
mxArray* make_technical_model(const std::shared_ptr<tamlo_dispatch::IGridModel>& model);

// New N x 1 struct arrays; the caller owns them.
mxArray* make_demand_rates(const std::vector<tamlo_dispatch::DemandRate>& rates);
mxArray* make_grid_rates(const std::vector<tamlo_dispatch::GridRate>& rates);

}  // namespace tamlo_marshal

#endif
