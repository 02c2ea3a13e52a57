// Submits a study to Slurm as a job array: each task runs its slice of the cases on a shared
// output folder, and whichever task finds every case done builds the summary.
#ifndef TAMLO_HOST_SLURM_SUBMIT_H
#define TAMLO_HOST_SLURM_SUBMIT_H

#include <cstddef>
#include <string>
#include <vector>

#include "study_command.h"

namespace tamlo_host {

// The job script for tasks 1..tasks; program is this dispatch-bench, by absolute path.
std::string slurm_job_script(const StudyOptions& options, const std::string& program, const std::string& out_dir,
                             std::size_t tasks);

// Writes DIR/slurm/study.sbatch, runs sbatch on it and returns the job id that sbatch printed.
// Throws InputError when sbatch is missing or refuses the job.
std::string submit_slurm_study(const StudyOptions& options, const std::string& program, const std::string& out_dir,
                               std::size_t case_count);

}  // namespace tamlo_host

#endif
