# One time step of the extension, split into its parts (building and putting simulation_state,
# the engine call, the read-back, the validation) and whole, with an identity strategy and the
# bundled ones.
add_executable(extension_step_bench
  ${CMAKE_CURRENT_LIST_DIR}/extension_step_bench.cc
  ${PROJECT_SOURCE_DIR}/tests/e2e/sample_systems.cc)
tamlo_target_defaults(extension_step_bench)
target_include_directories(extension_step_bench PRIVATE ${PROJECT_SOURCE_DIR}/tests/e2e)
target_link_libraries(extension_step_bench PRIVATE
  tamlo_extension_core tamlo_matlab tamlo_marshal tamlo_validation tamlo::mx tamlo::eng benchmark::benchmark)
target_compile_definitions(extension_step_bench PRIVATE
  TAMLO_BENCH_FIXTURE_DIR="${PROJECT_SOURCE_DIR}/tests/e2e/matlab"
  TAMLO_BENCH_STRATEGY_DIR="${PROJECT_SOURCE_DIR}/examples/strategies")
if(TARGET octave-engine)
  add_dependencies(extension_step_bench octave-engine)
endif()
