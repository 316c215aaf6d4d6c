"""Follows the front page as a reader would: writes the files of its example bundle
into a folder and runs the commands that compile it, with that folder as home.

    build_readme_effect.py README FOLDER"""

import os
import pathlib
import re
import subprocess
import sys

page = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
folder = pathlib.Path(sys.argv[2])
folder.mkdir(parents=True, exist_ok=True)

# A file is named in front of its text; the commands follow "Compile it".
files = re.findall(r"`([\w.]+)`, [^`]*:\n\n```\w+\n(.*?)```", page, re.DOTALL)
commands, = re.findall(r"\nCompile it [^`]*:\n\n```sh\n(.*?)```", page, re.DOTALL)
for name, text in files:
    (folder / name).write_text(text, encoding="utf-8")
subprocess.run(["sh", "-e", "-c", commands], cwd=folder, env={**os.environ, "HOME": str(folder)},
               check=True)
