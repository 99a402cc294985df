"""header_page.py HEADER FOLDER DATE SOURCE: the pages of section 3 from the comments of the public header.

igh_master(3) has the introduction and the types, and leads to a page for each section of the header; each function gets
a page of its own that leads to that of its section. A comment right above declarations belongs to them; one followed by
an empty line stands for itself; lines that are indented inside a comment are kept as they are."""

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
            while unit[-1].endswith("\\"):
                unit.append(next(lines))
            yield "code", unit if len(unit) == 1 else [line.rstrip(" \\")]  # what is behind a macro is not for its reader
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
        if kind == "code" and comment:
            declarations += unit
            continue
        if kind == "code":
            continue  # a macro that no comment explains is none of the reader's business
        if declarations:
            add_declarations(page, declarations, comment)
        elif comment:
            add_prose(page, comment)
        comment, declarations = ([], []) if kind == "gap" else (comment_lines(unit), [])


def by_section(parsed):
    """(title, units) of each section; what stands before the first has no title."""
    sections = [("", [])]
    for kind, unit in parsed:
        if kind == "comment" and (section := SECTION.fullmatch(unit[0])):
            sections.append((section[1], []))
        else:
            sections[-1][1].append((kind, unit))
    return sections


def functions(parsed):
    return [match[1] for kind, unit in parsed if kind == "code" and (match := FUNCTION.search(unit[0]))]


def begin(name, others, summary, date, source):
    page = roff.Page(name, 3, date, source, "Library Functions Manual")
    page.heading("Name")
    page.text(", ".join([name, *others]) + r" \- " + roff.escape(summary))
    page.heading("Library")
    page.text(r"libigh_master (\fB\-ligh_master\fR; with \fBpkg\-config\fR: igh_master)")
    page.heading("Synopsis")
    page.code(["#include <igh_master.h>"], r"\fB")
    page.heading("Description")
    return page


def end(page, pages, path):
    page.heading("See also")
    page.text(", ".join([*(rf"\fB{roff.verbatim(name)}\fR(3)" for name in pages), r"\fBigh_bus\fR(1)", r"\fBbus\-file\fR(5)"]))
    page.write(path)


def main(header, folder, date, source):
    target = pathlib.Path(folder)
    (_, front), *sections = by_section(units(pathlib.Path(header).read_text(encoding="utf-8")))
    title, *intro = comment_lines(front[0][1])
    pages = {"igh_master_" + section.lower().replace(" ", "_"): (section, parsed) for section, parsed in sections}

    whole = begin("igh_master", [], title.split(" - ")[1].rstrip("."), date, source)
    add_prose(whole, intro)
    whole.heading("Functions")
    for name, (section, parsed) in pages.items():
        whole.paragraph(f"**{name}**(3): {section}")
        whole.code(["  " + function for function in functions(parsed)])
    whole.heading("Types")
    add_body(whole, front[1:])
    end(whole, pages, target / "igh_master.3")

    for name, (section, parsed) in pages.items():
        page = begin(name, functions(parsed), f"{section} of libigh_master", date, source)
        page.paragraph("Threads, memory and results are as **igh_master**(3) says for all functions.")
        add_body(page, parsed)
        end(page, ["igh_master"], target / f"{name}.3")
        for function in functions(parsed):
            (target / f"{function}.3").write_text(f".so man3/{name}.3\n", encoding="utf-8")


main(*sys.argv[1:])
