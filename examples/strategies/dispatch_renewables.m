function plan = dispatch_renewables(simulation_parameters, simulation_state, plan)
% PV arrays and wind turbines produce all they have, serving the loads first
% (their own bus, then the other one through the converter); what is left is
% renewable surplus on their bus, which then charges the batteries.
p = simulation_parameters;
s = simulation_state;
for k = 1:min(numel(s.pvs), numel(p.pvs))
  plan.pv_setpoint(k) = positive(s.pvs(k).power_available);
  plan = serve(plan, (2 - logical(p.pvs(k).is_AC)), plan.pv_setpoint(k));
end
for k = 1:min(numel(s.wind_turbines), numel(p.wind_turbines))
  plan.wind_setpoint(k) = positive(s.wind_turbines(k).power_available);
  plan = serve(plan, (2 - logical(p.wind_turbines(k).is_AC)), plan.wind_setpoint(k));
end
for b = 1:2
  [plan, used] = dispatch_charge(plan, b, plan.surplus_renewable(b));
  plan.surplus_renewable(b) = plan.surplus_renewable(b) - used;
end
end

function plan = serve(plan, bus, amount)
if amount > 0
  [plan, used] = dispatch_supply(plan, bus, amount);
  plan.surplus_renewable(bus) = plan.surplus_renewable(bus) + (amount - used);
end
end

function x = positive(x)
if ~(x > 0)
  x = 0;
end
end
