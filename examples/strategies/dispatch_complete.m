function new_state = dispatch_complete(simulation_parameters, simulation_state, plan)
% Writes the plan into a copy of simulation_state and fills every value the
% extension reads back: set points, converter and dedicated converter flows, grid
% purchases and sales, and bus results that agree with the extension's own
% estimate of each bus's production and operating capacity.
p = simulation_parameters;
new_state = simulation_state;

for k = 1:numel(new_state.generators)
  new_state.generators(k).power_setpoint = plan.generator_setpoint(k);
end
for k = 1:numel(new_state.pvs)
  new_state.pvs(k).power_setpoint = min(plan.pv_setpoint(k), new_state.pvs(k).power_available);
end
for k = 1:numel(new_state.wind_turbines)
  new_state.wind_turbines(k).power_setpoint = min(plan.wind_setpoint(k), new_state.wind_turbines(k).power_available);
end

% System converters: the first carries every flow (output = input * efficiency / 100),
% the others stay idle.
for k = 1:numel(new_state.converters)
  new_state.converters(k).inverter_power_input = 0;
  new_state.converters(k).inverter_power_output = 0;
  new_state.converters(k).rectifier_power_input = 0;
  new_state.converters(k).rectifier_power_output = 0;
end
if plan.conv.present
  c = p.converters(1);
  inverter_input = plan.conv.input(2);
  rectifier_input = plan.conv.input(1);
  % Rounding of the pieces added up must not carry an output past the capacity.
  if inverter_input * c.inverter_efficiency / 100 > c.inverter_capacity
    inverter_input = c.inverter_capacity / (c.inverter_efficiency / 100);
  end
  if rectifier_input * c.rectifier_efficiency / 100 > c.rectifier_capacity
    rectifier_input = c.rectifier_capacity / (c.rectifier_efficiency / 100);
  end
  new_state.converters(1).inverter_power_input = inverter_input;
  new_state.converters(1).inverter_power_output = inverter_input * c.inverter_efficiency / 100;
  new_state.converters(1).rectifier_power_input = rectifier_input;
  new_state.converters(1).rectifier_power_output = rectifier_input * c.rectifier_efficiency / 100;
end

% Batteries: the set point is the power exchanged with the bus, positive when
% charging; a dedicated converter carries it with its own losses.
for k = 1:numel(plan.bat.bus)
  b = new_state.batteries(k);
  x = min(max(plan.bat.setpoint(k), -max(b.max_discharge_power, 0)), max(b.max_charge_power, 0));
  b.power_setpoint = x;
  if p.batteries(k).has_dedicated_converter
    d = p.batteries(k).dedicated_converter;
    flows = struct('inverter_power_input', 0, 'inverter_power_output', 0, ...
                   'rectifier_power_input', 0, 'rectifier_power_output', 0);
    if x > 0
      flows.rectifier_power_input = x;
      flows.rectifier_power_output = x * d.rectifier_efficiency / 100;
    elseif x < 0 && d.inverter_efficiency > 0
      flows.inverter_power_input = -x / (d.inverter_efficiency / 100);
      flows.inverter_power_output = -x;
    end
    b.dedicated_converter.inverter_power_input = flows.inverter_power_input;
    b.dedicated_converter.inverter_power_output = flows.inverter_power_output;
    b.dedicated_converter.rectifier_power_input = flows.rectifier_power_input;
    b.dedicated_converter.rectifier_power_output = flows.rectifier_power_output;
  end
  new_state.batteries(k) = b;
end

% Grids: only the first is used.
for k = 1:numel(new_state.grids)
  new_state.grids(k).grid_purchases = 0;
  new_state.grids(k).grid_sales = 0;
end
if plan.grid.present
  g = new_state.grids(1);
  if ~g.grid_state.grid_is_down
    new_state.grids(1).grid_purchases = min(plan.grid.purchases, max(g.max_grid_purchases, 0));
    new_state.grids(1).grid_sales = min(plan.grid.sales, max(g.max_grid_sales, 0));
  end
end

% Bus results from the same estimate the extension makes.
[production, capacity] = dispatch_bus_estimates(p, new_state);
names = {'ac_bus', 'dc_bus'};
served_fraction = [0, 0];
for b = 1:2
  bus = new_state.(names{b});
  requested = bus.load_requested;
  served = max(min(requested, production(b)), 0);
  bus.load_served = served;
  bus.unmet_load = max(requested - served, 0);
  bus.excess_electricity = max(production(b) - requested, 0);
  capacity_requested = bus.operating_capacity_requested;
  capacity_served = max(min(capacity_requested, capacity(b)), 0);
  bus.operating_capacity_served = capacity_served;
  bus.capacity_shortage = max(capacity_requested - capacity_served, 0);
  new_state.(names{b}) = bus;
  if requested > 0
    served_fraction(b) = served / requested;
  end
end

% Each primary load gets its bus's share of the load served.
for k = 1:min(numel(new_state.primary_loads), numel(p.primary_loads))
  b = (2 - logical(p.primary_loads(k).is_AC));
  new_state.primary_loads(k).load_served = new_state.primary_loads(k).load_requested * served_fraction(b);
end
end
