"""compare.py CQJOB ORDER.xsd [FILE.xml...]: LandXML files as `cqjob` reads and writes them.

A small file with everything, and each FILE that is there, is read with Python's own XML reader and
imported into a job. The report must account for each element that is no container and no part of
another, as often as the file has it; each point must be in the job where the file has it; each line
and curve must join two vertices of one polyline that follow each other. The job is then exported:
the file must have the published order (xmllint with ORDER.xsd), and an import of it must make the
same job.
"""

import collections
import json
import os
import shutil
import subprocess
import sys
import tempfile
from xml.etree import ElementTree

STRUCTURE = {"LandXML", "Units", "CgPoints", "PlanFeatures", "Alignments", "Parcels", "CoordGeom"}
PARTS = {"Line": {"Start", "End"}, "Curve": {"Start", "End", "Center", "PI"},
         "Spiral": {"Start", "End", "PI"}, "PlanFeature": {"Location"}, "Parcel": {"Center"},
         "Alignment": {"Start"}}
SURFACES = {"Surfaces", "Surface", "Definition", "Pnts", "SourceData"}

SAMPLE = """<?xml version="1.0" encoding="windows-1252"?>
<LandXML xmlns="http://www.landxml.org/schema/LandXML-1.2" version="1.2" date="2026-01-01" time="00:00:00">
<Units><Metric linearUnit="meter"/></Units><CoordinateSystem epsgCode="28356"/>
<CgPoints name="Stra\xdfe"><CgPoint name="A" code="7" desc="a &lt;stone&gt;">6258000.5 334000.25 12.125</CgPoint>
<CgPoint name="B">6258010.5 334000.25</CgPoint></CgPoints>
<PlanFeatures><PlanFeature name="Wall"><CoordGeom><Line><Start pntRef="A"/><End pntRef="B"/></Line>
<Curve rot="cw" radius="10"><Start pntRef="B"/><End>6258020.5 334010.25</End></Curve></CoordGeom>
</PlanFeature></PlanFeatures>
<Parcels><Parcel name="1/DP7"><Center>6258002 334003</Center><CoordGeom>
<Line><Start>6258000 334000</Start><End>6258000 334008</End></Line>
<Line><Start>6258000 334008</Start><End>6258006 334008</End></Line>
<Line><Start>6258006 334008</Start><End>6258000 334000</End></Line></CoordGeom></Parcel></Parcels>
</LandXML>
""".encode("latin-1")


def cqjob(*arguments):
    done = subprocess.run([sys.argv[1], *arguments], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"cqjob {' '.join(arguments)}: {done.stdout}{done.stderr}")
    return done.stdout


def name_of(element):
    return element.tag.split("}")[-1]


def place_of(element, points):
    numbers = [float(word) for word in (element.text or "").split()]
    if not numbers:
        return points[element.get("pntRef")]
    return (numbers[1], numbers[0], numbers[2] if len(numbers) > 2 else None)


def count_elements(root):
    """How often each kind is there that the report must account for."""
    counts = collections.Counter()

    def visit(element, around, left_out):
        for child in element:
            name = name_of(child)
            out = left_out or (name not in STRUCTURE | SURFACES | {
                "PlanFeature", "Parcel", "Alignment", "CgPoint"} and name not in PARTS
                and name not in PARTS.get(around, ()))
            part = not left_out and (name in STRUCTURE | SURFACES or name in PARTS.get(around, ()))
            counts[name] += 0 if part else 1
            visit(child, name, out and name != "Units")

    visit(root, "LandXML", False)
    return +counts


def entities_of(job):
    return json.loads(cqjob("entities", job, "--json"))["entities"]


def paths_of(entities):
    paths = []
    for entity in entities:
        if entity["type"] == "pline":
            paths.append([])
        elif entity["type"] == "vertex":
            paths[-1].append((entity["easting"], entity["northing"], entity["height"]))
    return paths


def compare_read(text, report, entities):
    root = ElementTree.fromstring(text)
    reported = collections.Counter()
    for row in report["rows"]:
        reported[row["kind"]] += row["count"]
    expected = count_elements(root)
    if reported != expected:
        sys.exit(f"the report counts {reported - expected} too many, {expected - reported} too few")

    points = {}
    for element in root.iter():
        if name_of(element) == "CgPoint" and (element.text or "").strip():
            points.setdefault(element.get("name"), place_of(element, points))
    recorded = {entity["name"]: (entity["easting"], entity["northing"], entity["height"])
                for entity in entities if entity["type"] == "point"}
    if recorded != points:
        sys.exit("points differ: " + str(set(recorded.items()) ^ set(points.items()))[:500])

    joined = set()
    for path in paths_of(entities):
        for p, q in zip(path, path[1:]):
            joined |= {(p[:2], q[:2]), (q[:2], p[:2])}
    segments = 0
    for element in root.iter():
        if name_of(element) in ("Line", "Curve"):
            ends = {name_of(child): place_of(child, points) for child in element}
            if (ends["Start"][:2], ends["End"][:2]) not in joined:
                sys.exit(f"no polyline goes from {ends['Start']} to {ends['End']}")
            segments += 1
    print(f"  {len(points)} points, {segments} lines and curves, {sum(expected.values())} elements")


def compare_written(job, folder):
    written = os.path.join(folder, "written.xml")
    cqjob("export", job, written, "--force")
    done = subprocess.run(["xmllint", "--noout", "--schema", sys.argv[2], written],
                          capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"the written file has not the published order: {done.stderr[:1000]}")
    back = os.path.join(folder, "back.job")
    cqjob("new", back)
    report = json.loads(cqjob("import", back, written, "--json"))
    kept = ("type", "layer", "color", "easting", "northing", "height", "name", "code", "line",
            "text", "radius", "rotation")
    list_of = [[{key: entity.get(key) for key in kept} for entity in entities_of(each)
                if (entity["type"] == "point") == points]
               for each in (job, back) for points in (True, False)]
    if list_of[:2] != list_of[2:]:
        for before, after in zip(sum(list_of[:2], []), sum(list_of[2:], [])):
            if before != after:
                sys.exit(f"the job comes back changed: {before} as {after}")
        sys.exit("the job comes back changed")
    bulges = [[entity.get("bulge", 0.0) for entity in entities_of(each)
               if entity["type"] == "vertex"] for each in (job, back)]
    if any(abs(a - b) > 1e-9 * max(1.0, abs(a)) for a, b in zip(*bulges)):
        sys.exit("an arc comes back changed")
    print(f"  written and read back: {report['entities']} elements")


def main():
    if shutil.which("xmllint") is None:
        print("xmllint is not installed, skipped")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder:
        sample = os.path.join(folder, "sample.xml")
        with open(sample, "wb") as file:
            file.write(SAMPLE)
        if len(sys.argv) == 3:
            print("no files of others are there; only the sample is compared")
        for path in [sample, *sys.argv[3:]]:
            print(os.path.basename(path))
            for name in ("read.job", "back.job"):
                if os.path.exists(os.path.join(folder, name)):
                    os.remove(os.path.join(folder, name))
            job = os.path.join(folder, "read.job")
            cqjob("new", job)
            report = json.loads(cqjob("import", job, path, "--json"))
            with open(path, "rb") as file:
                compare_read(file.read(), report, entities_of(job))
            compare_written(job, folder)


main()
