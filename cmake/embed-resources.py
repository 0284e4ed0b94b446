#!/usr/bin/env python3
"""Turns scripts into a C++ source that holds their texts: embed-resources.py OUTPUT SCRIPT...

Each script is bundled with the modules that it imports, and minified, for engines of 2020 and later.
"""
import pathlib
import subprocess
import sys


def minified(path):
    words = ["esbuild", str(path), "--bundle", "--minify", "--format=iife", "--target=es2020", "--log-level=warning"]
    return subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def literal(text):
    """A text as C++ literals of a length that every compiler takes."""
    data = text.encode()
    parts = [data[at : at + 4000] for at in range(0, len(data), 4000)]
    return "\n".join('"' + "".join(escaped(byte) for byte in part) + '"' for part in parts) or '""'


def escaped(byte):
    if byte in b'"\\':
        return "\\" + chr(byte)
    return chr(byte) if 32 <= byte < 127 and byte != ord("?") else f"\\{byte:03o}"


def main(output, scripts):
    answers = []
    for path in map(pathlib.Path, scripts):
        text = minified(path)
        answers.append(
            f'  if (name == "{path.name}") {{\n    return std::string_view(\n{literal(text)},\n{len(text.encode())});\n  }}\n'
        )
    pathlib.Path(output).write_text(
        '#include "velto/resources/Resources.h"\n\n'
        "namespace velto {\n\n"
        "std::optional<std::string_view> resourceText([[maybe_unused]] std::string_view name) {\n"
        + "".join(answers)
        + "  return std::nullopt;\n}\n\n}  // namespace velto\n"
    )


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
