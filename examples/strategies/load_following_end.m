function end_sim_out = load_following_end(simulation_parameters, custom_variables)
% End of a run with the load-following strategy: nothing to report. Every text in
% these lists would reach the simulator as an error or a warning.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {};
end
