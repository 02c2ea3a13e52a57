function bus = dispatch_bus_of(is_AC)
% Bus number used by the shared strategy helpers: 1 for the AC bus, 2 for the DC bus.
if logical(is_AC)
  bus = 1;
else
  bus = 2;
end
end
