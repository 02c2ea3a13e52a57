function run_strategy_tests()
% Behaviour tests of the bundled strategies on hand-made systems. Each case names
% the behaviour it shows; the first failing value stops the run with an error.
addpath(fullfile(fileparts(mfilename('fullpath')), '..', '..', '..', 'examples', 'strategies'));
cases = {@generator_follows_load, @generator_runs_at_least_minimum_load, ...
  @shortfall_is_unmet_load, @pv_surplus_charges_dc_battery, @battery_covers_night_load, ...
  @grid_down_buys_nothing, @grid_covers_load_before_generator, @forced_on_generator_runs, ...
  @forced_off_generator_stays_off, @surplus_is_sold_within_sales_limit, ...
  @load_following_does_not_charge_from_generator, @cycle_charging_runs_generator_full_and_charges, ...
  @cycle_charging_keeps_charging_until_setpoint, @cycle_charging_uses_battery_when_it_covers, ...
  @flywheel_parasitic_load_is_served, @dedicated_converter_flows_follow_efficiency, ...
  @ac_generator_serves_dc_load_through_rectifier, @capacity_shortage_reported, ...
  @cycle_charging_rejects_bad_setpoint, @end_functions_report_nothing};
for k = 1:numel(cases)
  cases{k}();
  fprintf('ok %d - %s\n', k, func2str(cases{k}));
end
end

function check(what, actual, expected)
if ~(abs(actual - expected) <= 1e-9 * max(1, abs(expected)))
  error('strategy_tests:mismatch', '%s: expected %.12g, got %.12g', what, expected, actual);
end
end

function n = lf(p, s)
[ie, cv] = load_following_start(p);
[n, cv] = load_following_dispatch(p, s, cv);
end

function generator_follows_load()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100, 'minimum_load', 30);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 40);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 40);
check('load served', n.ac_bus.load_served, 40);
check('unmet load', n.ac_bus.unmet_load, 0);
check('excess', n.ac_bus.excess_electricity, 0);
check('primary load served', n.primary_loads(1).load_served, 40);
end

function generator_runs_at_least_minimum_load()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100, 'minimum_load', 30);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 20);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 30);
check('excess', n.ac_bus.excess_electricity, 10);
check('load served', n.ac_bus.load_served, 20);
end

function shortfall_is_unmet_load()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 150);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 100);
check('load served', n.ac_bus.load_served, 100);
check('unmet load', n.ac_bus.unmet_load, 50);
check('primary load served', n.primary_loads(1).load_served, 100);
end

function pv_surplus_charges_dc_battery()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'pv', false, 'available', 60);
[p, s] = strategy_add(p, s, 'battery', false, 'max_charge', 30);
[p, s] = strategy_add(p, s, 'load', false, 'requested', 20);
n = lf(p, s);
check('pv set point', n.pvs(1).power_setpoint, 60);
check('battery set point', n.batteries(1).power_setpoint, 30);
check('dc excess', n.dc_bus.excess_electricity, 10);
check('dc load served', n.dc_bus.load_served, 20);
end

function battery_covers_night_load()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'pv', false, 'available', 0);
[p, s] = strategy_add(p, s, 'battery', false, 'max_discharge', 50);
[p, s] = strategy_add(p, s, 'load', false, 'requested', 20);
n = lf(p, s);
check('battery set point', n.batteries(1).power_setpoint, -20);
check('dc load served', n.dc_bus.load_served, 20);
end

function grid_down_buys_nothing()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'grid', true, 'down', true, 'max_purchases', 100);
[p, s] = strategy_add(p, s, 'generator', true, 'available', 80);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 50);
n = lf(p, s);
check('grid purchases', n.grids(1).grid_purchases, 0);
check('grid sales', n.grids(1).grid_sales, 0);
check('generator set point', n.generators(1).power_setpoint, 50);
end

function grid_covers_load_before_generator()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'grid', true, 'max_purchases', 30);
[p, s] = strategy_add(p, s, 'generator', true, 'available', 80);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 50);
n = lf(p, s);
check('grid purchases', n.grids(1).grid_purchases, 30);
check('generator set point', n.generators(1).power_setpoint, 20);
check('operating capacity served', n.ac_bus.operating_capacity_served, 0);
end

function forced_on_generator_runs()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100, 'minimum_load', 10, ...
  'current_state', 'FORCED_ON_FOR_MINIMUM_RUNTIME');
[p, s] = strategy_add(p, s, 'load', true, 'requested', 0);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 10);
check('excess', n.ac_bus.excess_electricity, 10);
end

function forced_off_generator_stays_off()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100, 'current_state', 'FORCED_OFF_FOR_SCHEDULE');
[p, s] = strategy_add(p, s, 'load', true, 'requested', 50);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 0);
check('unmet load', n.ac_bus.unmet_load, 50);
end

function surplus_is_sold_within_sales_limit()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'grid', true, 'max_sales', 20);
[p, s] = strategy_add(p, s, 'pv', true, 'available', 80);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 30);
n = lf(p, s);
check('grid sales', n.grids(1).grid_sales, 20);
check('excess', n.ac_bus.excess_electricity, 30);
end

function load_following_does_not_charge_from_generator()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100, 'minimum_load', 40);
[p, s] = strategy_add(p, s, 'battery', true, 'max_charge', 50, 'max_discharge', 0);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 25);
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 40);
check('battery set point', n.batteries(1).power_setpoint, 0);
check('excess', n.ac_bus.excess_electricity, 15);
end

function cycle_charging_runs_generator_full_and_charges()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'battery', true, 'max_charge', 50, 'max_discharge', 30, 'soc', 40);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 60);
[ie, cv] = cycle_charging_start(p);
[n, cv] = cycle_charging_dispatch(p, s, cv);
check('generator set point', n.generators(1).power_setpoint, 100);
check('battery set point', n.batteries(1).power_setpoint, 40);
check('load served', n.ac_bus.load_served, 60);
check('charging mode', cv.charging(1), 1);
end

function cycle_charging_keeps_charging_until_setpoint()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'battery', true, 'max_charge', 50, 'max_discharge', 30, 'soc', 60);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 10);
[ie, cv] = cycle_charging_start(p);
cv.charging(1) = true;
[n, cv] = cycle_charging_dispatch(p, s, cv);
check('generator set point while below set point', n.generators(1).power_setpoint, 60);
check('battery set point while below set point', n.batteries(1).power_setpoint, 50);
s.batteries(1).state_of_charge_percent = 80;
[n, cv] = cycle_charging_dispatch(p, s, cv);
check('generator set point at set point', n.generators(1).power_setpoint, 0);
check('battery set point at set point', n.batteries(1).power_setpoint, -10);
check('charging mode at set point', cv.charging(1), 0);
end

function cycle_charging_uses_battery_when_it_covers()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'battery', true, 'max_discharge', 30);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 20);
[ie, cv] = cycle_charging_start(p);
[n, cv] = cycle_charging_dispatch(p, s, cv);
check('generator set point', n.generators(1).power_setpoint, 0);
check('battery set point', n.batteries(1).power_setpoint, -20);
end

function flywheel_parasitic_load_is_served()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'flywheel', true, 'parasitic', 2, 'capacity', 15);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 10);
s.ac_bus.operating_capacity_requested = 200;
n = lf(p, s);
check('generator set point', n.generators(1).power_setpoint, 12);
check('load served', n.ac_bus.load_served, 10);
check('excess', n.ac_bus.excess_electricity, 0);
check('operating capacity served', n.ac_bus.operating_capacity_served, 115);
check('capacity shortage', n.ac_bus.capacity_shortage, 85);
end

function dedicated_converter_flows_follow_efficiency()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'pv', true, 'available', 30);
[p, s] = strategy_add(p, s, 'battery', true, 'dedicated', true, 'max_charge', 10, ...
  'rectifier_efficiency', 95, 'inverter_efficiency', 80);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 0);
n = lf(p, s);
d = n.batteries(1).dedicated_converter;
check('rectifier input', d.rectifier_power_input, 10);
check('rectifier output', d.rectifier_power_output, 9.5);
check('inverter input', d.inverter_power_input, 0);
s.pvs(1).power_available = 0;
s.ac_bus.load_requested = 8;
s.primary_loads(1).load_requested = 8;
n = lf(p, s);
d = n.batteries(1).dedicated_converter;
check('inverter output', d.inverter_power_output, 8);
check('inverter input', d.inverter_power_input, 10);
check('battery set point', n.batteries(1).power_setpoint, -8);
end

function ac_generator_serves_dc_load_through_rectifier()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 100);
[p, s] = strategy_add(p, s, 'converter', true, 'rectifier_efficiency', 80, 'rectifier_capacity', 50);
[p, s] = strategy_add(p, s, 'load', false, 'requested', 20);
n = lf(p, s);
c = n.converters(1);
check('rectifier input', c.rectifier_power_input, 25);
check('rectifier output', c.rectifier_power_output, 20);
check('generator set point', n.generators(1).power_setpoint, 25);
check('dc load served', n.dc_bus.load_served, 20);
check('ac excess', n.ac_bus.excess_electricity, 0);
end

function capacity_shortage_reported()
[p, s] = strategy_test_system();
[p, s] = strategy_add(p, s, 'generator', true, 'available', 40);
[p, s] = strategy_add(p, s, 'pv', false, 'available', 30);
[p, s] = strategy_add(p, s, 'converter', true, 'inverter_efficiency', 90, 'inverter_capacity', 10);
[p, s] = strategy_add(p, s, 'load', true, 'requested', 30);
s.ac_bus.operating_capacity_requested = 60;
s.dc_bus.operating_capacity_requested = 0;
n = lf(p, s);
% 10 kW of the DC bus's spare capacity reach the AC bus: 40 + 10 = 50 kW.
check('ac capacity served', n.ac_bus.operating_capacity_served, 50);
check('ac capacity shortage', n.ac_bus.capacity_shortage, 10);
end

function cycle_charging_rejects_bad_setpoint()
[p, s] = strategy_test_system();
p.extension_parameters = struct('name', 'cycle_charging_setpoint', 'value', 120);
[ie, cv] = cycle_charging_start(p);
if ~strcmp(ie.severity_code, 'DISPATCH_SIMULATION_ERROR')
  error('strategy_tests:mismatch', 'bad set point: severity %s', ie.severity_code);
end
p.extension_parameters = struct('name', 'cycle_charging_setpoint', 'value', 60);
[ie, cv] = cycle_charging_start(p);
check('set point taken', cv.setpoint_soc, 60);
if ~strcmp(ie.severity_code, 'DISPATCH_NO_ERROR') || ~isempty(ie.error_description)
  error('strategy_tests:mismatch', 'good set point: severity %s', ie.severity_code);
end
end

function end_functions_report_nothing()
[p, s] = strategy_test_system();
outs = {load_following_end(p, struct()), cycle_charging_end(p, struct())};
for k = 1:2
  o = outs{k};
  if ~iscell(o.simulation_errors) || ~iscell(o.simulation_warnings) || ...
      ~isempty(o.simulation_errors) || ~isempty(o.simulation_warnings)
    error('strategy_tests:mismatch', 'end function %d reported something', k);
  end
end
end
