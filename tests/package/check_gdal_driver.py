"""check_gdal_driver.py CQJOB PLUGINS DRAW_SAMPLE POINTS: the installed driver in GDAL's own programs.

The sample survey goes to a GeoPackage and back with cqjob, and with ogr2ogr.
"""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

cqjob, plugins, draw_sample, points = sys.argv[1:]
if not shutil.which("ogr2ogr"):
    print("ogr2ogr is not there")
    sys.exit(77)
environment = {key: value for key, value in os.environ.items() if key != "GDAL_DRIVER_PATH"}


def run(*words, status=0, **variables):
    done = subprocess.run(
        words, capture_output=True, encoding="utf-8", env={**environment, **variables}, check=False
    )
    if done.returncode != status:
        sys.exit(f"{words}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout + done.stderr


def contents(job):
    """Everything but handles, and the order of entities of different kinds."""
    entities = run(cqjob, "entities", job).splitlines()
    image = job + ".image"
    run(cqjob, "image", "fetch", job, image, "--force")
    return (
        run(cqjob, "layers", "list", job),
        run(cqjob, "image", "info", job),
        hashlib.sha256(pathlib.Path(image).read_bytes()).hexdigest(),
        run(cqjob, "export", job, "-", "--all-columns"),
        sorted(re.sub(r" (of|tied to) \d+", r" \1", " ".join(line.split()[1:])) for line in entities),
        run(cqjob, "check", job).split(",")[-1],
    )


def same(a, b):
    for one, other in zip(contents(a), contents(b)):
        if one != other:
            sys.exit(f"{b} is not the same as {a}:\n{one}\n{other}")


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    site, back, third = (str(folder / job) for job in ("site.job", "back.job", "third.job"))
    run(cqjob, "new", site, "--crs", "EPSG:32633")
    run(cqjob, "import", site, points, "--order", "pnezd")
    run(draw_sample, site)
    picture = pathlib.Path(__file__).resolve().parents[2] / "docs" / "gis.png"
    run(cqjob, "image", "store", site, str(picture), *"--east 2000.125 --north 5000.25".split(),
        *"--width 120 --height 80".split())
    before = hashlib.sha256(pathlib.Path(site).read_bytes()).hexdigest()

    package = str(folder / "site.gpkg")
    run(cqjob, "export", site, package)
    assert "already exists" in run(cqjob, "export", site, package, status=1)
    run(cqjob, "export", site, package, "--force")
    run(cqjob, "new", back)
    run(cqjob, "import", back, package)
    same(site, back)
    # A second time every name is there already, and nothing is recorded.
    kept = pathlib.Path(back).read_bytes()
    assert "has a point" in run(cqjob, "import", back, package, status=1)
    assert pathlib.Path(back).read_bytes() == kept

    tables = "layers groups settings points polylines vertices texts circles bitmaps background"
    run("ogr2ogr", "-q", "-f", "CqSurvey", third, package, *tables.split(), GDAL_DRIVER_PATH=plugins)
    same(site, third)
    # What else is in the file comes after the job.
    parcels = folder / "parcels.csv"
    parcels.write_text("WKT,owner\n\"LINESTRING (0 0,9 9)\",Smith\n")
    run("ogr2ogr", "-q", "-update", package, str(parcels), "-nln", "Plots (old)")
    more = str(folder / "more.job")
    run(cqjob, "new", more)
    run(cqjob, "import", more, package)
    assert "Plots (old)" in run(cqjob, "layers", "list", more)
    listed = run("ogrinfo", "-ro", site, GDAL_DRIVER_PATH=plugins)
    assert "using driver `CqSurvey'" in listed, listed
    # Neither this driver nor another one overwrites a job.
    run("ogr2ogr", "-f", "CqSurvey", site, package, status=1, GDAL_DRIVER_PATH=plugins)
    run("ogr2ogr", "-f", "GPKG", site, package, status=1, GDAL_DRIVER_PATH=plugins)

    assert "its driver for jobs" in run(
        cqjob, "export", site, str(folder / "x.gpkg"), status=1, GDAL_DRIVER_PATH=name
    )
    assert "apt-get install gdal-bin" in run(
        cqjob, "export", site, str(folder / "x.gpkg"), status=1, PATH=name
    )
    assert hashlib.sha256(pathlib.Path(site).read_bytes()).hexdigest() == before
    assert not list(folder.glob("*.new-*")) and not (folder / "x.gpkg").exists()
print("the sample went through GeoPackages and came back the same")
