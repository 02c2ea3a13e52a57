# One time step of the extension, split into its parts (building and putting simulation_state,
# the engine call, the read-back, the validation) and whole, with an identity strategy and the
# bundled ones.
tamlo_add_extension_bench(extension_step_bench
  TAMLO_BENCH_FIXTURE_DIR="${PROJECT_SOURCE_DIR}/tests/e2e/matlab"
  TAMLO_BENCH_STRATEGY_DIR="${PROJECT_SOURCE_DIR}/examples/strategies")
