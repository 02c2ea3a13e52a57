function amount = dispatch_charge_reach(plan, bus)
% Power that batteries could still take from a source on bus: the batteries of
% the bus, then those of the other bus as far as the converter can carry it.
amount = sum(plan.bat.charge_left(plan.bat.bus == bus));
other = 3 - bus;
across = sum(plan.bat.charge_left(plan.bat.bus == other));
if across > 0 && dispatch_can_cross(plan, bus)
  amount = amount + min(across, plan.conv.capacity_left(bus)) / plan.conv.efficiency(bus);
end
end
