# Studies: cases per minute on warm and cold engines, one and two workers. Warm engines are our
# libeng's.
if(TARGET tamlo_bench_study AND TARGET tamlo_matlab_dispatch AND TARGET tamlo_eng)
  add_executable(study_bench ${CMAKE_CURRENT_LIST_DIR}/study_bench.cc)
  tamlo_target_defaults(study_bench)
  target_link_libraries(study_bench PRIVATE benchmark::benchmark)
  add_dependencies(study_bench dispatch-bench tamlo_matlab_dispatch octave-engine)
  target_compile_definitions(study_bench PRIVATE
    TAMLO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    TAMLO_BENCH_PROGRAM="$<TARGET_FILE:dispatch-bench>"
    TAMLO_EXTENSION_LIBRARY="$<TARGET_FILE:tamlo_matlab_dispatch>")
endif()
