#!/usr/bin/env bash
# A study through a one-node Slurm cluster on this machine gives the same summary.csv, figure
# for figure, as the same study run here on two workers, and every case reruns alone with
# dispatch-bench run to the same results. Skipped (77) without root or Slurm.
# Usage: slurm_study_test.sh BENCH_PROGRAM EXTENSION SOURCE_DIR
set -euo pipefail
bench=$1 extension=$2 source=$3
fixtures=$source/tests/host/study

if [ "$(id -u)" -ne 0 ] || ! command -v slurmctld >/dev/null || ! command -v munged >/dev/null; then
  echo "skipped: needs root and the Debian packages slurm-wlm and munge"
  exit 77
fi

work=$(mktemp -d /tmp/tamlo-slurm-test-XXXXXX)
cluster=$work/cluster
export TAMLO_SLURM_PORT=$((20000 + $$ % 20000))
trap 'bash "$source/scripts/slurm_cluster.sh" stop "$cluster"; rm -rf "$work"' EXIT
eval "$(bash "$source/scripts/slurm_cluster.sh" start "$cluster")"

cat > "$work/study.json" <<STUDY
{
  "scenario": "$fixtures/scenario.json",
  "steps": 12,
  "vary": [
    {"name": "battery", "path": "batteries[0].battery_bank_maximum_absolute_soc", "values": [100, 200, 400]},
    {"name": "strategy", "strategies": [
      {"label": "persistent", "path": "$fixtures/strategies", "dispatch": "persistent_dispatch"},
      {"label": "global", "path": "$fixtures/strategies", "dispatch": "global_dispatch"}]}
  ]
}
STUDY

# --wait: sbatch returns when every task of the array has ended.
"$bench" study "$work/study.json" --out "$work/slurm" --extension "$extension" --quiet --slurm --array=1-3 --wait
"$bench" study "$work/study.json" --out "$work/local" --extension "$extension" --quiet --jobs 2 > /dev/null

without_wall_time() { sed 's/,[^,]*$//' "$1/summary.csv"; }
diff <(without_wall_time "$work/slurm") <(without_wall_time "$work/local")
[ "$(wc -l < "$work/slurm/summary.csv")" -eq 7 ] || { echo "expected 6 cases"; exit 1; }
! grep -q ',not run,\|,failed,' "$work/slurm/summary.csv"

for case in "$work"/slurm/cases/*/; do
  "$bench" run "$case/scenario.json" --quiet --extension "$extension" --out "$work/alone.csv" > "$work/alone.txt"
  cmp "$work/alone.csv" "$case/results.csv"
  # The first line names the scenario file; every figure after it must match.
  diff <(tail -n +2 "$work/alone.txt") <(tail -n +2 "$case/summary.txt")
done
echo "slurm study agrees with the local study and with single runs"
