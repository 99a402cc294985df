"""Manual pages in the man macros, from blocks of text: every text is escaped here and nowhere else."""

import re


def escape(text):
    return text.replace("\\", r"\e")


def verbatim(text):
    return escape(text).replace("-", r"\-")


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
        """One line of roff; a dot or quote in front would make it a request."""
        self.lines.append(r"\&" + text if text[:1] in (".", "'") else text)

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
        """The last column takes what is left of the line and wraps."""
        self.request("TS")
        left = " ".join(["l"] * (len(rows[0]) - 1))
        self.lines += [r"tab(^);", f"{left} lx."]
        for row in rows:
            self.lines.append("^".join([*map(inline, row[:-1]), "T{"]))
            self.text(inline(row[-1]))
            self.lines.append("T}")
        self.request("TE")

    def write(self, path):
        path.write_text("\n".join(self.lines) + "\n", encoding="utf-8")
