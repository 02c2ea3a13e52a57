function [new_state, charging] = dispatch_step(simulation_state, plant, cycle_charging, charging, setpoint_soc)
% One time step of the bundled strategies. The plan q holds what each bus still
% needs (1 = AC, 2 = DC) and what the first system converter, the batteries and
% the first grid can still do; renewables fill it first, then the strategy's own
% order of batteries, grid and generators (load following, or cycle charging when
% cycle_charging is true), then surplus is sold and dispatch_complete writes the
% plan into new_state. plant comes from dispatch_plant. charging and setpoint_soc
% are the cycle-charging state (one flag per battery) and set point; load
% following ignores them.
% The plan and both strategies live in this one file, on plain vectors rather
% than struct arrays, because this runs once per time step and every function
% call and struct access costs microseconds in Octave.
s = simulation_state;
q = plant.empty_plan;

need_ac = s.ac_bus.load_requested;
if ~(need_ac > 0)
  need_ac = 0;
end
need_dc = s.dc_bus.load_requested;
if ~(need_dc > 0)
  need_dc = 0;
end
% Flywheels draw their parasitic load from their bus; it is served like a load.
% Custom components are not steered: their set point is never read back, so the
% one the simulator gave them is what they produce.
custom_setpoint = [];
if plant.has_flywheels || plant.custom_count > 0
  if plant.custom_count > 0
    custom_setpoint = [s.custom_components.power_setpoint];
  end
  need_ac = sum([need_ac, plant.flywheel_need{1}, -custom_setpoint(plant.custom_bus == 1)]);
  need_dc = sum([need_dc, plant.flywheel_need{2}, -custom_setpoint(plant.custom_bus == 2)]);
end
% Surplus power already on a bus, by origin: renewables may charge batteries in
% every strategy, other surplus only where the strategy allows it.
if need_ac < 0
  q.surplus_other(1) = -need_ac;
  need_ac = 0;
end
if need_dc < 0
  q.surplus_other(2) = -need_dc;
  need_dc = 0;
end
q.need = [need_ac, need_dc];

% Grid: only the first grid is counted; it sits on the AC bus.
if plant.has_grid
  if plant.grid_count == 1
    first_grid = s.grids;
  else
    first_grid = s.grids(1);
  end
  flags = first_grid.grid_state;
  if ~flags.grid_is_down
    if first_grid.max_grid_purchases > 0
      q.purchase_left = first_grid.max_grid_purchases;
    end
    if ~flags.prohibit_any_grid_sales && first_grid.max_grid_sales > 0
      q.sale_left = first_grid.max_grid_sales;
    end
  end
end

if plant.battery_count > 0
  q.battery_charge_limit = [s.batteries.max_charge_power];
  q.battery_discharge_limit = [s.batteries.max_discharge_power];
  charge_left = q.battery_charge_limit;
  charge_left(~(charge_left > 0)) = 0;
  discharge_left = q.battery_discharge_limit;
  discharge_left(~(discharge_left > 0)) = 0;
  soc = [s.batteries.state_of_charge_percent];
  if plant.has_grid
    if flags.prohibit_any_battery_charging
      charge_left(:) = 0;
    end
    if flags.prohibit_battery_from_discharging
      discharge_left(:) = 0;
    end
    if flags.maintain_state_of_charge
      discharge_left(soc <= flags.maintain_state_of_charge_percent) = 0;
    end
  end
  q.charge_left = charge_left;
  q.discharge_left = discharge_left;
else
  soc = zeros(1, 0);
end

available = [];
forced_on = [];
free = [];
if plant.generator_count > 0
  available = [s.generators.power_available];
  % Generators without a current_state are the dispatch's to decide.
  if isfield(s.generators, 'current_state')
    states = {s.generators.current_state};
    forced_on = strncmp(states, 'FORCED_ON', 9);
    free = ~(forced_on | strncmp(states, 'FORCED_OFF', 10));
  else
    forced_on = false(1, plant.generator_count);
    free = true(1, plant.generator_count);
  end
end

% PV arrays and wind turbines produce all they have, serving the loads first
% (their own bus, then the other one through the converter); what is left is
% renewable surplus on their bus, which then charges the batteries.
pv_available = [];
if plant.pv_count > 0
  pv_available = [s.pvs.power_available];
  [q, produced] = serve_renewables(q, pv_available, plant.pv_bus);
  q.pv_setpoint = produced;
end
wind_available = [];
if plant.wind_count > 0
  wind_available = [s.wind_turbines.power_available];
  [q, produced] = serve_renewables(q, wind_available, plant.wind_bus);
  q.wind_setpoint = produced;
end
% A surplus of nothing charges nothing.
if q.surplus_renewable(1) > 0
  [q, used] = charge(q, 1, q.surplus_renewable(1));
  q.surplus_renewable(1) = q.surplus_renewable(1) - used;
end
if q.surplus_renewable(2) > 0
  [q, used] = charge(q, 2, q.surplus_renewable(2));
  q.surplus_renewable(2) = q.surplus_renewable(2) - used;
end

if cycle_charging
  [q, charging] = cycle_charge(q, plant, available, forced_on, free, soc, charging, setpoint_soc);
else
  q = follow_load(q, plant, available, forced_on, free);
end

% Surplus is sold where the grid takes it (nothing without a grid, while it is
% down or while sales are prohibited).
if q.sale_left > 0
  q = sell(q, 1, q.surplus_renewable(1) + q.surplus_other(1));
  q = sell(q, 2, q.surplus_renewable(2) + q.surplus_other(2));
end

new_state = dispatch_complete(s, plant, q, available, pv_available, wind_available, custom_setpoint);
end

function [q, produced] = serve_renewables(q, available, buses)
% Each array or turbine produces all it has (nothing when its availability is
% not positive) and serves the loads; what is left is renewable surplus on its bus.
produced = available;
produced(~(produced > 0)) = 0;
for k = 1:numel(produced)
  if produced(k) > 0
    b = buses(k);
    [q, used] = supply(q, b, produced(k));
    q.surplus_renewable(b) = q.surplus_renewable(b) + (produced(k) - used);
  end
end
end

function q = follow_load(q, plant, available, forced_on, free)
% Load following: batteries cover what the renewables leave and charge from
% renewable surplus only; then the grid, then the generators follow the net load,
% each at no more than what is still needed (but at least its minimum load).
% Generators forced on run anyway: they come before the batteries.
for k = 1:plant.generator_count
  if forced_on(k)
    b = plant.generator_bus(k);
    setpoint = min(available(k), max(plant.generator_forced_minimum(k), reach(q, b)));
    q = run_generator(q, k, b, max(setpoint, 0));
  end
end

q = discharge(q);
q = buy(q);

for k = 1:plant.generator_count
  if free(k)
    b = plant.generator_bus(k);
    minimum = plant.generator_minimum(k);
    wanted = reach(q, b);
    if wanted > 1e-9 && available(k) > 0 && minimum <= available(k)
      q = run_generator(q, k, b, min(available(k), max(minimum, wanted)));
    end
  end
end
end

function [q, charging] = cycle_charge(q, plant, available, forced_on, free, soc, charging, setpoint_soc)
% Cycle charging: when the batteries and the grid together cannot cover the rest,
% the generators run at their available output (or as much as the loads and the
% batteries can take, at least their minimum load) and charge the batteries with
% the surplus. A battery charged by a generator stays in charging mode, and
% generators keep running for it, until its state of charge reaches setpoint_soc.
charging(soc >= setpoint_soc) = false;

generator_ran = false;
% Generators forced on run anyway: full output, as far as loads and batteries take it.
for k = 1:plant.generator_count
  if forced_on(k)
    b = plant.generator_bus(k);
    wanted = reach(q, b) + charge_reach(q, b);
    setpoint = min(available(k), max(plant.generator_forced_minimum(k), wanted));
    [q, generator_ran] = run_and_charge(q, k, b, max(setpoint, 0), generator_ran);
  end
end

charging_mode = any(charging(:).' & q.charge_left > 0);
covered = false;
if ~charging_mode
  trial = buy(discharge(q));
  covered = sum(trial.need) <= 1e-9;
  if covered
    q = trial;
  end
end
if ~covered
  % The generators must run: the batteries do not discharge while they charge.
  q = buy(q);
  for k = 1:plant.generator_count
    if free(k)
      b = plant.generator_bus(k);
      minimum = plant.generator_minimum(k);
      needed = reach(q, b);
      chargeable = charge_reach(q, b);
      if (needed > 1e-9 || (charging_mode && ~generator_ran && chargeable > 1e-9)) && ...
          available(k) > 0 && minimum <= available(k)
        setpoint = min(available(k), max(minimum, needed + chargeable));
        [q, generator_ran] = run_and_charge(q, k, b, setpoint, generator_ran);
      end
    end
  end
  % What the generators could not cover, the batteries that did not charge cover.
  q = discharge(q);
end

if generator_ran
  charging(q.battery_setpoint > 0 & soc < setpoint_soc) = true;
end
end

function [q, generator_ran] = run_and_charge(q, k, bus, setpoint, generator_ran)
% Runs generator k and puts its surplus into the batteries.
q = run_generator(q, k, bus, setpoint);
if setpoint > 0
  generator_ran = true;
  [q, used] = charge(q, bus, q.surplus_other(bus));
  q.surplus_other(bus) = q.surplus_other(bus) - used;
end
end

function q = run_generator(q, k, bus, setpoint)
% Runs generator k at setpoint kW: its power serves the loads it can reach and the
% rest is surplus on its bus.
q.generator_setpoint(k) = setpoint;
if setpoint > 0
  [q, used] = supply(q, bus, setpoint);
  q.surplus_other(bus) = q.surplus_other(bus) + (setpoint - used);
end
end

function amount = reach(q, bus)
% Power a source on bus could usefully deliver now: the bus's own need, plus the
% other bus's need as far as the converter can carry it (counted at the source,
% before conversion losses). Power can leave bus through the converter when it
% converts something, has capacity left, and is not already used the other way.
amount = q.need(bus);
other_need = q.need(3 - bus);
if other_need > 0 && q.conversion(bus) > 0 && q.capacity_left(bus) > 0 && ...
    (q.direction == 0 || q.direction == bus)
  crossing = other_need;
  if q.capacity_left(bus) < crossing
    crossing = q.capacity_left(bus);
  end
  amount = amount + crossing / q.conversion(bus);
end
end

function amount = charge_reach(q, bus)
% Power that batteries could still take from a source on bus: the batteries of
% the bus, then those of the other bus as far as the converter can carry it.
amount = sum(q.charge_left(q.battery_bus == bus));
across = sum(q.charge_left(q.battery_bus == 3 - bus));
if across > 0 && q.conversion(bus) > 0 && q.capacity_left(bus) > 0 && ...
    (q.direction == 0 || q.direction == bus)
  amount = amount + min(across, q.capacity_left(bus)) / q.conversion(bus);
end
end

% The minimum of two or three values below is written out with if: a call to min
% costs more than the rest of the line. The first value is always one that
% cannot be NaN, so the result is the one min would give.

function [q, used] = supply(q, bus, amount)
% Serves the need of bus with amount kW produced on it, then the other bus's need
% through the converter. used is the part of amount that found a load (never more
% than amount); the rest is surplus on bus.
need = q.need;
% Most often the bus's own need takes all of it.
if amount > 0 && amount <= need(bus)
  need(bus) = need(bus) - amount;
  q.need = need;
  used = amount;
  return;
end
left = amount;
own = left;
if need(bus) < own
  own = need(bus);
end
if own > 0
  need(bus) = need(bus) - own;
  left = left - own;
end
other = 3 - bus;
if left > 0 && need(other) > 0 && q.conversion(bus) > 0 && q.capacity_left(bus) > 0 && ...
    (q.direction == 0 || q.direction == bus)
  efficiency = q.conversion(bus);
  delivered = need(other);
  if q.capacity_left(bus) < delivered
    delivered = q.capacity_left(bus);
  end
  if left * efficiency < delivered
    delivered = left * efficiency;
  end
  if delivered > 0
    taken = delivered / efficiency;
    if left < taken
      taken = left;
    end
    q.converter_input(bus) = q.converter_input(bus) + taken;
    q.capacity_left(bus) = q.capacity_left(bus) - delivered;
    q.direction = bus;
    need(other) = need(other) - delivered;
    if ~(need(other) > 0)
      need(other) = 0;
    end
    left = left - taken;
  end
end
q.need = need;
used = amount - left;
end

function [q, used] = charge(q, bus, amount)
% Charges batteries with amount kW (more than 0) of surplus on bus: those of the
% bus first, then those of the other bus through the converter. A battery that
% charges does not discharge in this time step.
left = amount;
for k = find(q.battery_bus == bus & q.charge_left > 0)
  if left <= 0
    break;
  end
  x = left;
  if q.charge_left(k) < x
    x = q.charge_left(k);
  end
  q.battery_setpoint(k) = q.battery_setpoint(k) + x;
  q.charge_left(k) = q.charge_left(k) - x;
  q.discharge_left(k) = 0;
  left = left - x;
end
for k = find(q.battery_bus ~= bus)
  if left <= 0 || ~(q.conversion(bus) > 0 && q.capacity_left(bus) > 0 && ...
      (q.direction == 0 || q.direction == bus))
    break;
  end
  if q.charge_left(k) > 0
    efficiency = q.conversion(bus);
    delivered = q.charge_left(k);
    if q.capacity_left(bus) < delivered
      delivered = q.capacity_left(bus);
    end
    if left * efficiency < delivered
      delivered = left * efficiency;
    end
    if delivered > 0
      taken = delivered / efficiency;
      if left < taken
        taken = left;
      end
      q.converter_input(bus) = q.converter_input(bus) + taken;
      q.capacity_left(bus) = q.capacity_left(bus) - delivered;
      q.direction = bus;
      q.battery_setpoint(k) = q.battery_setpoint(k) + delivered;
      q.charge_left(k) = q.charge_left(k) - delivered;
      q.discharge_left(k) = 0;
      left = left - taken;
    end
  end
end
used = amount - left;
end

function q = discharge(q)
% Discharges the batteries, in order, to cover what the buses still need. A
% battery that charges in this time step does not discharge.
for k = 1:numel(q.battery_bus)
  if q.discharge_left(k) > 0 && q.battery_setpoint(k) <= 0
    b = q.battery_bus(k);
    x = q.discharge_left(k);
    wanted = reach(q, b);
    if wanted < x
      x = wanted;
    end
    if x > 0
      [q, used] = supply(q, b, x);
      q.battery_setpoint(k) = q.battery_setpoint(k) - used;
      q.discharge_left(k) = q.discharge_left(k) - used;
      q.charge_left(k) = 0;
    end
  end
end
end

function q = buy(q)
% Buys from the first grid what the buses still need, within its purchase limit
% (zero while the grid is down or without a grid).
if q.purchase_left > 0
  x = q.purchase_left;
  wanted = reach(q, 1);
  if wanted < x
    x = wanted;
  end
  if x > 0
    [q, used] = supply(q, 1, x);
    q.purchases = q.purchases + used;
    q.purchase_left = q.purchase_left - used;
  end
end
end

function q = sell(q, bus, amount)
% Sells amount kW of surplus on bus to the first grid, within its sales limit
% (zero while the grid is down, sales are prohibited or there is no grid); DC
% surplus crosses the converter first.
if q.sale_left <= 0 || amount <= 0
  return;
end
if bus == 1
  used = amount;
  if q.sale_left < used
    used = q.sale_left;
  end
  q.sales = q.sales + used;
  q.sale_left = q.sale_left - used;
elseif q.conversion(2) > 0 && q.capacity_left(2) > 0 && (q.direction == 0 || q.direction == 2)
  efficiency = q.conversion(2);
  delivered = q.sale_left;
  if q.capacity_left(2) < delivered
    delivered = q.capacity_left(2);
  end
  if amount * efficiency < delivered
    delivered = amount * efficiency;
  end
  if delivered > 0
    used = delivered / efficiency;
    if amount < used
      used = amount;
    end
    q.converter_input(2) = q.converter_input(2) + used;
    q.capacity_left(2) = q.capacity_left(2) - delivered;
    q.direction = 2;
    q.sales = q.sales + delivered;
    q.sale_left = q.sale_left - delivered;
  end
end
end
