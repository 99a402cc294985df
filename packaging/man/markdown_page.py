"""markdown_page.py DOCUMENT OUTPUT NAME SECTION DATE SOURCE SUMMARY FIRST BEFORE OTHER...: chapters of a document as a
manual page: those from FIRST on that stand before BEFORE, and the others.

Only what the project's documents use: headings, paragraphs, lists, fenced code and tables. A chapter that is not
there is an error: the page must not become empty unnoticed."""

import pathlib
import re
import sys

import roff


def chapters(text):
    """Yields (heading, lines); a fence hides what looks like a heading."""
    heading, lines, fenced = "", [], False
    for line in text.splitlines():
        fenced ^= line.startswith("```")
        if line.startswith("## ") and not fenced:
            yield heading, lines
            heading, lines = line[3:], []
        else:
            lines.append(line)
    yield heading, lines


def cells(line):
    return [cell.strip().replace(r"\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def add_block(page, lines):
    """Lines that stand together: a table, list items or a paragraph."""
    if lines[0].startswith("|"):
        rows = [cells(line) for line in lines]
        page.table(rows[:1] + rows[2:])
        return
    for part in re.split(r"\n(?=[-*] |\d+\. )", "\n".join(lines)):
        item = re.match(r"[-*] |\d+\. ", part)
        text = " ".join(line.strip() for line in part[item.end() if item else 0:].splitlines())
        (page.item if item else page.paragraph)(text)


def add_chapter(page, lines):
    block, fence = [], None
    for line in [*lines, ""]:
        if line.startswith("```"):
            if fence is not None:
                page.code(fence)
            fence = [] if fence is None else None
        elif fence is not None:
            fence.append(line)
            continue
        elif line and not line.startswith("#"):
            block.append(line)
            continue
        if block:
            add_block(page, block)
            block = []
        if line.startswith("#"):
            page.heading(line.lstrip("# "), 2)


def main(document, output, name, section, date, source, summary, first, before, *others):
    page = roff.Page(name, section, date, source, "File Formats Manual")
    page.heading("Name")
    page.text(rf"{roff.verbatim(name)} \- {roff.escape(summary)}")
    found = dict(chapters(pathlib.Path(document).read_text(encoding="utf-8")))
    order = list(found)
    for heading in (first, before, *others):
        if heading not in found:
            sys.exit(f"{document} has no chapter '{heading}'")
    for heading in [*order[order.index(first):order.index(before)], *others]:
        page.heading(heading)
        add_chapter(page, found[heading])
    page.heading("See also")
    page.text(r"\fBigh_bus\fR(1), \fBigh_master\fR(3)")
    page.write(pathlib.Path(output))


main(*sys.argv[1:])
