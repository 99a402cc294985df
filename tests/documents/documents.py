"""documents.py commands DOCUMENT | links: what the documents tell a reader to do, and where they send one.

commands runs the shell blocks of a document in order, in one shell, in a copy of the tree with a home of its own. A block
of the kind `console` must also print what stands there, numbers apart. One whose first line says that it needs a real
master or installs packages is only read. links looks at relative links, in the tree and as installed.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE, BUILD = (pathlib.Path(os.environ[name]) for name in ("SOURCE", "BUILD"))
TOOLS = ("abidw", "bash", "cmake", "cpack", "dpkg-shlibdeps", "file", "gcc", "ninja", "pkg-config")
ONLY_READ = re.compile(r"# (needs a real master|installs missing packages)")
# The objects that the tested build has made of the same sources stand in for compiling them once more.
LAUNCHER = """#!/bin/sh
for word; do [ "$last" != -o ] || object=$word; last=$word; done
cp "%s/$object" "$object" 2>/dev/null || exec "$@"
"""


def blocks(document):
    """Yields (line number, kind, lines) of each fenced block."""
    kind = None
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        fence = re.match(r"( *)```(.*)$", line)
        if fence and kind is None:
            indent, kind, start, lines = len(fence[1]), fence[2], number, []
        elif fence:
            yield start, kind, lines
            kind = None
        elif kind is not None:
            lines.append(line[indent:])


def in_short(text):
    """Without numbers, and without the states of a climb: they hang on the moment."""
    lines = (re.sub(r"[0-9.]+", "N", " ".join(line.split())) for line in text)
    return [line for line in lines if not line.startswith("cycle N")]


def script_of(document, place, complaints):
    """The shell script of a document; (file, expected lines) of what it has to print; synopses."""
    script, printed, synopses = ["set -euo pipefail"], [], ""
    for number, kind, lines in blocks(document):
        text = "\n".join(lines)
        where = f"{document.name}:{number}"
        script.append(f"echo '== {where}' >&2")
        whole = kind == "c" or kind == "python" and "pytest_plugins" in text
        if whole and text + "\n" not in [file.read_text() for file in SOURCE.glob("examples/*/*.[cp]*")]:
            complaints.append(f"{where} is none of the examples")
        elif kind == "text":
            synopses += re.sub(r"\n +", " ", text) + "\n"
        elif kind == "console":
            commands = "\n".join(re.findall(r"^(?:\$|>) (.*)", text, re.M))
            script.append(f"{{ {commands}\n}} >{place}/{number} 2>&1")
            printed.append((where, place / str(number), [line for line in lines if line[:2] not in ("$ ", "> ")]))
        elif kind == "sh" and not ONLY_READ.match(text):
            if re.search(r"\b(sudo|apt-get|scripts/)", text):
                complaints.append(f"{where} does not say that it needs a real master or installs packages")
            script.append(text)
        elif kind == "sh":
            for name in re.findall(r"^scripts/\w+", text, re.M):
                if not os.access(SOURCE / name, os.X_OK):
                    complaints.append(f"{where}: there is no {name}")
            if subprocess.run(["bash", "-n", "-c", text], check=False).returncode != 0:
                complaints.append(f"{where} is no shell script")
        elif kind not in ("c", "c99", "cmake", "cpp", "csv", "json", "python"):
            complaints.append(f"{where}: a block of no known kind '{kind}'")
    return "\n".join(script), printed, synopses


def check_synopses(text, complaints):
    for command, rest in re.findall(r"^igh_bus ((?:[a-z]+ )+)(.*)", text, re.M):
        help_text = subprocess.run([BUILD / "tools/igh_bus/igh_bus", *command.split(), "--help"],
                                   check=True, capture_output=True, text=True).stdout
        for word in ["Exit status:", *re.findall(r"--[a-z-]+", rest)]:
            if not re.search(rf"^ *{word}(?![a-z-])", help_text, re.M):
                complaints.append(f"igh_bus {command}has no {word}")


def commands(name, scratch):
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    if missing:
        print("skipped, not installed:", *missing)
        sys.exit(77)
    tree, home = scratch / "tree", scratch / "home"
    shutil.copytree(SOURCE, tree, ignore=shutil.ignore_patterns("build*", ".git"))
    home.mkdir()
    launcher = scratch / "launcher"
    launcher.write_text(LAUNCHER % BUILD)
    launcher.chmod(0o755)
    complaints = []
    script, printed, synopses = script_of(SOURCE / name, scratch, complaints)
    environment = dict(os.environ, HOME=str(home), CMAKE_C_COMPILER_LAUNCHER=str(launcher),
                       CMAKE_CXX_COMPILER_LAUNCHER=str(launcher))
    environment.pop("ETHERCAT_SIMULATION_BUS", None)
    if not complaints and subprocess.run(["bash", "-c", script], cwd=tree, env=environment, check=False).returncode != 0:
        shown = [file.read_text() for _, file, _ in printed if file.exists()]
        complaints.append("\n".join(["the block named last failed", *shown]))
    for where, file, expected in printed if not complaints else []:
        found = in_short(file.read_text().splitlines())
        if found != in_short(expected):
            complaints.append(f"{where} prints\n" + "\n".join(found))
    check_synopses(synopses, complaints)
    return complaints


def headings(document):
    """As links name them: small letters, no marks, hyphens for blanks."""
    for title in re.findall(r"^#+ (.*)", document.read_text(encoding="utf-8"), re.M):
        yield re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")


def dead_links(root):
    for document in [*root.glob("*.md"), *root.glob("docs/*.md")]:
        for target, heading in re.findall(r"\]\((?![a-z]+:)([^)#]*)#?([^)]*)\)", document.read_text(encoding="utf-8")):
            file = document.parent / target if target else document
            if not file.exists() or heading and heading not in headings(file):
                yield f"{document}: {target}#{heading} is not there"


def links(scratch):
    subprocess.run([os.environ["CMAKE"], "--install", BUILD, "--prefix", scratch, "--component", "dev"],
                   check=True, stdout=subprocess.DEVNULL)
    installed = [file.parent for file in scratch.rglob("README.md")]
    return [dead for root in (SOURCE, *installed) for dead in dead_links(root)] or ([] if installed else ["not installed"])


with tempfile.TemporaryDirectory() as folder:
    work = pathlib.Path(folder)
    found_wrong = links(work) if sys.argv[1] == "links" else commands(sys.argv[2], work)
for complaint in found_wrong:
    print("failed:", complaint)
sys.exit(len(found_wrong) > 0)
