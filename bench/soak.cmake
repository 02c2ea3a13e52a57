# A year at one-minute steps (525,600) through dispatch-bench's run loop, watching the memory
# of host and engine for growth.
tamlo_add_run_loop_bench(soak_bench)
