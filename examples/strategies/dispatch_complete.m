function new_state = dispatch_complete(simulation_state, plant, q, generator_available, pv_available, wind_available, custom_setpoint)
% Writes the plan q of dispatch_step into a copy of simulation_state and fills
% every value the extension reads back: set points, converter and dedicated
% converter flows, grid purchases and sales, and bus results that agree with the
% extension's own estimate of each bus's production and operating capacity
% (dispatch_bus_estimates). The availabilities and custom set points are those
% dispatch_step already read from simulation_state.
% A list of one component is a plain struct, and writing its fields directly is
% several times cheaper in Octave than going through a struct array, so each list
% takes that path when it has one element.
new_state = simulation_state;

if plant.generator_count > 0
  new_state.generators = with_setpoints(new_state.generators, q.generator_setpoint);
end
pv_setpoint = [];
if plant.pv_count > 0
  pv_setpoint = min(q.pv_setpoint, pv_available);
  new_state.pvs = with_setpoints(new_state.pvs, pv_setpoint);
end
wind_setpoint = [];
if plant.wind_count > 0
  wind_setpoint = min(q.wind_setpoint, wind_available);
  new_state.wind_turbines = with_setpoints(new_state.wind_turbines, wind_setpoint);
end

% System converters: the first carries every flow (output = input * efficiency / 100),
% the others stay idle.
converter_flows = [];
if plant.converter_count > 0
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
  if plant.converter_count == 1
    % A converter's state has exactly these four fields, all read back.
    new_state.converters = struct('inverter_power_input', converter_flows(1), ...
      'inverter_power_output', converter_flows(2), 'rectifier_power_input', converter_flows(3), ...
      'rectifier_power_output', converter_flows(4));
  else
    list = new_state.converters;
    list(1).inverter_power_input = converter_flows(1);
    list(1).inverter_power_output = converter_flows(2);
    list(1).rectifier_power_input = converter_flows(3);
    list(1).rectifier_power_output = converter_flows(4);
    for k = 2:plant.converter_count
      list(k).inverter_power_input = 0;
      list(k).inverter_power_output = 0;
      list(k).rectifier_power_input = 0;
      list(k).rectifier_power_output = 0;
    end
    new_state.converters = list;
  end
end

% Batteries: the set point is the power exchanged with the bus, positive when
% charging; a dedicated converter carries it with its own losses.
battery_setpoint = [];
battery_discharge = [];
if plant.battery_count > 0
  list = new_state.batteries;
  battery_discharge = q.battery_discharge_limit;
  battery_setpoint = min(max(q.battery_setpoint, -max(battery_discharge, 0)), max(q.battery_charge_limit, 0));
  if plant.battery_count == 1
    list.power_setpoint = battery_setpoint;
  else
    values = num2cell(battery_setpoint);
    [list.power_setpoint] = values{:};
  end
  for k = plant.battery_dedicated
    x = battery_setpoint(k);
    inverter_input = 0;
    inverter_output = 0;
    rectifier_input = 0;
    rectifier_output = 0;
    if x > 0
      rectifier_input = x;
      rectifier_output = x * plant.battery_rectifier_efficiency(k) / 100;
    elseif x < 0 && plant.battery_inverter_efficiency(k) > 0
      inverter_input = -x / (plant.battery_inverter_efficiency(k) / 100);
      inverter_output = -x;
    end
    % A dedicated converter's state has exactly these four fields.
    flows = struct('inverter_power_input', inverter_input, 'inverter_power_output', inverter_output, ...
      'rectifier_power_input', rectifier_input, 'rectifier_power_output', rectifier_output);
    if plant.battery_count == 1
      list.dedicated_converter = flows;
    else
      list(k).dedicated_converter = flows;
    end
  end
  new_state.batteries = list;
end

% Grids: only the first is used.
grid_exchange = [];
if plant.grid_count > 0
  if plant.grid_count == 1
    first = new_state.grids;
  else
    first = new_state.grids(1);
  end
  purchases = 0;
  sales = 0;
  if ~first.grid_state.grid_is_down
    purchases = min(q.purchases, max(first.max_grid_purchases, 0));
    sales = min(q.sales, max(first.max_grid_sales, 0));
  end
  grid_exchange = [first.max_grid_purchases, purchases, sales];
  first.grid_purchases = purchases;
  first.grid_sales = sales;
  if plant.grid_count == 1
    new_state.grids = first;
  else
    list = new_state.grids;
    list(1) = first;
    for k = 2:plant.grid_count
      list(k).grid_purchases = 0;
      list(k).grid_sales = 0;
    end
    new_state.grids = list;
  end
end

% Bus results from the same estimate the extension makes, both buses at once.
custom_available = [];
if plant.custom_count > 0
  custom_available = [new_state.custom_components.power_available];
end
ac = new_state.ac_bus;
dc = new_state.dc_bus;
capacity_requested = [ac.operating_capacity_requested, dc.operating_capacity_requested];
[production, capacity] = dispatch_bus_estimates(plant, ...
  [q.generator_setpoint, -battery_setpoint, pv_setpoint, wind_setpoint, custom_setpoint], ...
  [generator_available, battery_discharge, pv_available, wind_available, custom_available], ...
  converter_flows, grid_exchange, capacity_requested);
requested = [ac.load_requested, dc.load_requested];
served = max(min(requested, production), 0);
unmet = max(requested - served, 0);
excess = max(production - requested, 0);
capacity_served = max(min(capacity_requested, capacity), 0);
shortage = max(capacity_requested - capacity_served, 0);
% A bus's state has exactly these seven fields, in this order.
new_state.ac_bus = struct('capacity_shortage', shortage(1), 'excess_electricity', excess(1), ...
  'load_requested', requested(1), 'load_served', served(1), ...
  'operating_capacity_requested', capacity_requested(1), 'operating_capacity_served', capacity_served(1), ...
  'unmet_load', unmet(1));
new_state.dc_bus = struct('capacity_shortage', shortage(2), 'excess_electricity', excess(2), ...
  'load_requested', requested(2), 'load_served', served(2), ...
  'operating_capacity_requested', capacity_requested(2), 'operating_capacity_served', capacity_served(2), ...
  'unmet_load', unmet(2));

% Each primary load gets its bus's share of the load served.
if plant.load_count > 0
  served_fraction = [0, 0];
  if requested(1) > 0
    served_fraction(1) = served(1) / requested(1);
  end
  if requested(2) > 0
    served_fraction(2) = served(2) / requested(2);
  end
  list = new_state.primary_loads;
  if plant.load_count == 1
    list.load_served = list.load_requested * served_fraction(plant.load_bus);
  else
    values = num2cell([list.load_requested] .* served_fraction(plant.load_bus));
    [list.load_served] = values{:};
  end
  new_state.primary_loads = list;
end
end

function list = with_setpoints(list, setpoints)
% Writes one power_setpoint per element of a component list.
if numel(setpoints) == 1
  list.power_setpoint = setpoints;
else
  values = num2cell(setpoints);
  [list.power_setpoint] = values{:};
end
end
