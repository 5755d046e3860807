"""compare_written.py CQJOB: the GeoJSON and KML files that `cqjob export` writes, as GDAL reads them.

A job of points, lines, arcs, a circle and a text is exported. GDAL must read as many features as the
job has entities, and when it takes their positions back into the job's system, they must be where
the job has them. Python's reader of JSON must read the GeoJSON file, and its positions must be in
the order of RFC 7946.
"""

import csv
import io
import json
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile

NEAR = 1e-5  # metres: eleven decimals of a degree, and the way there and back

PLAN = """<LandXML xmlns="http://www.landxml.org/schema/LandXML-1.2" version="1.2">
<Units><Metric linearUnit="meter"/></Units><CoordinateSystem epsgCode="28356"/>
<CgPoints name="Straße"><CgPoint name="A &amp; &quot;B&quot;" code="7" desc="a stone">6258000.5 334000.25 12.125</CgPoint>
<CgPoint name="flat">6258010.5 334000.25</CgPoint></CgPoints>
<PlanFeatures><PlanFeature name="Wall &lt;x&gt;"><CoordGeom><Line><Start>6258000 334000 1</Start>
<End>6258000 334010 2</End></Line></CoordGeom></PlanFeature>
<PlanFeature name="Kerb"><CoordGeom><Curve rot="cw" radius="10"><Start>6258010 334000</Start>
<End>6258020 334010</End></Curve></CoordGeom></PlanFeature></PlanFeatures>
<Parcels><Parcel name="1/DP7"><Center>6258002 334003</Center><CoordGeom>
<Line><Start>6258000 334000</Start><End>6258000 334008</End></Line>
<Line><Start>6258000 334008</Start><End>6258006 334008</End></Line>
<Line><Start>6258006 334008</Start><End>6258000 334000</End></Line></CoordGeom></Parcel></Parcels>
</LandXML>
"""


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}: {done.stdout}{done.stderr}")
    return done.stdout


def shapes_of(path):
    """The shapes of a file in the job's system, as lists of places."""
    table = run("ogr2ogr", "-f", "CSV", "/vsistdout/", path, "-t_srs", "EPSG:28356", "-lco",
                "GEOMETRY=AS_WKT", "-lco", "SEPARATOR=TAB")
    shapes = []
    for row in csv.DictReader(io.StringIO(table), delimiter="\t"):
        places = re.search(r"\((.*)\)", row["WKT"]).group(1).split(",")
        shapes.append([[float(number) for number in place.split()] for place in places])
    return shapes


def layers_of(path):
    return [line.split(": ", 1)[1].strip() for line in run("ogrinfo", "-q", path).splitlines()]


def expected(cqjob, job):
    """The shapes of the job: the places of points and texts, and the vertices of lines."""
    shapes = []
    for entity in json.loads(run(cqjob, "entities", job, "--json"))["entities"]:
        if entity["type"] == "pline":
            shapes.append([])
            continue
        place = [entity["easting"], entity["northing"]]
        if entity["height"] is not None:
            place.append(entity["height"])
        if entity["type"] == "vertex":
            shapes[-1].append(place)
        else:
            shapes.append([place])
    return shapes


def is_same(shape, wanted):
    """The shape goes through all the places wanted, in order; an arc has more between them."""
    rest = iter(shape)
    return all(any(len(at) == len(place) and math.dist(at, place) < NEAR for at in rest)
               for place in wanted) and math.dist(shape[-1], wanted[-1]) < NEAR


def compare(name, shapes, wanted):
    if len(shapes) != len(wanted):
        sys.exit(f"{name}: {len(shapes)} features for {len(wanted)} entities")
    for place in wanted:
        if not any(is_same(shape, place) for shape in shapes):
            sys.exit(f"{name}: nothing lies at {place}: {shapes}")
    print(f"{name}: {len(shapes)} features as GDAL reads them")


def main():
    cqjob = sys.argv[1]
    if shutil.which("ogr2ogr") is None or shutil.which("ogrinfo") is None:
        print("GDAL is not installed, skipped")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder:
        plan, job = os.path.join(folder, "plan.xml"), os.path.join(folder, "plan.job")
        with open(plan, "w", encoding="utf-8") as file:
            file.write(PLAN)
        run(cqjob, "new", job)
        run(cqjob, "import", job, plan)
        wanted = expected(cqjob, job)
        geojson, kml = os.path.join(folder, "plan.geojson"), os.path.join(folder, "plan.kml")
        run(cqjob, "export", job, geojson)
        run(cqjob, "export", job, kml)
        compare("GeoJSON", shapes_of(geojson), wanted)
        with open(geojson, encoding="utf-8") as file:
            collection = json.load(file)
        first = collection["features"][0]
        longitude, latitude, height = first["geometry"]["coordinates"]
        if not (151 < longitude < 152 and -34 < latitude < -33 and height == 12.125):
            sys.exit(f"GeoJSON: a position is {first['geometry']['coordinates']}")
        if first["properties"] != {"kind": "point", "layer": "0", "code": 7, "name": 'A & "B"',
                                   "group": "Straße", "description": "a stone"}:
            sys.exit(f"GeoJSON: the properties of a point are {first['properties']}")
        layers = layers_of(kml)
        if {layer.split(" (")[0] for layer in layers} != {"0", "Wall <x>", "Kerb", "Parcels",
                                                          "Parcel numbers"}:
            sys.exit(f"KML: the folders are {layers}")
        shapes = []
        for layer in layers:
            own = os.path.join(folder, "one.geojson")
            run("ogr2ogr", "-f", "GeoJSON", own, kml, layer.split(" (")[0], "-lco",
                "COORDINATE_PRECISION=12")
            shapes += shapes_of(own)
            os.remove(own)
        # The reader of KML gives places without a height the height 0.
        compare("KML", [[place[:2] for place in shape] for shape in shapes],
                [[place[:2] for place in shape] for shape in wanted])


main()
