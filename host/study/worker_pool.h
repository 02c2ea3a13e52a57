// Worker processes of a study: starts them, hands each its case folders (one running, one
// waiting), and starts a new worker in place of one that dies.
#ifndef TAMLO_HOST_WORKER_POOL_H
#define TAMLO_HOST_WORKER_POOL_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tamlo_host {

// The program a worker runs and its arguments (argv[0] first).
struct WorkerCommand {
    std::string program;
    std::vector<std::string> argv;
};

// Called as each folder finishes; death is empty when the worker answered, else how it ended
// ("worker died: signal 11") while holding that folder.
using FolderDone = std::function<void(std::size_t index, const std::string& death)>;

// Runs every folder on at most jobs workers at once; returns when all are done. With one worker
// for each core and pin set, each worker keeps to a core of its own.
void run_on_workers(const WorkerCommand& command, std::size_t jobs, bool pin, const std::vector<std::string>& folders,
                    const FolderDone& done);

}  // namespace tamlo_host

#endif
