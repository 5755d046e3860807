"""check_layers.py SOURCE_FOLDER: includes point downward only.

Each folder of src/ may include itself, the folders below it and the public headers that speak of
nothing above it. The two libraries beside the core, and the programs, see public headers only, and
the one that has the calls of the system.
"""

import pathlib
import re
import sys

# From the bottom up; folders of one row do not include each other.
CORE = [["platform"], ["store"], ["tables"], ["index"], ["job"], ["points", "drawing", "settings"]]
OUTSIDE = {"src/text": "text", "src/exchange": "exchange", "src/plan": "plan", "apps": None, "integrations": None}
# Public headers of the job as a whole: what is below the job knows nothing of them.
FACADE = {"cqsurvey.h", "CqSurveyDB.h", "CqBatch.h", "CqJobCheck.h", "CqDrawnList.h", "CqImagePlace.h", "CqJobCodes.h", "CqJobIdentity.h", "CqJobRepair.h", "CqJobSystem.h", "CqJobTitle.h", "Ranges.h", "CqCadEntityPtr.h"}

SYSTEM = "platform/System.h"

root = pathlib.Path(sys.argv[1])
height = {folder: level for level, row in enumerate(CORE) for folder in row}
bad = []
seen = 0


def includes(path):
    for line in path.read_text(encoding="utf-8").splitlines():
        found = re.match(r'\s*#\s*include\s*["<]([\w.]+(?:/[\w.]+)+)[">]', line)
        if found:
            yield found.group(1)


def sources(folder):
    return sorted(p for p in folder.rglob("*") if p.suffix in (".h", ".cpp"))


for folder, level in height.items():
    for path in sources(root / "src" / folder):
        for name in includes(path):
            seen += 1
            first, last = name.split("/")[0], name.split("/")[-1]
            if first == "cqsurvey":
                if name.count("/") > 1 or (last in FACADE and level < height["job"]):
                    bad.append(f"{path}: {name} stands above src/{folder}")
            elif first in height:
                if height[first] > level or (height[first] == level and first != folder):
                    bad.append(f"{path}: {name} is not below src/{folder}")
            elif first in ("text", "exchange", "plan", "cqjob"):
                bad.append(f"{path}: {name} stands above src/{folder}")

for folder, own in OUTSIDE.items():
    for path in sources(root / folder):
        for name in includes(path):
            seen += 1
            first = name.split("/")[0]
            if (first in height and name != SYSTEM) or (first in ("exchange", "plan") and first != own):
                bad.append(f"{path}: {name} is no public header")
            other = {"exchange": "plan", "plan": "exchange"}.get(own)
            if other and name.startswith(f"cqsurvey/{other}/"):
                bad.append(f"{path}: {name} belongs to a library beside it")

for path in sources(root / "include"):
    for name in includes(path):
        seen += 1
        if name.split("/")[0] in height:
            bad.append(f"{path}: {name} is no public header")

unknown = {p.name for p in (root / "src").iterdir() if p.is_dir()} - set(height) - {"text", "exchange", "plan"}
bad += [f"src/{name} has no place in the order" for name in sorted(unknown)]
print("\n".join(bad) or f"{seen} includes point downward")
sys.exit(1 if bad or not seen else 0)
