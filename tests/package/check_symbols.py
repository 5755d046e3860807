"""check_symbols.py LIBRARY INCLUDE_FOLDER: the library shows what its public headers mark, no more.

Weak instantiations of the standard library's templates, over the public classes at most, are let
through: the language makes every program that uses them show them.
"""

import pathlib
import re
import subprocess
import sys

library, include = sys.argv[1], pathlib.Path(sys.argv[2])
public = set()
for header in include.rglob("*.h"):
    text = header.read_text(encoding="utf-8")
    public |= set(re.findall(r"\b(?:class|struct)\s+CQSURVEY_API\s+(\w+)", text))
    public |= set(re.findall(r"^CQSURVEY_API\s[^;(]*?(\w+)\(", text, re.MULTILINE))

output = subprocess.run(
    ["nm", "-D", "--defined-only", "--demangle", library],
    check=True, capture_output=True, text=True).stdout
bad = []
shown = set()
for line in output.splitlines():
    kind, name = re.match(r"[0-9a-f]*\s+(\S)\s+(.*)", line).groups()
    ours = re.match(
        r"(?:(?:vtable|VTT|typeinfo name|typeinfo|guard variable|(?:non-)?virtual thunk) (?:for|to) )?"
        r"cqsurvey::(\w+)", name)
    if ours and ours.group(1) in public:
        shown.add(ours.group(1))
    elif not (kind in "WVu" and re.search(r"(^|\s)(std|__gnu_cxx)::", name)
              and set(re.findall(r"cqsurvey::(\w+)", name)) <= public):
        bad.append(line)
bad += [f"not shown: {name}" for name in sorted(public - shown)]
print("\n".join(bad) or f"{len(shown)} classes and functions")
sys.exit(1 if bad or not shown else 0)
