"""Writes source files in bundles for clang-tidy, which spends most of its time on the headers that each file includes.

usage: lint_bundles.py COMPILE_COMMANDS OUTPUT

A bundle includes the copies of several files. In a copy the namespace of the file ends in one of its own, so that the helpers
of two files may have the same name; every line keeps its number. Tests, benchmarks, sections of the gallery and commands
define nothing that others call, which is why this works for them. OUTPUT gets a compile_commands.json; the names of the
bundles go to the standard output.
"""

import json
import pathlib
import re
import sys

FILES_PER_BUNDLE = 12

# Files that are compiled alike, and what of them lies elsewhere.
GROUPS = {
    "tests": ("tests/**/*Test.cpp", None),
    "benchmarks": ("benchmarks/*/*.cpp", "benchmarks/support/*.cpp"),
    "sections": ("docs/gallery/sections/*.cpp", None),
    "commands": ("apps/morvane/commands/*.cpp", None),
}


def nested(text, name):
    """The text with all that it defines moved into the namespace `name` within its own."""
    opening = re.search(r"^namespace\b.*$", text, re.MULTILINE)
    if opening is None:
        raise ValueError("no namespace")
    before, line, after = text[: opening.start()], opening.group(), text[opening.end() :]
    if re.fullmatch(r"namespace (morvane|gallery|program)[A-Za-z_:]*", line):
        return f"{before}{line}::{name}{after}"
    return f"{before}namespace {name} {{ {line}{after}}} // namespace {name}\n"


def write_bundles(group, files, root, output, entries):
    """Writes the bundles of some files; their entries for a compile_commands.json."""
    commands = []
    # Every n-th file: the long ones of a folder spread over the bundles.
    count = -(-len(files) // FILES_PER_BUNDLE)
    for number in range(count):
        lines = []
        for file in files[number::count]:
            copy = output / file.relative_to(root)
            copy.parent.mkdir(parents=True, exist_ok=True)
            name = "of_" + re.sub(r"\W", "_", str(file.relative_to(root).with_suffix("")))
            copy.write_text(nested(file.read_text(encoding="utf-8"), name), encoding="utf-8")
            lines.append(f'#include "{copy.relative_to(output)}"\n')
        bundle = output / f"{group}_{number}.cpp"
        bundle.write_text("".join(lines), encoding="utf-8")
        like = entries[files[0]]
        command = like["command"].replace(str(files[0]), str(bundle))
        # What a file finds beside itself.
        command = command.replace(" -c ", f" -I{files[0].parent} -I{files[0].parent.parent} -c ")
        commands.append({"directory": like["directory"], "command": command, "file": str(bundle)})
    return commands


def main(database, output):
    root = pathlib.Path(__file__).resolve().parent.parent
    output = pathlib.Path(output).resolve()
    with open(database, encoding="utf-8") as stream:
        entries = {pathlib.Path(entry["file"]): entry for entry in json.load(stream)}
    commands = []
    for group, (pattern, elsewhere) in GROUPS.items():
        files = sorted(file for file in entries if file.match(pattern) and not (elsewhere and file.match(elsewhere)))
        if not files:
            raise SystemExit(f"no {group} in {database}")
        commands += write_bundles(group, files, root, output, entries)
    (output / "compile_commands.json").write_text(json.dumps(commands, indent=1), encoding="utf-8")
    for command in commands:
        print(command["file"])


if __name__ == "__main__":
    main(*sys.argv[1:])
