function end_sim_out = end_empty_lists(simulation_parameters, custom_variables)
% Reports nothing: empty arrays of two classes.
end_sim_out.simulation_errors = [];
end_sim_out.simulation_warnings = '';
end
