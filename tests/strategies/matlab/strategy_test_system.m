function [p, s] = strategy_test_system()
% An empty system (no components, no load) in the form the extension builds:
% every list a 0x1 struct array, both buses present.
empty = repmat(struct(), 0, 1);
p.generators = empty; p.primary_loads = empty; p.pvs = empty; p.batteries = empty;
p.converters = empty; p.flywheels = empty; p.grids = empty; p.custom_components = empty;
p.wind_turbines = empty;
p.extension_parameters = empty;
s.generators = empty; s.pvs = empty; s.batteries = empty; s.flywheels = empty;
s.converters = empty; s.grids = empty; s.custom_components = empty; s.wind_turbines = empty;
s.primary_loads = empty;
bus = struct('capacity_shortage', 0, 'excess_electricity', 0, 'load_requested', 0, ...
             'load_served', 0, 'operating_capacity_requested', 0, ...
             'operating_capacity_served', 0, 'unmet_load', 0);
s.ac_bus = bus;
s.dc_bus = bus;
end
