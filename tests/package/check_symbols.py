"""check_symbols.py LIBRARY HEADER_FOLDER MACRO NAMESPACE: the library shows what the headers of the
folder mark with the macro, no more.

Weak instantiations of the standard library's templates, over the public types at most, and constants
of public types are let through: the language makes every program that uses them show them.
"""

import pathlib
import re
import subprocess
import sys

library, folder, macro, namespace = sys.argv[1], pathlib.Path(sys.argv[2]), *sys.argv[3:]
public = set()
for header in folder.glob("*.h"):
    text = header.read_text(encoding="utf-8")
    public |= set(re.findall(rf"\b(?:class|struct)\s+{macro}\s+(\w+)", text))
    public |= set(re.findall(rf"^(?:\[\[\w+\]\]\s+)?{macro}\s[^;(]*?(\w+)\(", text, re.MULTILINE))
types = set()
for header in (folder if folder.name == "cqsurvey" else folder.parent).rglob("*.h"):
    types |= set(re.findall(r"\b(?:class|struct|enum)\s+(?:class\s+|CQ[A-Z_]+\s+)?(\w+)",
                            header.read_text(encoding="utf-8")))

output = subprocess.run(
    ["nm", "-D", "--defined-only", "--demangle", library],
    check=True, capture_output=True, text=True).stdout
bad = []
shown = set()
for line in output.splitlines():
    kind, name = re.match(r"[0-9a-f]*\s+(\S)\s+(.*)", line).groups()
    ours = re.match(
        r"(?:(?:vtable|VTT|typeinfo name|typeinfo|guard variable|(?:non-)?virtual thunk) (?:for|to) )?"
        rf"{namespace}::(\w+)", name)
    if ours and ours.group(1) in public:
        shown.add(ours.group(1))
    elif kind in "Vu" and (constant := re.fullmatch(r"cqsurvey::(\w+)::k\w+", name)) \
            and constant.group(1) in types:
        continue
    elif not (kind in "WVu" and re.search(r"(^|\s)(std|__gnu_cxx)::", name)
              and set(re.findall(r"cqsurvey::(?:[a-z]+::)?(\w+)", name)) <= types):
        bad.append(line)
bad += [f"not shown: {name}" for name in sorted(public - shown)]
print("\n".join(bad) or f"{len(shown)} classes and functions")
sys.exit(1 if bad or not shown else 0)
