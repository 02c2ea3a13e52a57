function plan = dispatch_run_generator(plan, k, bus, setpoint)
% Runs generator k at setpoint kW: its power serves the loads it can reach and the
% rest is surplus on its bus.
plan.generator_setpoint(k) = setpoint;
if setpoint > 0
  [plan, used] = dispatch_supply(plan, bus, setpoint);
  plan.surplus_other(bus) = plan.surplus_other(bus) + (setpoint - used);
end
end
