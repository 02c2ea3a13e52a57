# A year of a minimal strategy through the extension (engine start included) against
# octave-cli calling the same dispatch function as often on the structs the extension passed.
tamlo_add_extension_bench(year_octave_cli_bench TAMLO_BENCH_MATLAB_DIR="${CMAKE_CURRENT_LIST_DIR}/matlab")
