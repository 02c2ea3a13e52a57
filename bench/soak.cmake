# A year at one-minute steps (525,600) through dispatch-bench's run loop, watching the memory
# of host and engine for growth.
if(TARGET tamlo_bench_host AND TARGET tamlo_matlab_dispatch)
  add_executable(soak_bench ${CMAKE_CURRENT_LIST_DIR}/soak_bench.cc)
  tamlo_target_defaults(soak_bench)
  target_link_libraries(soak_bench PRIVATE tamlo_bench_host benchmark::benchmark)
  add_dependencies(soak_bench tamlo_matlab_dispatch)
  if(TARGET octave-engine)
    add_dependencies(soak_bench octave-engine)
  endif()
  target_compile_definitions(soak_bench PRIVATE
    TAMLO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    TAMLO_EXTENSION_LIBRARY="$<TARGET_FILE:tamlo_matlab_dispatch>")
endif()
