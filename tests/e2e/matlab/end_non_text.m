function end_sim_out = end_non_text(simulation_parameters, custom_variables)
% Puts a number and a nested cell among the errors, and a plain text (not a cell) as warnings.
end_sim_out.simulation_errors = {42, 'real text', {'nested'}};
end_sim_out.simulation_warnings = 'abc';
end
