function plan = dispatch_discharge(plan)
% Discharges the batteries, in order, to cover what the buses still need. A
% battery that charges in this time step does not discharge.
for k = 1:numel(plan.bat.bus)
  if plan.bat.discharge_left(k) > 0 && plan.bat.setpoint(k) <= 0
    b = plan.bat.bus(k);
    x = min(plan.bat.discharge_left(k), dispatch_reach(plan, b));
    if x > 0
      [plan, used] = dispatch_supply(plan, b, x);
      plan.bat.setpoint(k) = plan.bat.setpoint(k) - used;
      plan.bat.discharge_left(k) = plan.bat.discharge_left(k) - used;
      plan.bat.charge_left(k) = 0;
    end
  end
end
end
