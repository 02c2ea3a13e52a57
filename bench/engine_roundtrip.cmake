# One time step's engine traffic (put the state, call a .m function, get the result) against
# the same call made in a loop inside Octave.
if(NOT TAMLO_MATLAB_ROOT)
  add_executable(engine_roundtrip_bench ${CMAKE_CURRENT_LIST_DIR}/engine_roundtrip_bench.cc)
  tamlo_target_defaults(engine_roundtrip_bench)
  target_link_libraries(engine_roundtrip_bench PRIVATE tamlo::eng benchmark::benchmark)
  add_dependencies(engine_roundtrip_bench octave-engine)
endif()
