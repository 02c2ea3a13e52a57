function [new_simulation_state, custom_variables] = cycle_charging_dispatch(simulation_parameters, simulation_state, custom_variables)
% Cycle charging: PV and wind first, their surplus charges the batteries. When the
% batteries and the grid together cannot cover the rest, the generators run at
% their available output (or as much as the loads and the batteries can take, at
% least their minimum load) and charge the batteries with the surplus. A battery
% charged by a generator stays in charging mode, and generators keep running for
% it, until its state of charge reaches custom_variables.setpoint_soc.
% Prints nothing: any printed text fails the time step.
p = simulation_parameters;
s = simulation_state;
plan = dispatch_plan_begin(p, s);
plan = dispatch_renewables(p, s, plan);

nbat = numel(plan.bat.bus);
charging = false(nbat, 1);
if isfield(custom_variables, 'charging') && numel(custom_variables.charging) == nbat
  charging = logical(custom_variables.charging(:));
end
setpoint_soc = 80;
if isfield(custom_variables, 'setpoint_soc')
  setpoint_soc = custom_variables.setpoint_soc;
end
for k = 1:nbat
  if s.batteries(k).state_of_charge_percent >= setpoint_soc
    charging(k) = false;
  end
end

ngen = min(numel(s.generators), numel(p.generators));
generator_ran = false;
% Generators forced on run anyway: full output, as far as loads and batteries take it.
for k = 1:ngen
  if dispatch_generator_mode(s.generators, k) == 1
    b = (2 - logical(p.generators(k).is_AC));
    lowest = max(p.generators(k).minimum_load, 0.001);
    wanted = dispatch_reach(plan, b) + dispatch_charge_reach(plan, b);
    setpoint = min(s.generators(k).power_available, max(lowest, wanted));
    [plan, generator_ran] = run_and_charge(plan, k, b, max(setpoint, 0), generator_ran);
  end
end

charging_mode = any(charging & plan.bat.charge_left > 0);
covered = false;
if ~charging_mode
  trial = dispatch_buy(dispatch_discharge(plan));
  covered = sum(trial.need) <= 1e-9;
  if covered
    plan = trial;
  end
end
if ~covered
  % The generators must run: the batteries do not discharge while they charge.
  plan = dispatch_buy(plan);
  for k = 1:ngen
    if dispatch_generator_mode(s.generators, k) == 0
      b = (2 - logical(p.generators(k).is_AC));
      available = s.generators(k).power_available;
      minimum = max(p.generators(k).minimum_load, 0);
      needed = dispatch_reach(plan, b);
      chargeable = dispatch_charge_reach(plan, b);
      if (needed > 1e-9 || (charging_mode && ~generator_ran && chargeable > 1e-9)) && ...
          available > 0 && minimum <= available
        setpoint = min(available, max(minimum, needed + chargeable));
        [plan, generator_ran] = run_and_charge(plan, k, b, setpoint, generator_ran);
      end
    end
  end
  % What the generators could not cover, the batteries that did not charge cover.
  plan = dispatch_discharge(plan);
end

for b = 1:2
  [plan, used] = dispatch_sell(plan, b, plan.surplus_renewable(b) + plan.surplus_other(b));
end
new_simulation_state = dispatch_complete(p, s, plan);

if generator_ran
  for k = 1:nbat
    if plan.bat.setpoint(k) > 0 && s.batteries(k).state_of_charge_percent < setpoint_soc
      charging(k) = true;
    end
  end
end
custom_variables.charging = charging;
custom_variables.setpoint_soc = setpoint_soc;
end

function [plan, generator_ran] = run_and_charge(plan, k, bus, setpoint, generator_ran)
% Runs generator k and puts its surplus into the batteries.
plan = dispatch_run_generator(plan, k, bus, setpoint);
if setpoint > 0
  generator_ran = true;
  [plan, used] = dispatch_charge(plan, bus, plan.surplus_other(bus));
  plan.surplus_other(bus) = plan.surplus_other(bus) - used;
end
end
