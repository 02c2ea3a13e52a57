function [plan, used] = dispatch_charge(plan, bus, amount)
% Charges batteries with amount kW of surplus on bus: those of the bus first, then
% those of the other bus through the converter. A battery that discharges in this
% time step has no charge left to take.
left = amount;
n = numel(plan.bat.bus);
for k = 1:n
  if left <= 0
    break;
  end
  if plan.bat.bus(k) == bus && plan.bat.charge_left(k) > 0
    x = min(left, plan.bat.charge_left(k));
    plan = take_charge(plan, k, x);
    left = left - x;
  end
end
other = 3 - bus;
for k = 1:n
  if left <= 0 || ~dispatch_can_cross(plan, bus)
    break;
  end
  if plan.bat.bus(k) == other && plan.bat.charge_left(k) > 0
    efficiency = plan.conv.efficiency(bus);
    delivered = min([plan.bat.charge_left(k), plan.conv.capacity_left(bus), left * efficiency]);
    if delivered > 0
      taken = min(delivered / efficiency, left);
      plan.conv.input(bus) = plan.conv.input(bus) + taken;
      plan.conv.capacity_left(bus) = plan.conv.capacity_left(bus) - delivered;
      plan.conv.direction = bus;
      plan = take_charge(plan, k, delivered);
      left = left - taken;
    end
  end
end
used = amount - left;
end

function plan = take_charge(plan, k, x)
plan.bat.setpoint(k) = plan.bat.setpoint(k) + x;
plan.bat.charge_left(k) = plan.bat.charge_left(k) - x;
plan.bat.discharge_left(k) = 0;
end
