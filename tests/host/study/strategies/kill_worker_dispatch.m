function [s, custom_variables] = kill_worker_dispatch(simulation_parameters, simulation_state, custom_variables)
% Study test fixture: kills the study worker that runs it, the nearest of its ancestors that is one.
pid = getpid();
while pid > 1
  stat = fileread(sprintf('/proc/%d/stat', pid));
  fields = strsplit(stat(find(stat == ')', 1, 'last') + 2:end), ' ');
  pid = str2double(fields{2});
  if ~isempty(strfind(fileread(sprintf('/proc/%d/cmdline', pid)), 'study-worker'))
    system(sprintf('kill -9 %d', pid));
    pause(10);
    break;
  end
end
end
