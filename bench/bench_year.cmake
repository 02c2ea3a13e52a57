# The example year end to end through dispatch-bench's run loop (engine start included),
# with the per-step split between plant, extension and engine.
if(TARGET tamlo_bench_host AND TARGET tamlo_matlab_dispatch)
  add_executable(bench_year_bench ${CMAKE_CURRENT_LIST_DIR}/bench_year_bench.cc)
  tamlo_target_defaults(bench_year_bench)
  target_link_libraries(bench_year_bench PRIVATE tamlo_bench_host benchmark::benchmark)
  add_dependencies(bench_year_bench tamlo_matlab_dispatch)
  if(TARGET octave-engine)
    add_dependencies(bench_year_bench octave-engine)
  endif()
  target_compile_definitions(bench_year_bench PRIVATE
    TAMLO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    TAMLO_EXTENSION_LIBRARY="$<TARGET_FILE:tamlo_matlab_dispatch>")
endif()
