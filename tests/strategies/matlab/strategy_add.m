function [p, s] = strategy_add(p, s, kind, is_AC, varargin)
% Adds one component of the given kind on the AC (is_AC true) or DC bus. Name and
% value pairs in varargin set its parameter and state fields.
o = struct(varargin{:});
flows = struct('inverter_power_input', 0, 'inverter_power_output', 0, ...
               'rectifier_power_input', 0, 'rectifier_power_output', 0);
switch kind
  case 'generator'
    e.is_AC = is_AC; e.minimum_load = get(o, 'minimum_load', 0);
    t.power_available = get(o, 'available', 100); t.power_setpoint = 0;
    t.current_state = get(o, 'current_state', 'DISPATCH_DECIDES');
    [p.generators, s.generators] = append(p.generators, e, s.generators, t);
  case 'pv'
    e.is_AC = is_AC;
    t.power_available = get(o, 'available', 0); t.power_setpoint = 0;
    [p.pvs, s.pvs] = append(p.pvs, e, s.pvs, t);
  case 'battery'
    e.is_AC = is_AC; e.has_dedicated_converter = get(o, 'dedicated', false);
    e.dedicated_converter = struct('rectifier_capacity', 1000, 'inverter_capacity', 1000, ...
      'rectifier_efficiency', get(o, 'rectifier_efficiency', 95), 'inverter_efficiency', get(o, 'inverter_efficiency', 95));
    t.dedicated_converter = flows;
    t.max_charge_power = get(o, 'max_charge', 50); t.max_discharge_power = get(o, 'max_discharge', 50);
    t.power_setpoint = 0; t.state_of_charge_percent = get(o, 'soc', 50);
    [p.batteries, s.batteries] = append(p.batteries, e, s.batteries, t);
  case 'converter'
    e.inverter_capacity = get(o, 'inverter_capacity', 100); e.rectifier_capacity = get(o, 'rectifier_capacity', 100);
    e.inverter_efficiency = get(o, 'inverter_efficiency', 90); e.rectifier_efficiency = get(o, 'rectifier_efficiency', 85);
    t = flows;
    [p.converters, s.converters] = append(p.converters, e, s.converters, t);
  case 'grid'
    e = struct();
    flags = struct('grid_is_down', get(o, 'down', false), 'maintain_state_of_charge', false, ...
      'maintain_state_of_charge_percent', 0, 'prohibit_any_battery_charging', false, ...
      'prohibit_any_grid_sales', false, 'prohibit_battery_from_discharging', false);
    t.grid_purchases = 0; t.grid_sales = 0; t.grid_state = flags;
    t.max_grid_purchases = get(o, 'max_purchases', 100); t.max_grid_sales = get(o, 'max_sales', 100);
    [p.grids, s.grids] = append(p.grids, e, s.grids, t);
  case 'flywheel'
    e.is_AC = is_AC; e.charge_discharge_capacity = get(o, 'capacity', 10); e.parasitic_load = get(o, 'parasitic', 1);
    t.load_served = 0;
    [p.flywheels, s.flywheels] = append(p.flywheels, e, s.flywheels, t);
  case 'load'
    e.is_AC = is_AC;
    t.load_requested = get(o, 'requested', 0); t.load_served = 0;
    [p.primary_loads, s.primary_loads] = append(p.primary_loads, e, s.primary_loads, t);
    bus = {'dc_bus', 'ac_bus'}{is_AC + 1};
    s.(bus).load_requested = s.(bus).load_requested + t.load_requested;
  otherwise
    error('strategy_add: unknown kind %s', kind);
end
end

function v = get(o, name, default_value)
if isfield(o, name)
  v = o.(name);
else
  v = default_value;
end
end

function [a, b] = append(a, e, b, t)
if isempty(fieldnames(a))
  a = e;
  b = t;
else
  a(end + 1, 1) = e;
  b(end + 1, 1) = t;
end
end
