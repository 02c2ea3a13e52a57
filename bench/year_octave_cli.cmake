# A year of a minimal strategy through the extension (engine start included) against
# octave-cli calling the same dispatch function as often on the structs the extension passed.
add_executable(year_octave_cli_bench
  ${CMAKE_CURRENT_LIST_DIR}/year_octave_cli_bench.cc
  ${PROJECT_SOURCE_DIR}/tests/e2e/sample_systems.cc)
tamlo_target_defaults(year_octave_cli_bench)
target_include_directories(year_octave_cli_bench PRIVATE ${PROJECT_SOURCE_DIR}/tests/e2e)
target_link_libraries(year_octave_cli_bench PRIVATE
  tamlo_extension_core tamlo_matlab tamlo_marshal tamlo_validation tamlo::mx tamlo::eng benchmark::benchmark)
target_compile_definitions(year_octave_cli_bench PRIVATE
  TAMLO_BENCH_MATLAB_DIR="${CMAKE_CURRENT_LIST_DIR}/matlab")
if(TARGET octave-engine)
  add_dependencies(year_octave_cli_bench octave-engine)
endif()
