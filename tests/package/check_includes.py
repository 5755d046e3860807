"""check_includes.py INCLUDE_FOLDER: public headers include each other and standard headers only, and
those of one sub-folder none of another, nor the headers above it theirs."""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
bad = []
headers = sorted(root.rglob("*.h"))
for header in headers:
    for line in header.read_text(encoding="utf-8").splitlines():
        include = re.match(r'\s*#\s*include\s*(<[a-z_]+>|"(cqsurvey/(?:\w+/)?\w+\.h)"|.*)', line)
        if include is None:
            continue
        own = include.group(2)
        standard = include.group(1).startswith("<") and "." not in include.group(1)
        folders = (root / "cqsurvey", header.parent)
        if own and (root / own).is_file() and (root / own).parent in folders:
            continue
        if not (standard and "/" not in include.group(1)):
            bad.append(f"{header}: {line.strip()}")
print("\n".join(bad) or f"{len(headers)} headers")
sys.exit(1 if bad or not headers else 0)
