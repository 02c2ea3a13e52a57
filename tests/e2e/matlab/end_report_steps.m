function end_sim_out = end_report_steps(simulation_parameters, custom_variables)
% Reports the number of dispatch calls the run's custom_variables counted.
end_sim_out.simulation_errors = {};
end_sim_out.simulation_warnings = {sprintf('dispatch ran %d times', custom_variables.steps)};
end
