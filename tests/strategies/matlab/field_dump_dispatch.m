function [new_simulation_state, custom_variables] = field_dump_dispatch(simulation_parameters, simulation_state, custom_variables)
% Fixture: returns the state unchanged and keeps, for field_dump_end, where the fields
% MATLAB received differ from the tables of the file named by the extension parameter
% 'field reference': each struct's fields in the same order, each of a class and a size
% its row allows ("N×1 or 1×L": a letter stands for any count).
new_simulation_state = simulation_state;
names = {simulation_parameters.extension_parameters.name};
reference = simulation_parameters.extension_parameters(strcmp(names, 'field reference')).value;
seen = [field_list('simulation_parameters', simulation_parameters); field_list('simulation_state', simulation_state)];
rows = regexp(fileread(reference), ...
              '^\| `(simulation_[^`]*)` \| ([^|]*[^ |]) +\| ([^|]*[^ |]) +\|', 'tokens', 'lineanchors');
rows = vertcat(rows{:});
rows(:, 1) = strrep(rows(:, 1), '(i)', '');
errors = {};
documented = by_struct(rows(:, 1));
received = by_struct(seen(:, 1));
documented(end + 1:numel(received)) = {'nothing'};
received(end + 1:numel(documented)) = {'nothing'};
k = find(~strcmp(documented, received), 1);
if ~isempty(k)
  errors{end + 1} = sprintf('field %d, struct by struct: the reference has %s, MATLAB %s', ...
                            k, documented{k}, received{k});
end
[~, row_of] = ismember(seen(:, 1), rows(:, 1));
for k = find(row_of)'
  row = rows(row_of(k), :);
  sizes = strrep(regexprep(strrep(row{3}, '×', 'x'), '[A-Z]', '[0-9]+'), ' or ', '|');
  if ~any(strcmp(strsplit(row{2}, ' or '), seen{k, 2})) || ...
      isempty(regexp(seen{k, 3}, ['^(' sizes ')$'], 'once'))
    errors{end + 1} = sprintf('%s is %s %s in MATLAB', seen{k, 1}, seen{k, 2}, seen{k, 3});
  end
end
custom_variables.errors = errors;
end

% One row per field below value, recursively: path, class and size ("3x1"). Struct arrays
% add no index to the path; every element is visited, so a field that some elements lack
% in a nested struct still shows.
function rows = field_list(path, value)
rows = {path, class(value), sprintf('%dx%d', size(value, 1), size(value, 2))};
if isstruct(value)
  names = fieldnames(value);
  for e = 1:numel(value)
    for k = 1:numel(names)
      rows = [rows; field_list([path, '.', names{k}], value(e).(names{k}))];
    end
  end
end
end

% The paths struct by struct, each struct's fields in their order of first appearance.
function paths = by_struct(paths)
paths = unique(paths, 'stable');
[~, order] = sort(regexprep(paths, '\.[^.]*$', ''));
paths = paths(order);
end
