function year_octave_loop(file, dispatch_name, steps)
% The octave-cli side of the year comparison: loads the inputs the extension passed and calls
% the dispatch function steps times on them, custom_variables carried from call to call as
% the extension does. Prints the count the strategy kept and the loop's own time.
load(file);
dispatch = str2func(dispatch_name);
started = tic;
for k = 1:steps
  [new_simulation_state, custom_variables] = dispatch(simulation_parameters, simulation_state, custom_variables);
end
printf('steps %d loop_seconds %.6f\n', custom_variables.steps, toc(started));
end
