function new_state = dispatch_complete(simulation_state, plant, q, generator_available, pv_available, wind_available, custom_setpoint)
% Writes the plan q of dispatch_step into a copy of simulation_state and fills
% every value the extension reads back: set points, converter and dedicated
% converter flows, grid purchases and sales, and bus results that agree with the
% extension's own estimate of each bus's production and operating capacity
% (dispatch_bus_estimates). The availabilities and custom set points are those
% dispatch_step already read from simulation_state.
new_state = simulation_state;

if plant.generator_count > 0
  list = new_state.generators;
  values = num2cell(q.generator_setpoint);
  [list.power_setpoint] = values{:};
  new_state.generators = list;
end
pv_setpoint = min(q.pv_setpoint, pv_available);
if plant.pv_count > 0
  list = new_state.pvs;
  values = num2cell(pv_setpoint);
  [list.power_setpoint] = values{:};
  new_state.pvs = list;
end
wind_setpoint = min(q.wind_setpoint, wind_available);
if plant.wind_count > 0
  list = new_state.wind_turbines;
  values = num2cell(wind_setpoint);
  [list.power_setpoint] = values{:};
  new_state.wind_turbines = list;
end

% System converters: the first carries every flow (output = input * efficiency / 100),
% the others stay idle.
converter_flows = zeros(1, 0);
if plant.converter_count > 0
  list = new_state.converters;
  [list.inverter_power_input, list.inverter_power_output, ...
   list.rectifier_power_input, list.rectifier_power_output] = deal(0);
  c = plant.converter;
  inverter_input = q.converter_input(2);
  rectifier_input = q.converter_input(1);
  % Rounding of the pieces added up must not carry an output past the capacity.
  if inverter_input * c.inverter_efficiency / 100 > c.inverter_capacity
    inverter_input = c.inverter_capacity / (c.inverter_efficiency / 100);
  end
  if rectifier_input * c.rectifier_efficiency / 100 > c.rectifier_capacity
    rectifier_input = c.rectifier_capacity / (c.rectifier_efficiency / 100);
  end
  converter_flows = [inverter_input, inverter_input * c.inverter_efficiency / 100, ...
                     rectifier_input, rectifier_input * c.rectifier_efficiency / 100];
  list(1).inverter_power_input = converter_flows(1);
  list(1).inverter_power_output = converter_flows(2);
  list(1).rectifier_power_input = converter_flows(3);
  list(1).rectifier_power_output = converter_flows(4);
  new_state.converters = list;
end

% Batteries: the set point is the power exchanged with the bus, positive when
% charging; a dedicated converter carries it with its own losses.
battery_setpoint = zeros(1, 0);
battery_discharge = zeros(1, 0);
if plant.battery_count > 0
  list = new_state.batteries;
  battery_discharge = [list.max_discharge_power];
  battery_setpoint = min(max(q.battery_setpoint, -max(battery_discharge, 0)), max([list.max_charge_power], 0));
  values = num2cell(battery_setpoint);
  [list.power_setpoint] = values{:};
  for k = plant.battery_dedicated
    x = battery_setpoint(k);
    flows = struct('inverter_power_input', 0, 'inverter_power_output', 0, ...
                   'rectifier_power_input', 0, 'rectifier_power_output', 0);
    if x > 0
      flows.rectifier_power_input = x;
      flows.rectifier_power_output = x * plant.battery_rectifier_efficiency(k) / 100;
    elseif x < 0 && plant.battery_inverter_efficiency(k) > 0
      flows.inverter_power_input = -x / (plant.battery_inverter_efficiency(k) / 100);
      flows.inverter_power_output = -x;
    end
    d = list(k).dedicated_converter;
    d.inverter_power_input = flows.inverter_power_input;
    d.inverter_power_output = flows.inverter_power_output;
    d.rectifier_power_input = flows.rectifier_power_input;
    d.rectifier_power_output = flows.rectifier_power_output;
    list(k).dedicated_converter = d;
  end
  new_state.batteries = list;
end

% Grids: only the first is used.
grid_exchange = zeros(1, 0);
if plant.grid_count > 0
  list = new_state.grids;
  [list.grid_purchases, list.grid_sales] = deal(0);
  g = list(1);
  if ~g.grid_state.grid_is_down
    list(1).grid_purchases = min(q.purchases, max(g.max_grid_purchases, 0));
    list(1).grid_sales = min(q.sales, max(g.max_grid_sales, 0));
  end
  grid_exchange = [g.max_grid_purchases, list(1).grid_purchases, list(1).grid_sales];
  new_state.grids = list;
end

% Bus results from the same estimate the extension makes.
custom_available = zeros(1, 0);
if plant.custom_count > 0
  custom_available = [new_state.custom_components.power_available];
end
ac = new_state.ac_bus;
dc = new_state.dc_bus;
[production, capacity] = dispatch_bus_estimates(plant, ...
  [q.generator_setpoint, -battery_setpoint, pv_setpoint, wind_setpoint, custom_setpoint], ...
  [generator_available, battery_discharge, pv_available, wind_available, custom_available], ...
  converter_flows, grid_exchange, [ac.operating_capacity_requested, dc.operating_capacity_requested]);
[ac, ac_fraction] = bus_results(ac, production(1), capacity(1));
[dc, dc_fraction] = bus_results(dc, production(2), capacity(2));
new_state.ac_bus = ac;
new_state.dc_bus = dc;

% Each primary load gets its bus's share of the load served.
if plant.load_count > 0
  list = new_state.primary_loads;
  served_fraction = [ac_fraction, dc_fraction];
  values = num2cell([list.load_requested] .* served_fraction(plant.load_bus));
  [list.load_served] = values{:};
  new_state.primary_loads = list;
end
end

function [bus, served_fraction] = bus_results(bus, production, capacity)
% A bus's load served, unmet load, excess and capacity results from its estimated
% production and operating capacity.
requested = bus.load_requested;
served = max(min(requested, production), 0);
bus.load_served = served;
bus.unmet_load = max(requested - served, 0);
bus.excess_electricity = max(production - requested, 0);
capacity_requested = bus.operating_capacity_requested;
capacity_served = max(min(capacity_requested, capacity), 0);
bus.operating_capacity_served = capacity_served;
bus.capacity_shortage = max(capacity_requested - capacity_served, 0);
served_fraction = 0;
if requested > 0
  served_fraction = served / requested;
end
end
