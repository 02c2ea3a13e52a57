function [new_simulation_state, custom_variables] = load_following_dispatch(simulation_parameters, simulation_state, custom_variables)
% Load following: PV and wind first; batteries cover what they leave and charge
% from renewable surplus only; then the grid, then the generators follow the net
% load, each at no more than what is still needed (but at least its minimum load).
% Surplus is sold to the grid where allowed; what remains is excess electricity.
% Prints nothing: any printed text fails the time step.
p = simulation_parameters;
s = simulation_state;
plan = dispatch_plan_begin(p, s);
plan = dispatch_renewables(p, s, plan);

ngen = min(numel(s.generators), numel(p.generators));
% Generators forced on run anyway: they come before the batteries.
for k = 1:ngen
  if dispatch_generator_mode(s.generators, k) == 1
    b = (2 - logical(p.generators(k).is_AC));
    lowest = max(p.generators(k).minimum_load, 0.001);
    setpoint = min(s.generators(k).power_available, max(lowest, dispatch_reach(plan, b)));
    plan = dispatch_run_generator(plan, k, b, max(setpoint, 0));
  end
end

plan = dispatch_discharge(plan);
plan = dispatch_buy(plan);

for k = 1:ngen
  if dispatch_generator_mode(s.generators, k) == 0
    b = (2 - logical(p.generators(k).is_AC));
    available = s.generators(k).power_available;
    minimum = max(p.generators(k).minimum_load, 0);
    wanted = dispatch_reach(plan, b);
    if wanted > 1e-9 && available > 0 && minimum <= available
      plan = dispatch_run_generator(plan, k, b, min(available, max(minimum, wanted)));
    end
  end
end

for b = 1:2
  [plan, used] = dispatch_sell(plan, b, plan.surplus_renewable(b) + plan.surplus_other(b));
end
new_simulation_state = dispatch_complete(p, s, plan);
end
