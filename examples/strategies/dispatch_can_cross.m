function result = dispatch_can_cross(plan, from_bus)
% True when power can still leave from_bus through the converter: it converts
% something, has capacity left, and is not already used the other way.
result = plan.conv.present && plan.conv.efficiency(from_bus) > 0 && ...
  plan.conv.capacity_left(from_bus) > 0 && ...
  (plan.conv.direction == 0 || plan.conv.direction == from_bus);
end
