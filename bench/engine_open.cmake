# Opening our engine, cold and warm, against octave-cli's own start and exit. Our libeng only:
# it asks the engine's process id to tell warm opens from cold ones.
if(NOT TAMLO_MATLAB_ROOT)
  add_executable(engine_open_bench ${CMAKE_CURRENT_LIST_DIR}/engine_open_bench.cc)
  tamlo_target_defaults(engine_open_bench)
  target_link_libraries(engine_open_bench PRIVATE tamlo::eng benchmark::benchmark)
  add_dependencies(engine_open_bench octave-engine)
endif()
