function field_dump_write(file_name, mode, name, value)
% Writes one line per field of value, recursively: path, class and size (rows x
% columns), tab-separated. Struct arrays add no index to the path; every element
% is visited, so a field that some elements lack in a nested struct still shows.
fid = fopen(file_name, mode);
write_value(fid, name, value);
fclose(fid);
end

function write_value(fid, path, value)
fprintf(fid, '%s\t%s\t%dx%d\n', path, class(value), size(value, 1), size(value, 2));
if isstruct(value)
  names = fieldnames(value);
  for e = 1:numel(value)
    for k = 1:numel(names)
      write_value(fid, [path, '.', names{k}], value(e).(names{k}));
    end
  end
end
end
