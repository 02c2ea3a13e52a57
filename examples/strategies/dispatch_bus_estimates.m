function [production, capacity] = dispatch_bus_estimates(simulation_parameters, simulation_state)
% Production and operating capacity of each bus (1 = AC, 2 = DC), summed in the
% same order and with the same formulas as the extension's check of a time step:
% set points and availabilities of every component on its bus, flywheel
% parasitic loads, the first system converter's flows and its transfer of spare
% capacity, and the first grid on the AC bus. Bus results that agree with these
% sums draw no warning.
p = simulation_parameters;
s = simulation_state;
production = [0, 0];
capacity = [0, 0];

for k = 1:min(numel(s.generators), numel(p.generators))
  b = (2 - logical(p.generators(k).is_AC));
  production(b) = production(b) + s.generators(k).power_setpoint;
  capacity(b) = capacity(b) + s.generators(k).power_available;
end
% A positive battery set point charges the battery: it draws from the bus.
for k = 1:min(numel(s.batteries), numel(p.batteries))
  b = (2 - logical(p.batteries(k).is_AC));
  production(b) = production(b) - s.batteries(k).power_setpoint;
  capacity(b) = capacity(b) + s.batteries(k).max_discharge_power;
end
for k = 1:min(numel(s.pvs), numel(p.pvs))
  b = (2 - logical(p.pvs(k).is_AC));
  production(b) = production(b) + s.pvs(k).power_setpoint;
  capacity(b) = capacity(b) + s.pvs(k).power_available;
end
for k = 1:min(numel(s.wind_turbines), numel(p.wind_turbines))
  b = (2 - logical(p.wind_turbines(k).is_AC));
  production(b) = production(b) + s.wind_turbines(k).power_setpoint;
  capacity(b) = capacity(b) + s.wind_turbines(k).power_available;
end
for k = 1:min(numel(s.custom_components), numel(p.custom_components))
  b = (2 - logical(p.custom_components(k).is_AC));
  production(b) = production(b) + s.custom_components(k).power_setpoint;
  capacity(b) = capacity(b) + s.custom_components(k).power_available;
end
% Flywheels count from their parameters alone.
for k = 1:numel(p.flywheels)
  b = (2 - logical(p.flywheels(k).is_AC));
  capacity(b) = capacity(b) + p.flywheels(k).charge_discharge_capacity;
  production(b) = production(b) - p.flywheels(k).parasitic_load;
end

if numel(p.converters) > 0 && numel(s.converters) > 0
  f = s.converters(1);
  c = p.converters(1);
  production(1) = production(1) + (f.inverter_power_output - f.rectifier_power_input);
  production(2) = production(2) + (f.rectifier_power_output - f.inverter_power_input);
  ac_request = s.ac_bus.operating_capacity_requested;
  dc_request = s.dc_bus.operating_capacity_requested;
  if dispatch_definitely_greater(ac_request, capacity(1)) && dispatch_definitely_greater(capacity(2), dc_request)
    capacity([2, 1]) = move_capacity(capacity(2), dc_request, capacity(1), c.inverter_efficiency, c.inverter_capacity);
  elseif dispatch_definitely_greater(dc_request, capacity(2)) && dispatch_definitely_greater(capacity(1), ac_request)
    capacity([1, 2]) = move_capacity(capacity(1), ac_request, capacity(2), c.rectifier_efficiency, c.rectifier_capacity);
  end
end

if numel(p.grids) > 0 && numel(s.grids) > 0
  g = s.grids(1);
  capacity(1) = capacity(1) + g.max_grid_purchases;
  production(1) = production(1) + (g.grid_purchases - g.grid_sales);
end
end

function result = move_capacity(from, from_request, to, efficiency, converter_capacity)
% Spare capacity of one bus crosses the converter, limited by its capacity; the
% source bus loses what went in. A converter that converts nothing moves nothing.
if ~(efficiency > 0)
  result = [from, to];
  return;
end
spare = ((from - from_request) * efficiency) / 100;
if converter_capacity > spare
  moved = spare;
else
  moved = converter_capacity;
end
result = [from - moved / (efficiency / 100), to + moved];
end
