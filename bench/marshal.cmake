# Cost of building simulation_state (every time step) and simulation_parameters (every run).
add_executable(marshal_bench ${CMAKE_CURRENT_LIST_DIR}/marshal_bench.cc)
tamlo_target_defaults(marshal_bench)
target_link_libraries(marshal_bench PRIVATE tamlo_marshal tamlo::mx benchmark::benchmark)
