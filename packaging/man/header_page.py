"""header_page.py HEADER FOLDER DATE SOURCE: igh_master(3) from the comments of the public header.

A comment right above declarations belongs to them; one followed by an empty line stands for itself; lines that are
indented inside a comment are kept as they are. Each function gets a page of its own that leads to the whole one."""

import pathlib
import re
import sys

import roff

SECTION = re.compile(r"/\* -{4} (.*?) -* ?\*/")
FUNCTION = re.compile(r"\b(igh_master_\w+)\(")


def units(source):
    """Yields ("comment", lines), ("code", lines) and ("gap", []) in the order of the header."""
    lines = iter(source.splitlines())
    for line in lines:
        unit = [line]
        if line.startswith("/*"):
            while not unit[-1].endswith("*/"):
                unit.append(next(lines))
            yield "comment", unit
        elif line.startswith(("IGH_MASTER_API", "typedef")):
            while not unit[-1].endswith(";") or unit[-1].startswith(" ") and "{" in unit[0]:
                unit.append(next(lines))
            attribute = "IGH_MASTER_API " if line.startswith("IGH_MASTER_API ") else ""
            yield "code", [part.removeprefix(attribute).removeprefix(" " * len(attribute)) for part in unit]
        elif line.startswith("#define"):
            yield "code", unit
        else:
            yield "gap", []


def comment_lines(unit):
    text = "\n".join(unit).removeprefix("/*").removesuffix("*/")
    return [re.sub(r"^ \* ?|^ ", "", line).rstrip() for line in text.splitlines()]


def add_prose(page, lines):
    """Paragraphs are parted by empty lines, indented blocks by their indentation."""
    block = []

    def flush():
        if block and block[0].startswith("  "):
            page.code(block)
        elif block:
            page.paragraph(" ".join(line.strip() for line in block))
        block.clear()

    for line in lines:
        if not line or (block and line.startswith("  ") != block[0].startswith("  ")):
            flush()
        if line:
            block.append(line)
    flush()


def add_declarations(page, declarations, comment):
    page.code(declarations, r"\fB")
    page.request("RS", "4")
    add_prose(page, comment)
    page.request("RE")


def add_body(page, parsed):
    comment, declarations = [], []
    for kind, unit in [*parsed, ("gap", [])]:
        section = SECTION.fullmatch(unit[0]) if kind == "comment" else None
        if kind == "code" and comment:
            declarations += unit
            continue
        if kind == "code":
            continue  # a macro that no comment explains is none of the reader's business
        if declarations:
            add_declarations(page, declarations, comment)
        elif comment:
            add_prose(page, comment)
        comment, declarations = ([], []) if section or kind == "gap" else (comment_lines(unit), [])
        if section:
            page.heading(section[1])


def main(header, folder, date, source):
    parsed = list(units(pathlib.Path(header).read_text(encoding="utf-8")))
    names = [match[1] for kind, unit in parsed if kind == "code" and (match := FUNCTION.search(unit[0]))]
    title, *intro = comment_lines(parsed[0][1])
    page = roff.Page("igh_master", 3, date, source, "Library Functions Manual")
    page.heading("Name")
    page.text(", ".join(["igh_master", *names]) + r" \- " + roff.escape(title.split(" - ")[1].rstrip(".")))
    page.heading("Library")
    page.text(r"libigh_master (\fB\-ligh_master\fR; with \fBpkg\-config\fR: igh_master)")
    page.heading("Synopsis")
    page.code(["#include <igh_master.h>"], r"\fB")
    page.heading("Description")
    add_prose(page, intro)
    page.heading("Types")
    add_body(page, parsed[1:])
    page.heading("See also")
    page.text(r"\fBigh_bus\fR(1), \fBbus\-file\fR(5)")
    target = pathlib.Path(folder)
    page.write(target / "igh_master.3")
    for name in names:
        (target / f"{name}.3").write_text(".so man3/igh_master.3\n", encoding="utf-8")


main(*sys.argv[1:])
