"""compare_written.py CQJOB [FILE.dxf...]: the DXF files that `cqjob export` writes.

A job is made of each FILE that is there; without a FILE, one of everything that a drawing may hold.
Each job is written in every version. ezdxf must find no error in the file and read the same points, polylines,
arcs, circles, texts and layers as the job has; GDAL, when it is installed, must read it; and an
import must make the same job of it.
"""

import json
import math
import os
import shutil
import subprocess
import sys
import tempfile

try:
    import ezdxf
except ImportError:
    print("ezdxf is not installed, skipped")
    sys.exit(77)
from ezdxf import recover

VERSIONS = {"R12": "AC1009", "R2000": "AC1015", "R2018": "AC1032"}
PICTURE = bytes.fromhex(
    "89504e470d0a1a0a0000000d4948445200000004000000020802000000f0caea340000000e49444154789c63f8ff"
    "ff3f0344010061de0bf50000000049454e44ae426082")


def cqjob(program, *arguments, **more):
    done = subprocess.run([program, *arguments], capture_output=True, text=True, **more)
    if done.returncode != 0:
        sys.exit(f"cqjob {' '.join(arguments)}: {done.stdout}{done.stderr}")
    return done.stdout


def make_source(name):
    doc = ezdxf.new("R2018", setup=True)
    doc.header["$INSUNITS"] = 6
    msp = doc.modelspace()
    doc.layers.add("Straße Ωμέγα", color=3, linetype="DASHED")
    doc.layers.add("Off", color=5).off()
    doc.layers.add("Frozen", color=6).freeze()
    on = {"layer": "Straße Ωμέγα"}
    msp.add_lwpolyline([(0, 0, 0.5), (10, 0, -0.25), (10, 10, 0), (0, 10, 1.0)], format="xyb",
                       close=True, dxfattribs={**on, "elevation": 101.25})
    msp.add_lwpolyline([(3000000.125, 200.5, 0), (3000020.25, 230.75, 0)], format="xyb",
                       dxfattribs={"layer": "Off", "color": 1, "linetype": "CENTER"})
    msp.add_polyline3d([(0, 0, 1), (5, 5, 2), (9, 1, 3)], dxfattribs=on)
    msp.add_polyline3d([(0, 0, 1), (5, 5, 2), (9, 1, 3)], close=True)
    msp.add_arc((50, 50, 7), 12.5, 30, 330)
    msp.add_circle((20, 30, 4.5), 6.25, dxfattribs={"layer": "Frozen", "linetype": "DOT"})
    for i, (h, v) in enumerate([(0, 0), (1, 0), (2, 1), (0, 2), (1, 3), (2, 3), (4, 0)]):
        text = msp.add_text(f"höhe {i} 50%%d ^ \\ \u65e5", dxfattribs={
            "height": 1.5, "rotation": 15 * i, "halign": h, "valign": v, "insert": (i, 60),
            "align_point": (i, 60, 2), "style": "OpenSans" if i == 2 else "Standard"})
        text.dxf.color = 40 + i
    msp.add_mtext("first\\Psecond {\\fArial|b1;bold} %%d\\Pthird", dxfattribs={
        "insert": (70, 70, 1), "char_height": 2, "attachment_point": 5, "rotation": 20})
    msp.add_text("hidden", dxfattribs={"invisible": 1, "height": 1, "insert": (1, 2)})
    doc.saveas(name)


def make_job(program, folder):
    job = os.path.join(folder, "all.job")
    source = os.path.join(folder, "source.dxf")
    make_source(source)
    cqjob(program, "new", job)
    cqjob(program, "import", job, source)
    cqjob(program, "import", job, "-", "--order", "penzcd", "--group", "Netz Ä", input=(
        "P1,100.125,200.25,12.5,7,Schacht é\nP2,101,201,,0,\nP 3,3000001.5,199.75,0,-4,a%%b \\P {x}\n"
        ",1,2,3,0,unnamed\n"))
    picture = os.path.join(folder, "ortho.png")
    with open(picture, "wb") as file:
        file.write(PICTURE)
    cqjob(program, "image", "store", job, picture, "--east", "50", "--north", "60", "--width",
          "40", "--height", "20")
    return job


def entities(program, job):
    read = json.loads(cqjob(program, "entities", job, "--json"))["entities"]
    for entity in read:
        for key in ("handle", "pline", "point"):
            entity.pop(key, None)
    return read


def layers(program, job):
    return json.loads(cqjob(program, "layers", "list", job, "--json"))


def points(program, job):
    read = json.loads(cqjob(program, "points", job, "--json"))["points"]
    for point in read:
        for key in ("handle", "record", "time", "recorded", "entity"):
            point.pop(key, None)
    return read


def lines_of_job(read):
    lines = []
    for entity in read:
        if entity["type"] == "pline":
            lines.append((entity["layer"], []))
        elif entity["type"] == "vertex":
            lines[-1][1].append((entity["easting"], entity["northing"], entity["height"] or 0.0,
                                 entity["bulge"]))
    return [(layer, tuple(vertices)) for layer, vertices in lines]


def lines_of_file(msp):
    lines = []
    for entity in msp.query("LWPOLYLINE POLYLINE"):
        if entity.dxftype() == "LWPOLYLINE":
            z = entity.dxf.elevation
            vertices = [(x, y, z, b) for x, y, b in entity.get_points("xyb")]
        else:
            vertices = [(*v.dxf.location, v.dxf.get("bulge", 0.0)) for v in entity.vertices]
        if entity.is_closed:
            vertices.append((*vertices[0][:3], 0.0))
        lines.append((entity.dxf.layer, tuple(vertices)))
    return lines


def expect(what, ours, theirs):
    if ours != theirs:
        for a, b in zip(ours, theirs):
            if a != b:
                sys.exit(f"{what}: the job has {a}, the file {b}")
        sys.exit(f"{what}: the job has {len(ours)}, the file {len(theirs)}")


def without_last_bulge(lines):
    # The bulge of a last vertex curves nothing.
    return [(layer, v[:-1] + ((*v[-1][:3], 0.0),)) for layer, v in lines]


def compare(program, job, name, version, plain):
    # Only the recovering reader knows \\U+XXXX, which the older versions need.
    doc, found = (ezdxf.readfile(name), None) if version == "R2018" else recover.readfile(name)
    found = found or doc.audit()
    if found.errors or found.fixes:
        sys.exit(f"{name}: " + "; ".join(f"{e.code} {e.message}" for e in found.errors + found.fixes))
    if doc.dxfversion != VERSIONS[version]:
        sys.exit(f"{name}: is {doc.dxfversion}")
    msp = doc.modelspace()
    read = entities(program, job)
    if plain:
        expect("polylines", without_last_bulge(lines_of_job(read)), lines_of_file(msp))
    expect("circles", [(e["layer"], e["easting"], e["northing"], e["radius"]) for e in read
                       if e["type"] == "circle"],
           [(e.dxf.layer, e.dxf.center.x, e.dxf.center.y, e.dxf.radius)
            for e in msp.query("CIRCLE")])
    if plain and version != "R12":
        expect("texts", [(e["layer"], e["easting"], e["northing"], e["text"], e["color"])
                         for e in read if e["type"] == "text"],
               [(e.dxf.layer, e.dxf.insert.x, e.dxf.insert.y,
                 e.plain_text().replace("\x00", ""), e.dxf.get("color", 256))
                for e in msp.query("TEXT MTEXT")])
    expect("points", [(e["layer"], e["easting"], e["northing"], e["height"] or 0.0, e["name"])
                      for e in read if e["type"] == "point"],
           [(e.dxf.layer, *e.dxf.insert, e.get_attrib_text("NAME")) for e in msp.query("INSERT")])
    expect("layers", sorted((l["name"], l["color"], l["shown"])
                            for l in layers(program, job)["layers"]) if plain else [],
           sorted((l.dxf.name, l.color, l.is_on()) for l in doc.layers) if plain else [])
    return doc


def main(program, names):
    with tempfile.TemporaryDirectory() as folder:
        jobs = [] if names else [(make_job(program, folder), True)]
        for name in names:
            if os.path.exists(name):
                job = os.path.join(folder, os.path.basename(name) + ".job")
                cqjob(program, "new", job)
                cqjob(program, "import", job, name, "--fills")
                jobs.append((job, False))
        if not jobs:
            print("the files are missing, skipped")
            return 77
        for job, plain in jobs:
            for version in VERSIONS:
                written = os.path.join(folder, "written.dxf")
                report = json.loads(cqjob(program, "export", job, written, "--version", version,
                                          "--unit", "m", "--force", "--json"))
                doc = compare(program, job, written, version, plain)
                if plain and version != "R12":
                    image = doc.modelspace().query("IMAGE").first
                    low = min(v.x for v in image.boundary_path_wcs()), \
                        min(v.y for v in image.boundary_path_wcs())
                    if not (math.isclose(low[0], 30) and math.isclose(low[1], 50)):
                        sys.exit(f"{written}: the image's corner is {low}")
                    if not os.path.exists(os.path.join(folder, image.image_def.dxf.filename)):
                        sys.exit(f"{written}: there is no {image.image_def.dxf.filename}")
                back = os.path.join(folder, "back.job")
                cqjob(program, "new", back, "--force")
                cqjob(program, "import", back, written, "--unit", "m")
                exact = version != "R12" or not plain
                if exact and report["left_out"] == 0 and report["converted"] == 0:
                    expect(f"{job} {version} entities", entities(program, job),
                           entities(program, back))
                    expect("points", points(program, job), points(program, back))
                    expect("layers", layers(program, job)["layers"],
                           layers(program, back)["layers"])
                if shutil.which("ogrinfo"):
                    subprocess.run(["ogrinfo", "-q", "-so", written, "entities"], check=True,
                                   stdout=subprocess.DEVNULL)
                print(f"{os.path.basename(job)} {version}: {report['entities']} entities, "
                      f"{report['converted']} converted, {report['left_out']} left out")
                os.remove(written)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
