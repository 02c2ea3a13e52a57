function end_sim_out = end_warnings(simulation_parameters, custom_variables)
% Reports one error and two warnings, and prints while doing so.
disp('printed during end simulation');
end_sim_out.simulation_errors = {'end error'};
end_sim_out.simulation_warnings = {'first warning', 'second warning'};
end
