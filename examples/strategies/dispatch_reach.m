function amount = dispatch_reach(plan, bus)
% Power a source on bus could usefully deliver now: the bus's own need, plus the
% other bus's need as far as the converter can carry it (counted at the source,
% before conversion losses).
amount = plan.need(bus);
other = 3 - bus;
if plan.need(other) > 0 && dispatch_can_cross(plan, bus)
  amount = amount + min(plan.need(other), plan.conv.capacity_left(bus)) / plan.conv.efficiency(bus);
end
end
