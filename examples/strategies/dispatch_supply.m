function [plan, used] = dispatch_supply(plan, bus, amount)
% Serves the need of bus with amount kW produced on it, then the other bus's need
% through the converter. used is the part of amount that found a load (never more
% than amount); the rest is surplus on bus.
left = amount;
own = min(left, plan.need(bus));
if own > 0
  plan.need(bus) = plan.need(bus) - own;
  left = left - own;
end
other = 3 - bus;
if left > 0 && plan.need(other) > 0 && dispatch_can_cross(plan, bus)
  efficiency = plan.conv.efficiency(bus);
  delivered = min([plan.need(other), plan.conv.capacity_left(bus), left * efficiency]);
  if delivered > 0
    taken = min(delivered / efficiency, left);
    plan.conv.input(bus) = plan.conv.input(bus) + taken;
    plan.conv.capacity_left(bus) = plan.conv.capacity_left(bus) - delivered;
    plan.conv.direction = bus;
    plan.need(other) = max(plan.need(other) - delivered, 0);
    left = left - taken;
  end
end
used = amount - left;
end
