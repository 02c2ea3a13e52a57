function end_sim_out = year_end(simulation_parameters, custom_variables)
% End of the minimal strategy: the count of steps it saw, as a warning the bench checks.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {sprintf('year_dispatch saw %d time steps', custom_variables.steps)};
end
