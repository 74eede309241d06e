"""Runs every job, all its entries in turn, as whole processes; prints one table of medians, ratios and memory.
run.py BUILD DATA RUNS COUNT"""

import hashlib
import os
import statistics
import subprocess
import sys
import tempfile
from collections import namedtuple

from jobs import JOBS, PYTHON

Run = namedtuple("Run", "wall user system peak")  # seconds, seconds, seconds, MiB


def words_of(command, places):
    """Words with their places filled in; code for Python keeps its other braces."""
    filled = []
    for word in command:
        for name, value in places.items():
            word = word.replace("{" + name + "}", value)
        filled.append(word.replace("{{", "{").replace("}}", "}"))
    return filled


def run_once(measure, command, folder, output):
    """Output goes to `output`; a process that fails ends the whole run: its time would mean nothing."""
    read_end, write_end = os.pipe()
    script = 'exec 3>&"$0"; exec "$@"'
    words = ["bash", "-c", script, str(write_end), measure, *command]
    done = subprocess.run(words, cwd=folder, stdin=subprocess.DEVNULL, stdout=output, pass_fds=[write_end], check=False)
    os.close(write_end)
    with open(read_end, encoding="ascii") as pipe:
        figures = pipe.read().split()
    if done.returncode != 0:
        sys.exit(f"Failed ({done.returncode}): {' '.join(command)}")
    wall, user, system, peak = map(float, figures)
    return Run(wall, user, system, peak / 1024)


def digest(measure, command, folder):
    with tempfile.TemporaryFile() as file:
        run_once(measure, command, folder, file)
        file.seek(0)
        return hashlib.file_digest(file, "sha256").hexdigest()


def check_same(job, measure, commands, folder):
    if not job.same:
        return
    if digest(measure, commands["limit"], folder) != digest(measure, commands["kelvocli"], folder):
        sys.exit(f"{job.name}: the program's output is not the limit's")


def medians(runs):
    return Run(*(statistics.median(values) for values in zip(*runs)))


def results_of(job, places, folder, times):
    commands = {name: words_of(command, places) for name, command in job.entries.items()}
    measure = places["build"] + "/bench/measure"
    check_same(job, measure, commands, folder)
    runs = {name: [] for name in commands}
    with open(os.devnull, "wb") as nowhere:
        for _ in range(times):
            for name, command in commands.items():
                runs[name].append(run_once(measure, command, folder, nowhere))
    return {name: medians(of_one) for name, of_one in runs.items()}


def print_rows(job, results):
    first = next(iter(results.values()))
    processor = {name: run.user + run.system for name, run in results.items()}
    first_processor = max(0.001, next(iter(processor.values())))
    for name, run in results.items():
        print(f"| {job.name} | {name} | {run.wall:.3f} | {run.user:.3f} | {run.system:.3f} | "
              f"{run.wall / first.wall:.2f}x | {processor[name] / first_processor:.2f}x | {run.peak:.0f} |", flush=True)


def make_tiny_file(data):
    path = os.path.join(data, "tiny.h5")
    if not os.path.exists(path):
        text = f"import h5py; h5py.File({path!r}, 'w').create_group('group')"
        subprocess.run([PYTHON, "-c", text], check=True)


def main(build, data, times, count):
    make_tiny_file(data)
    places = {"build": os.path.abspath(build), "data": os.path.abspath(data), "n": count}
    print("| job | run | seconds | user | system | ratio | ratio of processor time | MiB |")
    print("|---|---|---:|---:|---:|---:|---:|---:|")
    with tempfile.TemporaryDirectory(dir=data) as folder:
        for job in JOBS:
            print_rows(job, results_of(job, places, folder, int(times)))


if __name__ == "__main__":
    main(*sys.argv[1:])
