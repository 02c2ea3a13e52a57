function end_sim_out = field_dump_end(simulation_parameters, custom_variables)
% Fixture: reports as errors what field_dump_dispatch found.
end_sim_out.simulation_errors = custom_variables.errors;
end_sim_out.simulation_warnings = {};
end
