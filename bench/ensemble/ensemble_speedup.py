#!/usr/bin/python3
"""Speed-up of an ensemble on a local Dask cluster against the same
realisations run one after the other in this process.

    PYTHONPATH=build/python /usr/bin/python3 bench/ensemble/ensemble_speedup.py

8 realisations of a small domain (60 x 50 nodes, 1500 iterations), a local
cluster of 2 worker processes. Not run by CI: the numbers depend on the
machine and its load. The cluster's time is given with and without its
start-up; the workers import the package from PYTHONPATH."""

import argparse
import os
import tempfile
import time

import sarvo

BATCH = """[GLOBAL]
F2G_FILE = output/block.f2g
F2G_DZ = 0.5
F2G_FACIES = 1
F2G_GRAIN = 1
F2G_AGE = 1

[NEW_SEQ]
SIM_SEED = 1
DOMAIN_NX = {nx}
DOMAIN_NY = {ny}
LAUNCH_IT = {iterations}
"""


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--realisations", type=int, default=8)
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--nx", type=int, default=60)
    parser.add_argument("--ny", type=int, default=50)
    parser.add_argument("--iterations", type=int, default=1500)
    args = parser.parse_args()
    seeds = list(range(101, 101 + args.realisations))
    with tempfile.TemporaryDirectory() as work:
        batch = os.path.join(work, "bench.bat")
        with open(batch, "w") as stream:
            stream.write(BATCH.format(nx=args.nx, ny=args.ny, iterations=args.iterations))

        start = time.perf_counter()
        for seed in seeds:
            folder = os.path.join(work, "serial", "seed_%d" % seed)
            result = sarvo.run_batch(sarvo.seed_batch(batch, seed, folder), trace_level=1)
            assert result["status"] == 0, result["message"]
        serial = time.perf_counter() - start

        from dask.distributed import Client, LocalCluster

        start = time.perf_counter()
        cluster = LocalCluster(n_workers=args.workers, threads_per_worker=1, processes=True, dashboard_address=None)
        client = Client(cluster)
        client.wait_for_workers(args.workers)
        ready = time.perf_counter()
        results = sarvo.ensemble(batch, seeds, client=client, output_dir=os.path.join(work, "cluster"))
        done = time.perf_counter()
        client.close()
        cluster.close()
        parallel = done - start
        running = done - ready
        assert all(r["status"] == 0 for r in results), [r.get("error") for r in results]
        mean_run = sum(r["summary"]["wall_time"] for r in results) / len(results)

    print("realisations: %d of %d x %d nodes, %d iterations" % (len(seeds), args.nx, args.ny, args.iterations))
    print("one after the other: %.2f s" % serial)
    print("local cluster of %d workers: %.2f s with its start-up, %.2f s once running (mean realisation %.2f s)"
          % (args.workers, parallel, running, mean_run))
    print("speed-up: %.2f with the start-up, %.2f once running" % (serial / parallel, serial / running))


if __name__ == "__main__":
    main()
