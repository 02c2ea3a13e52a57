function plan = dispatch_plan_begin(simulation_parameters, simulation_state)
% Starts the plan of one time step: what each bus still needs (1 = AC, 2 = DC),
% and what the first system converter, the batteries and the first grid can still
% do. The strategies fill the plan source by source and dispatch_complete writes
% it into new_simulation_state.
p = simulation_parameters;
s = simulation_state;

plan.need = [positive(s.ac_bus.load_requested), positive(s.dc_bus.load_requested)];
% Surplus power already on a bus, by origin: renewables may charge batteries in
% every strategy, other surplus only where the strategy allows it.
plan.surplus_renewable = [0, 0];
plan.surplus_other = [0, 0];

% Flywheels draw their parasitic load from their bus; it is served like a load.
for k = 1:numel(p.flywheels)
  b = (2 - logical(p.flywheels(k).is_AC));
  plan.need(b) = plan.need(b) + positive(p.flywheels(k).parasitic_load);
end
% Custom components are not steered: their set point is never read back, so the
% one the simulator gave them is what they produce.
for k = 1:min(numel(s.custom_components), numel(p.custom_components))
  b = (2 - logical(p.custom_components(k).is_AC));
  plan.need(b) = plan.need(b) - s.custom_components(k).power_setpoint;
end
for b = 1:2
  if plan.need(b) < 0
    plan.surplus_other(b) = -plan.need(b);
    plan.need(b) = 0;
  end
end

% Only the first converter is counted by the extension's estimate, so all power
% that crosses between the buses goes through it. Indexed by the bus the power
% leaves: 1 = AC to DC (rectifier), 2 = DC to AC (inverter).
plan.conv.present = numel(p.converters) > 0 && numel(s.converters) > 0;
plan.conv.efficiency = [0, 0];
plan.conv.capacity_left = [0, 0];
plan.conv.input = [0, 0];
plan.conv.direction = 0;
if plan.conv.present
  c = p.converters(1);
  plan.conv.efficiency = [positive(c.rectifier_efficiency) / 100, positive(c.inverter_efficiency) / 100];
  plan.conv.capacity_left = [positive(c.rectifier_capacity), positive(c.inverter_capacity)];
end

% Grid: only the first grid is counted; it sits on the AC bus.
plan.grid.present = numel(p.grids) > 0 && numel(s.grids) > 0;
plan.grid.purchase_left = 0;
plan.grid.sale_left = 0;
plan.grid.purchases = 0;
plan.grid.sales = 0;
flags = [];
if plan.grid.present
  g = s.grids(1);
  flags = g.grid_state;
  if ~flags.grid_is_down
    plan.grid.purchase_left = positive(g.max_grid_purchases);
    if ~flags.prohibit_any_grid_sales
      plan.grid.sale_left = positive(g.max_grid_sales);
    end
  end
end

n = min(numel(s.batteries), numel(p.batteries));
plan.bat.bus = zeros(n, 1);
plan.bat.charge_left = zeros(n, 1);
plan.bat.discharge_left = zeros(n, 1);
plan.bat.setpoint = zeros(n, 1);
for k = 1:n
  plan.bat.bus(k) = (2 - logical(p.batteries(k).is_AC));
  plan.bat.charge_left(k) = positive(s.batteries(k).max_charge_power);
  plan.bat.discharge_left(k) = positive(s.batteries(k).max_discharge_power);
  if ~isempty(flags)
    if flags.prohibit_any_battery_charging
      plan.bat.charge_left(k) = 0;
    end
    if flags.prohibit_battery_from_discharging
      plan.bat.discharge_left(k) = 0;
    end
    if flags.maintain_state_of_charge && ...
        s.batteries(k).state_of_charge_percent <= flags.maintain_state_of_charge_percent
      plan.bat.discharge_left(k) = 0;
    end
  end
end

plan.generator_setpoint = zeros(numel(s.generators), 1);
plan.pv_setpoint = zeros(numel(s.pvs), 1);
plan.wind_setpoint = zeros(numel(s.wind_turbines), 1);
end

function x = positive(x)
% Negative or undefined limits count as nothing.
if ~(x > 0)
  x = 0;
end
end
