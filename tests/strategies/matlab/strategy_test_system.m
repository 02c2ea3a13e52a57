function [p, s] = strategy_test_system()
% An empty system (no components, no load) in the form the extension builds:
% every list a 0x1 struct array, both buses present.
empty = repmat(struct(), 0, 1);
for list = {'generators', 'primary_loads', 'pvs', 'batteries', 'converters', 'flywheels', 'grids', ...
            'custom_components', 'wind_turbines'}
  p.(list{1}) = empty;
  s.(list{1}) = empty;
end
p.extension_parameters = empty;
bus = struct('capacity_shortage', 0, 'excess_electricity', 0, 'load_requested', 0, ...
             'load_served', 0, 'operating_capacity_requested', 0, ...
             'operating_capacity_served', 0, 'unmet_load', 0);
s.ac_bus = bus;
s.dc_bus = bus;
end
