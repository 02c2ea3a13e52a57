function end_sim_out = end_code(simulation_parameters, custom_variables)
% Runs the MATLAB text of the extension parameter 'end code', which makes end_sim_out.
eval(parameter(simulation_parameters, 'end code'));
end
