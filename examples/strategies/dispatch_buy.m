function plan = dispatch_buy(plan)
% Buys from the first grid what the buses still need, within its purchase limit
% (zero while the grid is down).
if plan.grid.present && plan.grid.purchase_left > 0
  x = min(plan.grid.purchase_left, dispatch_reach(plan, 1));
  if x > 0
    [plan, used] = dispatch_supply(plan, 1, x);
    plan.grid.purchases = plan.grid.purchases + used;
    plan.grid.purchase_left = plan.grid.purchase_left - used;
  end
end
end
