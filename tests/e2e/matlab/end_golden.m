function end_sim_out = end_golden(simulation_parameters, custom_variables)
% Sums up the run in one warning and one error.
end_sim_out.simulation_errors = {sprintf('strategy saw %d time steps', custom_variables.steps)};
end_sim_out.simulation_warnings = {sprintf('number_of_timesteps was %d', simulation_parameters.number_of_timesteps)};
end
