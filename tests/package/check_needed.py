"""check_needed.py LIBRARY NAME...: it needs the C and C++ libraries and the named ones alone, and
its SONAME is its name with MAJOR.MINOR. A plugin, which is not called lib..., has none."""

import pathlib
import re
import subprocess
import sys

library, names = sys.argv[1], sys.argv[2:]
output = subprocess.run(
    ["readelf", "--dynamic", "--wide", library], check=True, capture_output=True, text=True
).stdout
needed = set(re.findall(r"\(NEEDED\).*\[([^\]]+)\]", output))
soname = re.findall(r"\(SONAME\).*\[([^\]]+)\]", output)
allowed = "|".join([r"stdc\+\+", "m", "gcc_s", "c", *map(re.escape, names)])
bad = sorted(name for name in needed
             if not re.fullmatch(rf"lib({allowed})\.so(\.\d+)+|ld-linux.*", name))
print("needs", *sorted(needed), "SONAME", *soname)
own = re.escape(pathlib.Path(library).name.split(".")[0])
plugin = not pathlib.Path(library).name.startswith("lib")
if plugin:
    if soname:
        bad.append("a plugin has no SONAME")
elif len(soname) != 1 or not re.fullmatch(rf"{own}\.so\.\d+\.\d+", soname[0]):
    bad.append("its SONAME is not its name with MAJOR.MINOR")
print("\n".join(bad))
sys.exit(1 if bad else 0)
