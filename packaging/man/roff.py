"""Manual pages in the man macros, from blocks of text: every text is escaped here and nowhere else."""

import re


def escape(text):
    return text.replace("\\", r"\e")


def verbatim(text):
    return escape(text).replace("-", r"\-")


def protected(text):
    """One line of roff; a dot or quote in front would make it a request."""
    return r"\&" + text if text[:1] in (".", "'") else text


def inline(text):
    """Markdown's `code`, **bold** and [links](target) inside a paragraph; of a link only its text is kept."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", text)
    pieces = re.split(r"(`[^`]*`|\*\*[^*]*\*\*)", text)
    return "".join(
        rf"\fB{verbatim(piece.strip('`*'))}\fR" if index % 2 else escape(piece) for index, piece in enumerate(pieces))


class Page:
    def __init__(self, name, section, date, source, manual):
        # The first line has man run tbl.
        self.lines = ["'\\\" t", f'.TH {name} {section} {date} "{source}" "{manual}"', ".nh", ".ad l"]

    def request(self, name, text=""):
        self.lines.append(f".{name} {text}".rstrip())

    def text(self, text):
        self.lines.append(protected(text))

    def heading(self, text, level=1):
        self.request("SH" if level == 1 else "SS", inline(text.upper() if level == 1 else text))

    def paragraph(self, text):
        self.request("PP")
        self.text(inline(text))

    def item(self, text):
        self.request("IP", r"\(bu 2")
        self.text(inline(text))

    def code(self, lines, style=r"\fR"):
        self.request("PP")
        self.request("nf")
        for line in lines:
            self.text(style + verbatim(line) + r"\fR")
        self.request("fi")

    def table(self, rows):
        """The last column and those with long texts share what is left of the line, and wrap."""
        last = len(rows[0]) - 1
        wraps = [column == last or max(len(row[column]) for row in rows) > 40 for column in range(last + 1)]
        self.request("TS")
        self.lines += ["tab(^);", " ".join("lx" if wrap else "l" for wrap in wraps) + "."]
        for row in rows:
            self.lines += "^".join(f"T{{\n{protected(inline(cell))}\nT}}" if wrap else inline(cell)
                                   for cell, wrap in zip(row, wraps)).split("\n")
        self.request("TE")

    def write(self, path):
        path.write_text("\n".join(self.lines) + "\n", encoding="utf-8")
