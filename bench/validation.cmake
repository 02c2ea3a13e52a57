# Cost of validating one time step's dispatch.
add_executable(validation_bench ${CMAKE_CURRENT_LIST_DIR}/validation_bench.cc)
tamlo_target_defaults(validation_bench)
target_link_libraries(validation_bench PRIVATE tamlo_validation benchmark::benchmark)
