function plant = dispatch_plant(simulation_parameters)
% What the bundled strategies need from simulation_parameters, worked out once at
% the start of a run: component counts, the bus of every component (1 = AC,
% 2 = DC), limits and efficiencies. simulation_parameters is the same for the
% whole run, so the dispatch function reads only simulation_state in each time
% step. Element i of a simulation_state list describes the same component as
% element i of the simulation_parameters list of the same name, so the counts
% here are those of the state lists too.
p = simulation_parameters;

plant.generator_count = numel(p.generators);
plant.generator_bus = zeros(1, 0);
plant.generator_forced_minimum = zeros(1, 0);
plant.generator_minimum = zeros(1, 0);
if plant.generator_count > 0
  plant.generator_bus = 2 - logical([p.generators.is_AC]);
  minimum_load = [p.generators.minimum_load];
  % A forced-on generator must produce something, so at least 1 W.
  plant.generator_forced_minimum = max(minimum_load, 0.001);
  plant.generator_minimum = max(minimum_load, 0);
end

[plant.pv_count, plant.pv_bus] = buses(p.pvs);
[plant.wind_count, plant.wind_bus] = buses(p.wind_turbines);
[plant.custom_count, plant.custom_bus] = buses(p.custom_components);
[plant.load_count, plant.load_bus] = buses(p.primary_loads);

[plant.battery_count, plant.battery_bus] = buses(p.batteries);
plant.battery_dedicated = zeros(1, 0);
plant.battery_rectifier_efficiency = zeros(1, 0);
plant.battery_inverter_efficiency = zeros(1, 0);
if plant.battery_count > 0
  plant.battery_dedicated = find([p.batteries.has_dedicated_converter]);
  converters = [p.batteries.dedicated_converter];
  plant.battery_rectifier_efficiency = [converters.rectifier_efficiency];
  plant.battery_inverter_efficiency = [converters.inverter_efficiency];
end

% Flywheels only draw their parasitic load; what they add to each bus is fixed.
% The plan serves the positive part of each load; the bus estimate counts the
% load and the flywheel's capacity as they are. Kept one value per flywheel, in
% order, so that sums come out exactly as when they are added one by one.
[flywheel_count, flywheel_bus] = buses(p.flywheels);
plant.flywheel_need = {zeros(1, 0), zeros(1, 0)};
plant.flywheel_production = {zeros(1, 0), zeros(1, 0)};
plant.flywheel_capacity = {zeros(1, 0), zeros(1, 0)};
if flywheel_count > 0
  parasitic = [p.flywheels.parasitic_load];
  capacity = [p.flywheels.charge_discharge_capacity];
  for b = 1:2
    on_bus = flywheel_bus == b;
    need = parasitic(on_bus);
    need(~(need > 0)) = 0;
    plant.flywheel_need{b} = need;
    plant.flywheel_production{b} = -parasitic(on_bus);
    plant.flywheel_capacity{b} = capacity(on_bus);
  end
end
plant.has_flywheels = flywheel_count > 0;

% The components whose set points and availabilities the extension's bus estimate
% adds up, in its order: generators, batteries, PV arrays, wind turbines, custom
% components.
plant.estimate_bus = [plant.generator_bus, plant.battery_bus, plant.pv_bus, plant.wind_bus, plant.custom_bus];
plant.estimate_on_ac = plant.estimate_bus == 1;
plant.estimate_on_dc = plant.estimate_bus == 2;

% Only the first system converter is counted by the extension's estimate.
% Indexed by the bus the power leaves: 1 = AC to DC (rectifier), 2 = DC to AC
% (inverter). Without a converter nothing crosses (efficiency 0).
plant.has_converter = numel(p.converters) > 0;
plant.conversion = [0, 0];
plant.conversion_capacity = [0, 0];
plant.converter = [];
if plant.has_converter
  c = p.converters(1);
  plant.converter = struct('rectifier_efficiency', c.rectifier_efficiency, ...
    'inverter_efficiency', c.inverter_efficiency, ...
    'rectifier_capacity', c.rectifier_capacity, 'inverter_capacity', c.inverter_capacity);
  plant.conversion = [positive(c.rectifier_efficiency) / 100, positive(c.inverter_efficiency) / 100];
  plant.conversion_capacity = [positive(c.rectifier_capacity), positive(c.inverter_capacity)];
end
plant.converter_count = numel(p.converters);

% Only the first grid is counted; it sits on the AC bus.
plant.has_grid = numel(p.grids) > 0;
plant.grid_count = numel(p.grids);

% The plan every time step starts from (see dispatch_step): nothing supplied,
% converted, bought, sold or set yet.
q.need = [0, 0];
q.surplus_renewable = [0, 0];
q.surplus_other = [0, 0];
q.conversion = plant.conversion;
q.capacity_left = plant.conversion_capacity;
q.converter_input = [0, 0];
q.direction = 0;
q.purchase_left = 0;
q.sale_left = 0;
q.purchases = 0;
q.sales = 0;
q.battery_bus = plant.battery_bus;
q.charge_left = zeros(1, plant.battery_count);
q.discharge_left = zeros(1, plant.battery_count);
q.battery_setpoint = zeros(1, plant.battery_count);
% The batteries' max_charge_power and max_discharge_power as given in the step.
q.battery_charge_limit = zeros(1, plant.battery_count);
q.battery_discharge_limit = zeros(1, plant.battery_count);
q.generator_setpoint = zeros(1, plant.generator_count);
q.pv_setpoint = zeros(1, plant.pv_count);
q.wind_setpoint = zeros(1, plant.wind_count);
plant.empty_plan = q;
end

function [n, bus] = buses(list)
% The count of a component list and the bus of each component.
n = numel(list);
bus = zeros(1, 0);
if n > 0
  bus = 2 - logical([list.is_AC]);
end
end

function x = positive(x)
% Negative or undefined limits count as nothing.
if ~(x > 0)
  x = 0;
end
end
