"""Writes the tests in bundles for clang-tidy, which spends most of its time on the headers that each file includes.

usage: lint_bundles.py COMPILE_COMMANDS OUTPUT

A bundle includes the copies of several test files. In a copy the namespace of the file ends in one of its own, so that the
helpers of two files may have the same name; every line keeps its number. Test files define nothing that others call, which
is why this works for them alone. OUTPUT gets a compile_commands.json; the bundles' names go to the standard output.
"""

import json
import pathlib
import re
import sys

FILES_PER_BUNDLE = 12


def nested(text, name):
    """The text with all that it defines moved into the namespace `name` within its own."""
    opening = re.search(r"^namespace\b.*$", text, re.MULTILINE)
    if opening is None:
        raise ValueError("no namespace")
    before, line, after = text[: opening.start()], opening.group(), text[opening.end() :]
    if re.fullmatch(r"namespace morvane[a-z_:]*", line):
        return f"{before}{line}::{name}{after}"
    return f"{before}namespace {name} {{ {line}{after}}} // namespace {name}\n"


def main(database, output):
    root = pathlib.Path(__file__).resolve().parent.parent
    output = pathlib.Path(output).resolve()
    with open(database, encoding="utf-8") as stream:
        entries = {pathlib.Path(entry["file"]): entry for entry in json.load(stream)}
    tests = sorted(file for file in entries if file.match("tests/**/*Test.cpp"))
    if not tests:
        raise SystemExit(f"no tests in {database}")

    commands = []
    # Every n-th file: the long ones of a folder spread over the bundles.
    count = -(-len(tests) // FILES_PER_BUNDLE)
    for number in range(count):
        lines = []
        for file in tests[number::count]:
            copy = output / file.relative_to(root)
            copy.parent.mkdir(parents=True, exist_ok=True)
            name = "of_" + re.sub(r"\W", "_", str(file.relative_to(root).with_suffix("")))
            copy.write_text(nested(file.read_text(encoding="utf-8"), name), encoding="utf-8")
            lines.append(f'#include "{copy.relative_to(output)}"\n')
        bundle = output / f"bundle_{number}.cpp"
        bundle.write_text("".join(lines), encoding="utf-8")
        like = entries[tests[0]]
        command = like["command"].replace(str(tests[0]), str(bundle))
        commands.append({"directory": like["directory"], "command": command, "file": str(bundle)})
        print(bundle)
    (output / "compile_commands.json").write_text(json.dumps(commands, indent=1), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
