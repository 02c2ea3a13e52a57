function [production, capacity] = dispatch_bus_estimates(plant, produced, capacities, converter_flows, grid_exchange, requested)
% Production and operating capacity of each bus (1 = AC, 2 = DC), summed in the
% same order and with the same formulas as the extension's check of a time step:
% set points and availabilities of every component on its bus (produced and
% capacities, one value per component in the order of plant.estimate_bus; a
% battery's set point counted as drawn from the bus), flywheel parasitic loads,
% the first system converter's flows ([inverter input, inverter output, rectifier
% input, rectifier output], empty without a converter) and its transfer of spare
% capacity towards the operating capacity requested on each bus, and the first
% grid on the AC bus ([max_grid_purchases, grid_purchases, grid_sales], empty
% without a grid). Bus results that agree with these sums draw no warning.
% Each sum starts at 0 and adds its terms one by one in that order (sum does the
% same), so the results equal the extension's to the last bit.
if plant.has_flywheels
  production = [sum([produced(plant.estimate_on_ac), plant.flywheel_production{1}]), ...
                sum([produced(plant.estimate_on_dc), plant.flywheel_production{2}])];
  capacity = [sum([capacities(plant.estimate_on_ac), plant.flywheel_capacity{1}]), ...
              sum([capacities(plant.estimate_on_dc), plant.flywheel_capacity{2}])];
else
  production = [sum(produced(plant.estimate_on_ac)), sum(produced(plant.estimate_on_dc))];
  capacity = [sum(capacities(plant.estimate_on_ac)), sum(capacities(plant.estimate_on_dc))];
end

if ~isempty(converter_flows)
  c = plant.converter;
  production(1) = production(1) + (converter_flows(2) - converter_flows(3));
  production(2) = production(2) + (converter_flows(4) - converter_flows(1));
  % definitely_greater(a, b) is false where a <= b holds between finite values,
  % so the full comparison is made only where that test does not settle it.
  % Spare capacity of one bus crosses the converter towards the other when the
  % other is short, limited by the converter's capacity; the source bus loses
  % what went in. A converter that converts nothing moves nothing.
  from = 0;
  if ~(requested(1) <= capacity(1) && requested(1) - capacity(1) > -Inf) && ...
      ~(capacity(2) <= requested(2) && capacity(2) - requested(2) > -Inf) && ...
      definitely_greater(requested(1), capacity(1)) && definitely_greater(capacity(2), requested(2))
    from = 2;
    efficiency = c.inverter_efficiency;
    converter_capacity = c.inverter_capacity;
  elseif ~(requested(2) <= capacity(2) && requested(2) - capacity(2) > -Inf) && ...
      ~(capacity(1) <= requested(1) && capacity(1) - requested(1) > -Inf) && ...
      definitely_greater(requested(2), capacity(2)) && definitely_greater(capacity(1), requested(1))
    from = 1;
    efficiency = c.rectifier_efficiency;
    converter_capacity = c.rectifier_capacity;
  end
  if from > 0 && efficiency > 0
    to = 3 - from;
    spare = ((capacity(from) - requested(from)) * efficiency) / 100;
    if converter_capacity > spare
      moved = spare;
    else
      moved = converter_capacity;
    end
    capacity(from) = capacity(from) - moved / (efficiency / 100);
    capacity(to) = capacity(to) + moved;
  end
end

if ~isempty(grid_exchange)
  capacity(1) = capacity(1) + grid_exchange(1);
  production(1) = production(1) + (grid_exchange(2) - grid_exchange(3));
end
end

function result = definitely_greater(a, b)
% True when a exceeds b by more than the extension's relative tolerance of 1e-6.
% Mirrors the comparison the extension uses when it checks a time step, so that a
% strategy takes the same branch the check takes.
t = 1e-6;
if isnan(a) || isnan(b)
  m = NaN;
else
  m = max(abs(a), abs(b));
end
if t > m
  result = false;
else
  result = ~((b - a) / m > -t);
end
end
