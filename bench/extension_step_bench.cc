// Cost of one time step of the extension, part by part, for the typical system (argument 1:
// 2 generators, 1 PV, 1 wind turbine, 1 battery, 1 converter, 1 grid, 2 loads) and a large
// one (argument 50: fifty of each kind).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "dispatch_extension.h"
#include "engine.h"
#include "matlab_connection.h"
#include "sample_systems.h"
#include "simulation_parameters_struct.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"
#include "validate_dispatch.h"

namespace {

using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

const char* const dispatch_command =
    "[new_simulation_state, custom_variables] = dispatch_identity(simulation_parameters, simulation_state, "
    "custom_variables);";

struct DestroyArray {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
using Array = std::unique_ptr<mxArray, DestroyArray>;

// One engine for the whole program, with the fixture folder, the parameters of the system
// last asked for, and custom_variables in its workspace.
class BenchEngine {
public:
    static BenchEngine& instance() {
        static BenchEngine engine;
        return engine;
    }

    Engine* prepare(const SimulationParameters& parameters) {
        Array structure(tamlo_marshal::make_single_struct());
        tamlo_marshal::fill_simulation_parameters_struct(structure.get(), parameters);
        engPutVariable(engine_, "simulation_parameters", structure.get());
        engEvalString(engine_, "[init_error, custom_variables] = start_ok(simulation_parameters);");
        return engine_;
    }

private:
    BenchEngine() {
        int status = 0;
        engine_ = engOpenSingleUse("", nullptr, &status);
        if (engine_ == nullptr) {
            std::fprintf(stderr, "cannot start the engine: code %d\n", status);
            std::exit(1);
        }
        engOutputBuffer(engine_, buffer_, sizeof buffer_ - 1);
        const std::string cd = std::string("cd('") + TAMLO_BENCH_FIXTURE_DIR + "');";
        engEvalString(engine_, cd.c_str());
    }
    ~BenchEngine() { engClose(engine_); }

    Engine* engine_ = nullptr;
    char buffer_[1025] = {};
};

SimulationParameters system_of(const benchmark::State& state) {
    return tamlo_samples::make_system(static_cast<std::size_t>(state.range(0)));
}

// Host side: refilling the cached simulation_state struct.
void BM_BuildState(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    const SimulationState state = tamlo_samples::make_state(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    for (auto _ : bench) {
        tamlo_marshal::fill_simulation_state_struct(cached.get(), state);
        benchmark::ClobberMemory();
    }
}

// Transfer of simulation_state into the engine's workspace (our libeng and the pipe).
void BM_PutState(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_samples::make_state(parameters));
    for (auto _ : bench) {
        engPutVariable(engine, "simulation_state", cached.get());
    }
}

// The engine's evaluation of the dispatch command (an identity strategy), round trip included.
void BM_EngineCall(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_samples::make_state(parameters));
    engPutVariable(engine, "simulation_state", cached.get());
    for (auto _ : bench) {
        engEvalString(engine, dispatch_command);
    }
}

// A round trip of an almost empty command: what an engine call costs besides the evaluation.
void BM_EngineRoundTrip(benchmark::State& bench) {
    Engine* engine = BenchEngine::instance().prepare(system_of(bench));
    for (auto _ : bench) {
        engEvalString(engine, "tamlo_bench_x = 1;");
    }
}

// Transfer of new_simulation_state out of the engine.
void BM_GetResult(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_samples::make_state(parameters));
    engPutVariable(engine, "simulation_state", cached.get());
    engEvalString(engine, dispatch_command);
    for (auto _ : bench) {
        Array result(engGetVariable(engine, "new_simulation_state"));
        benchmark::DoNotOptimize(result.get());
    }
}

// The engine traffic of one time step, in the extension's order: put simulation_state, the
// dispatch command, get new_simulation_state. With the separate figures above it shows what
// overlapping the three requests saves.
void BM_EngineTraffic(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), tamlo_samples::make_state(parameters));
    for (auto _ : bench) {
        engPutVariable(engine, "simulation_state", cached.get());
        engEvalString(engine, dispatch_command);
        Array result(engGetVariable(engine, "new_simulation_state"));
        benchmark::DoNotOptimize(result.get());
    }
}

// Host side: reading every decision out of new_simulation_state.
void BM_ReadBack(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    Engine* engine = BenchEngine::instance().prepare(parameters);
    SimulationState state = tamlo_samples::make_state(parameters);
    Array cached(tamlo_marshal::make_single_struct());
    tamlo_marshal::fill_simulation_state_struct(cached.get(), state);
    engPutVariable(engine, "simulation_state", cached.get());
    engEvalString(engine, dispatch_command);
    Array result(engGetVariable(engine, "new_simulation_state"));
    for (auto _ : bench) {
        tamlo_dispatch::DispatchError outcome;
        bool ok = tamlo_matlab::MatlabConnection::read_new_simulation_state(result.get(), state, parameters, outcome);
        benchmark::DoNotOptimize(ok);
    }
}

// Host side: the validation of one time step (the warning list emptied each time, so every
// check runs).
void BM_Validate(benchmark::State& bench) {
    const SimulationParameters parameters = system_of(bench);
    const SimulationState state = tamlo_samples::make_state(parameters);
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    for (auto _ : bench) {
        lists.simulation_warnings.clear();
        tamlo_validation::validate_dispatch(parameters, state, lists);
        benchmark::DoNotOptimize(lists.simulation_warnings.data());
    }
}

// The whole time step through the extension object, as the simulator calls it.
void BM_WholeStep(benchmark::State& bench) {
    SimulationParameters parameters = system_of(bench);
    tamlo_samples::add_settings(parameters,
                                {TAMLO_BENCH_FIXTURE_DIR, "start_ok", "dispatch_identity", "end_empty_lists"});
    auto extension = std::make_unique<DispatchExtension>();
    auto started = extension->start_simulation(parameters);
    if (started->severity != tamlo_dispatch::DISPATCH_NO_ERROR) {
        bench.SkipWithError(started->message.c_str());
        return;
    }
    const SimulationState first = tamlo_samples::make_state(parameters);
    SimulationState state = first;
    for (auto _ : bench) {
        extension->dispatch(state);
    }
}

#define TAMLO_SYSTEMS ->Arg(1)->Arg(50)->Unit(benchmark::kMicrosecond)
BENCHMARK(BM_BuildState) TAMLO_SYSTEMS;
BENCHMARK(BM_PutState) TAMLO_SYSTEMS;
BENCHMARK(BM_EngineRoundTrip) TAMLO_SYSTEMS;
BENCHMARK(BM_EngineCall) TAMLO_SYSTEMS;
BENCHMARK(BM_GetResult) TAMLO_SYSTEMS;
BENCHMARK(BM_EngineTraffic) TAMLO_SYSTEMS;
BENCHMARK(BM_ReadBack) TAMLO_SYSTEMS;
BENCHMARK(BM_Validate) TAMLO_SYSTEMS;
BENCHMARK(BM_WholeStep) TAMLO_SYSTEMS;

}  // namespace

BENCHMARK_MAIN();
