"""Ensembles of realisations on a Dask cluster: one batch run per seed, each in
its own folder, the same code on a local cluster or on an HPC one through
dask_jobqueue (see doc/PYTHON.md)."""

import os
import traceback

from .batch import OUTPUT_KEYWORDS

SEED_KEYWORD = "SIM_SEED"


def _is_path_value(directory, value):
    return value and not os.path.isabs(value) and os.path.exists(os.path.join(directory, value))


def seed_batch(batch, seed, folder):
    """Writes into `folder` a copy of `batch` whose outputs land in `folder`,
    whose inputs still point at the original files, and whose first sequence
    starts from `seed`. Returns the new batch file's path."""
    directory = os.path.dirname(os.path.abspath(batch))
    os.makedirs(folder, exist_ok=True)
    lines = []
    section = None
    seeded = False
    sequences = 0
    with open(batch) as stream:
        for raw in stream:
            line = raw.strip()
            if line.startswith("["):
                if section == "[NEW_SEQ]" and sequences == 1 and not seeded:
                    lines.append("%s = %d" % (SEED_KEYWORD, seed))
                    seeded = True
                section = line
                sequences += line == "[NEW_SEQ]"
                lines.append(line)
                continue
            if "=" not in line or line.startswith("#"):
                lines.append(line)
                continue
            key, value = (part.strip() for part in line.split("=", 1))
            if section == "[GLOBAL]" and key in OUTPUT_KEYWORDS:
                target = value if not os.path.isabs(value) else os.path.basename(value)
                parent = os.path.dirname(os.path.join(folder, target))
                os.makedirs(parent, exist_ok=True)
                value = target
            elif key == SEED_KEYWORD and section == "[NEW_SEQ]" and sequences == 1:
                value = str(seed)
                seeded = True
            elif _is_path_value(directory, value):
                value = os.path.join(directory, value)
            lines.append("%s = %s" % (key, value))
    if section == "[NEW_SEQ]" and sequences == 1 and not seeded:
        lines.append("%s = %d" % (SEED_KEYWORD, seed))
    path = os.path.join(folder, os.path.basename(batch))
    with open(path, "w") as stream:
        stream.write("\n".join(lines) + "\n")
    return path


def realisation(batch, seed):
    """One realisation, run where it is called (a worker of the cluster)."""
    from .batch import run_batch

    try:
        result = run_batch(batch, trace_level=2)
        result["seed"] = seed
        if result["status"] != 0:
            result["error"] = "status %d: %s" % (result["status"], result["message"])
        return result
    except Exception:  # reported with its seed; the other realisations go on
        return {"seed": seed, "status": 1, "error": traceback.format_exc(), "outputs": {}, "summary": {}}


def _package_path():
    return os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def _local_client(workers):
    # Workers are new processes: they must find this package too.
    path = os.environ.get("PYTHONPATH", "")
    if _package_path() not in path.split(os.pathsep):
        os.environ["PYTHONPATH"] = os.pathsep.join(p for p in (_package_path(), path) if p)
    from dask.distributed import Client, LocalCluster

    cluster = LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None)
    return Client(cluster), cluster


def ensemble(batch, seeds, client=None, output_dir=None, workers=None):
    """Runs `batch` once per seed on a Dask cluster and returns one result per
    seed, in the order of `seeds`: {"seed", "status", "outputs", "summary"
    (net_to_gross, facies_proportions, isbx, wall_time), "folder"} and "error"
    for a failed realisation. Without `client`, a local cluster of `workers`
    processes (one per core by default) is started and closed.
    Each realisation writes into `output_dir`/seed_<seed>/ (by default
    <batch name>_ensemble/ beside the batch file)."""
    seeds = [int(seed) for seed in seeds]
    if output_dir is None:
        stem = os.path.splitext(os.path.abspath(batch))[0]
        output_dir = stem + "_ensemble"
    folders = {seed: os.path.join(os.path.abspath(output_dir), "seed_%d" % seed) for seed in seeds}
    batches = [seed_batch(batch, seed, folders[seed]) for seed in seeds]
    own = client is None
    cluster = None
    if own:
        count = workers or min(len(seeds), os.cpu_count() or 1)
        client, cluster = _local_client(max(1, count))
    try:
        futures = client.map(realisation, batches, seeds, pure=False)
        results = []
        for seed, future in zip(seeds, futures):
            try:
                result = future.result()
            except Exception as error:  # the worker itself died
                result = {"seed": seed, "status": 1, "error": repr(error), "outputs": {}, "summary": {}}
            result["folder"] = folders[seed]
            results.append(result)
        return results
    finally:
        if own:
            client.close()
            cluster.close()
