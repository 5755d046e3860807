"""check_needed.py LIBRARY: it needs SQLite and the C and C++ libraries and has its SONAME."""

import re
import subprocess
import sys

output = subprocess.run(
    ["readelf", "--dynamic", "--wide", sys.argv[1]], check=True, capture_output=True, text=True
).stdout
needed = set(re.findall(r"\(NEEDED\).*\[([^\]]+)\]", output))
soname = re.findall(r"\(SONAME\).*\[([^\]]+)\]", output)
allowed = r"lib(sqlite3|stdc\+\+|m|gcc_s|c)\.so\.\d+|ld-linux.*"
bad = sorted(name for name in needed if not re.fullmatch(allowed, name))
print("needs", *sorted(needed), "SONAME", *soname)
if len(soname) != 1 or not re.fullmatch(r"libcqsurvey\.so\.\d+\.\d+", soname[0]):
    bad.append("its SONAME is not libcqsurvey.so.MAJOR.MINOR")
print("\n".join(bad))
sys.exit(1 if bad else 0)
