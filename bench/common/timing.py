"""Timing of command lines for the benchmark scripts: each command is run several times
and the best run counts, since the machine may be shared; the processor time of the run
(user and system) is given beside the wall time, as it is what sharing the machine
changes least."""
import resource
import subprocess
import time


def children_cpu():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def best_seconds(command, runs):
    """The best wall time and the best processor time of `runs` runs."""
    best_wall = best_cpu = None
    for _ in range(runs):
        cpu = children_cpu()
        start = time.perf_counter()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wall = time.perf_counter() - start
        cpu = children_cpu() - cpu
        best_wall = wall if best_wall is None else min(best_wall, wall)
        best_cpu = cpu if best_cpu is None else min(best_cpu, cpu)
    return best_wall, best_cpu


def report(name, frames, seconds):
    wall, cpu = seconds
    print(f"{name:28s} {frames / wall:7.1f} frames/s wall ({wall:5.2f} s), "
          f"{frames / cpu:7.1f} frames/s of processor time ({cpu:5.2f} s)")
