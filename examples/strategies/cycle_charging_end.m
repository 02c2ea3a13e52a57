function end_sim_out = cycle_charging_end(simulation_parameters, custom_variables)
% End of a run with the cycle-charging strategy: nothing to report. Every text in
% these lists would reach the simulator as an error or a warning.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {};
end
