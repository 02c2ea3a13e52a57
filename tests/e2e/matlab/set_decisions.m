function s = set_decisions(s)
% Writes a distinct value into every decision the extension reads back, and into the
% custom components' set points, which it does not read back.
for i = 1:numel(s.generators)
  s.generators(i).power_setpoint = 100 + i;
end
for i = 1:numel(s.wind_turbines)
  s.wind_turbines(i).power_setpoint = 200 + i;
end
for i = 1:numel(s.pvs)
  s.pvs(i).power_setpoint = 300 + i;
end
for i = 1:numel(s.converters)
  s.converters(i).inverter_power_input = 400 + i;
  s.converters(i).inverter_power_output = 410 + i;
  s.converters(i).rectifier_power_input = 420 + i;
  s.converters(i).rectifier_power_output = 430 + i;
end
for i = 1:numel(s.flywheels)
  s.flywheels(i).load_served = 500 + i;
end
for i = 1:numel(s.batteries)
  s.batteries(i).power_setpoint = 600 + i;
  s.batteries(i).dedicated_converter.inverter_power_input = 610 + i;
  s.batteries(i).dedicated_converter.inverter_power_output = 620 + i;
  s.batteries(i).dedicated_converter.rectifier_power_input = 630 + i;
  s.batteries(i).dedicated_converter.rectifier_power_output = 640 + i;
end
s.ac_bus.load_served = 701;
s.ac_bus.unmet_load = 702;
s.ac_bus.excess_electricity = 703;
s.ac_bus.operating_capacity_served = 704;
s.ac_bus.capacity_shortage = 705;
s.dc_bus.load_served = 711;
s.dc_bus.unmet_load = 712;
s.dc_bus.excess_electricity = 713;
s.dc_bus.operating_capacity_served = 714;
s.dc_bus.capacity_shortage = 715;
for i = 1:numel(s.primary_loads)
  s.primary_loads(i).load_served = 800 + i;
end
for i = 1:numel(s.grids)
  s.grids(i).grid_purchases = 900 + i;
  s.grids(i).grid_sales = 950 + i;
end
for i = 1:numel(s.custom_components)
  s.custom_components(i).power_setpoint = 990 + i;
end
end
