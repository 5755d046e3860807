"""compare_read.py CQJOB FILE.dxf...: what `cqjob import` makes of files of other people.

Each file is imported into a new job, and read by ezdxf with all inserted blocks taken apart. Both
must have the same number of points, lines, circles and texts, and the same extents. A file that is
missing is skipped; status 77 says that all were.
"""

import json
import math
import os
import subprocess
import sys
import tempfile

try:
    import ezdxf
except ImportError:
    print("ezdxf is not installed, skipped")
    sys.exit(77)
from ezdxf import path, recover
from ezdxf.entities import LWPolyline
from ezdxf.tools.text import plain_text

LINES = {"LINE", "LWPOLYLINE", "POLYLINE", "ARC", "ELLIPSE", "SPLINE", "LEADER"}


def flatten(entities, in_dimension=False):
    for entity in entities:
        kind = entity.dxftype()
        if kind == "INSERT":
            for attribute in entity.attribs:
                yield attribute, in_dimension
            if entity.block() is None:
                continue
            for one in entity.multi_insert() if entity.mcount > 1 else [entity]:
                yield from flatten(one.virtual_entities(), in_dimension)
        elif kind in ("DIMENSION", "ACAD_TABLE"):
            try:
                yield from flatten(entity.virtual_entities(), True)
            except (AttributeError, TypeError):
                block = entity.doc.blocks.get(entity.dxf.get("geometry"))
                yield from flatten(block or [], True)
        else:
            yield entity, in_dimension


def text_of(entity):
    if entity.dxftype() == "MTEXT":
        return entity.plain_text()
    return plain_text(entity.dxf.text)


class Sum:
    def __init__(self):
        self.counts = {"point": 0, "line": 0, "circle": 0, "text": 0}
        self.low = [math.inf] * 2
        self.high = [-math.inf] * 2

    def widen(self, points):
        for point in points:
            for i in (0, 1):
                self.low[i] = min(self.low[i], point[i])
                self.high[i] = max(self.high[i], point[i])

    def add(self, kind, points):
        self.counts[kind] += 1
        self.widen(points)


def curve(entity):
    return list(path.make_path(entity).flattening(0.0005, segments=32))


def read(name):
    try:
        return ezdxf.readfile(name)
    except (ezdxf.DXFError, UnicodeError):
        return recover.readfile(name)[0]


def of_file(name):
    total = Sum()
    for entity, in_dimension in flatten(read(name).modelspace()):
        kind = entity.dxftype()
        if kind == "POINT":
            if not in_dimension:
                total.add("point", [entity.dxf.location])
        elif kind in ("TEXT", "MTEXT", "ATTRIB"):
            hidden = kind == "ATTRIB" and entity.is_invisible
            if text_of(entity) and not hidden:
                place = entity.dxf.insert
                if kind != "MTEXT" and (entity.dxf.halign or entity.dxf.valign) \
                        and entity.dxf.halign not in (3, 5) and entity.dxf.hasattr("align_point"):
                    place = entity.dxf.align_point
                total.add("text", [entity.ocs().to_wcs(place) if kind != "MTEXT" else place])
        elif kind == "CIRCLE":
            total.add("circle", curve(entity))
        elif kind in LINES:
            if kind == "POLYLINE" and (entity.is_poly_face_mesh or entity.is_polygon_mesh):
                continue
            if kind == "LWPOLYLINE" and len(entity) < 2:
                continue
            if kind == "LEADER":
                total.add("line", entity.vertices)
            else:
                total.add("line", curve(entity))
    return total


def of_job(cqjob, name, folder):
    job = os.path.join(folder, "site.job")
    subprocess.run([cqjob, "new", job], check=True)
    subprocess.run([cqjob, "import", job, name], check=True, stdout=subprocess.DEVNULL)
    answer = subprocess.run([cqjob, "entities", job, "--json"], check=True, capture_output=True)
    os.remove(job)
    total = Sum()
    vertices = []

    def end():
        if vertices:
            line = LWPolyline.new()
            line.append_points(vertices, format="xyb")
            total.add("line", curve(line))
            vertices.clear()

    for entity in json.loads(answer.stdout)["entities"]:
        # A polyline has no place of its own; its vertices have.
        place = (entity.get("easting"), entity.get("northing"))
        kind = entity["type"]
        if kind != "vertex":
            end()
        if kind == "vertex":
            vertices.append((*place, entity["bulge"]))
        elif kind == "circle":
            r = entity["radius"]
            total.add("circle", [(place[0] - r, place[1] - r), (place[0] + r, place[1] + r)])
        elif kind in ("point", "text"):
            total.add(kind, [place])
    end()
    return total


def main(cqjob, names):
    bad = 0
    seen = 0
    for name in names:
        if not os.path.exists(name):
            print(f"{name}: missing, skipped")
            continue
        seen += 1
        with tempfile.TemporaryDirectory() as folder:
            ours, theirs = of_job(cqjob, name, folder), of_file(name)
        far = max(abs(a - b) for a, b in
                  zip(ours.low + ours.high, theirs.low + theirs.high))
        same = ours.counts == theirs.counts and far < 0.003
        print(f"{os.path.basename(name)}: {ours.counts} extents off by {far:.2g}"
              + ("" if same else f"; ezdxf has {theirs.counts}"))
        bad += 0 if same else 1
    return 77 if seen == 0 else 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
