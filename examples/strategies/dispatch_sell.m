function [plan, used] = dispatch_sell(plan, bus, amount)
% Sells amount kW of surplus on bus to the first grid, within its sales limit
% (zero while the grid is down or sales are prohibited); DC surplus crosses the
% converter first.
used = 0;
if ~plan.grid.present || plan.grid.sale_left <= 0 || amount <= 0
  return;
end
if bus == 1
  used = min(amount, plan.grid.sale_left);
  plan.grid.sales = plan.grid.sales + used;
  plan.grid.sale_left = plan.grid.sale_left - used;
elseif dispatch_can_cross(plan, 2)
  efficiency = plan.conv.efficiency(2);
  delivered = min([plan.grid.sale_left, plan.conv.capacity_left(2), amount * efficiency]);
  if delivered > 0
    used = min(delivered / efficiency, amount);
    plan.conv.input(2) = plan.conv.input(2) + used;
    plan.conv.capacity_left(2) = plan.conv.capacity_left(2) - delivered;
    plan.conv.direction = 2;
    plan.grid.sales = plan.grid.sales + delivered;
    plan.grid.sale_left = plan.grid.sale_left - delivered;
  end
end
end
