function end_sim_out = end_no_output(simulation_parameters, custom_variables)
% Never assigns its output.
x = 1;
end
