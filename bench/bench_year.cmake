# The example year end to end through dispatch-bench's run loop (engine start included),
# with the per-step split between plant, extension and engine.
tamlo_add_run_loop_bench(bench_year_bench)
