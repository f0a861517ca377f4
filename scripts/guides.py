#!/usr/bin/env python3
"""Brings the guides of docs/ up to date: output of commands, lines of samples, and tables that have another source.

    scripts/guides.py            writes the pages again
    scripts/guides.py --check    changes nothing; prints what differs and ends with 1 if anything does

A page marks what is made:
    <!-- run -->                   the block that follows has lines "$ COMMAND", each followed by its output
    <!-- setup: COMMAND -->        a command that is run without a place in the page
    <!-- lines FILE -->            the block that follows has the lines of a file
    <!-- lines FILE TAG -->        those between its lines "// begin TAG" and "// end TAG"
    <!-- table NAME ARGUMENT... -->   the lines up to <!-- end --> come from a function of this script

The commands of a page run one after the other in a scratch installation with an empty registry. Paths of the
installation are shown below /opt/kestrova, those of the user below /home/ana, and times as one fixed time. A command
that fails ends with a line [exit code N].
"""
import concurrent.futures
import difflib
import json
import os
import pathlib
import pwd
import re
import secrets
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ.get("KV_BUILD", ROOT / "build/release"))
XS = "{http://www.w3.org/2001/XMLSchema}"


class Shell:
    """A scratch installation in which the commands of one page run."""

    def __init__(self):
        # As long as the paths that are shown instead, because columns depend on it.
        self.install = self.new_folder(len("/opt/kestrova"))
        self.home = self.new_folder(len("/home/ana"))
        (self.install / "lib").mkdir(parents=True)
        (self.install / "bin").mkdir()
        (self.install / "bin/kestrova").symlink_to(BUILD / "bin/kestrova")
        if (BUILD / "etc").exists():
            (self.install / "etc").symlink_to(BUILD / "etc")
        for file in [*(BUILD / "lib").glob("libKVSHARE*"), *(BUILD / "lib").glob("kvshare-*")]:
            (self.install / "lib" / file.name).symlink_to(file)
        for part in ("lang", "MachSim", "SubSpindleOps", "Edm", "TechDB"):
            shutil.copytree(BUILD / "lib" / part, self.install / "lib" / part)
        self.environment = {
            "PATH": f"{self.install}/bin:/usr/bin:/bin",
            "LD_LIBRARY_PATH": f"{self.install}/lib",
            "HOME": str(self.home),
            "KV_REGISTRY": str(self.home / "registry"),
            "LC_ALL": "C.UTF-8",
            "TZ": "UTC",
            "USER": "ana",
        }

    @staticmethod
    def new_folder(length):
        while True:
            folder = pathlib.Path("/tmp") / secrets.token_hex(length)[: length - len("/tmp/")]
            try:
                folder.mkdir(mode=0o700)
                return folder
            except FileExistsError:
                pass

    def remove(self):
        for folder in (self.install, self.home):
            shutil.rmtree(folder)

    def run(self, command):
        command = command.replace("/opt/kestrova", str(self.install)).replace("/home/ana", str(self.home))
        done = subprocess.run(["sh", "-c", command], cwd=self.home, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        text = self.shown(done.stdout.decode("utf-8", "replace"))
        if text and not text.endswith("\n"):
            text += "\n"
        return text + (f"[exit code {done.returncode}]\n" if done.returncode else "")

    def shown(self, text):
        for real, shown in ((self.install, "/opt/kestrova"), (self.home, "/home/ana")):
            text = text.replace(str(real), shown).replace(str(real).replace("/", "\\"), shown.replace("/", "\\"))
        text = re.sub(r"\d\d/\d\d/\d{4}::\d\d:\d\d", "11/22/2026::09:00", text)
        text = re.sub(r"\b\d{4}-\d\d-\d\dT[\d:.]+Z", "2026-11-22T09:00:00.000Z", text)
        text = re.sub(r"\bthread \d{2,}", "thread 4711", text).replace(" (core dumped)", "")
        text = re.sub(r"\b\d\d:\d\d:\d\d\b", "09:00:00", text)
        text = re.sub(r"\b[\d.]+ ms\b", "9.8 ms", text)
        text = re.sub(r"Address of this: [0-9a-f]+", "Address of this: 7f0000000040", text)
        text = re.sub(rf"\bby {re.escape(pwd.getpwuid(os.getuid()).pw_name)}\b", "by ana", text)
        return re.sub(r"\b\d{4}-\d\d-\d\d\b", "2026-11-22", text)


def lines_of(name, tag):
    text = (ROOT / name).read_text()
    if not tag:
        return text
    found = re.search(rf"^ *// begin {tag}\n(.*?)^ *// end {tag}$", text, re.S | re.M)
    if not found:
        sys.exit(f"{name} has no lines between // begin {tag} and // end {tag}")
    lines = found[1].splitlines()
    indent = min((len(line) - len(line.lstrip()) for line in lines if line.strip()), default=0)
    return "".join(line[indent:] + "\n" for line in lines)


# ---- tables


def machine_elements(schema):
    """The attributes of a machine definition, from its XML schema."""
    root = ElementTree.parse(ROOT / schema).getroot()

    def said(node):
        return node.find(f"{XS}annotation/{XS}documentation").text

    def kind(attribute):
        name = attribute.get("type")
        if name:
            return f"[{name}](#{name.lower()})"
        facets = attribute.find(f"{XS}simpleType/{XS}restriction")
        name = facets.get("base")
        limits = {child.tag.removeprefix(XS): child.get("value") for child in facets}
        if "minLength" in limits:
            return f"[{name}](#{name.lower()}), not empty"
        words = f"[{name}](#{name.lower()}) from {limits['minInclusive']}"
        return words + (f" to {limits['maxInclusive']}" if "maxInclusive" in limits else "")

    out = []

    def walk(node, parent):
        name = node.get("name")
        out.append(f"### {name}\n\n{said(node)}" + (f" In {parent}." if parent else " The root element.") + "\n")
        form = node.find(f"{XS}complexType")
        rows = form.findall(f"{XS}attribute")
        if rows:
            out.append("| attribute | value | meaning |\n|---|---|---|")
        for row in rows:
            required = " **Required.**" if row.get("use") == "required" else ""
            out.append(f"| `{row.get('name')}` | {kind(row)} | {said(row)}{required} |")
        if rows:
            out.append("")
        for child in form.findall(f"{XS}choice/{XS}element"):
            walk(child, name)

    for element in root.findall(f"{XS}element"):
        walk(element, "")
    return "\n".join(out) + "\n"


def machine_values(schema):
    """The kinds of values of a machine definition, from its XML schema."""
    out = []
    for kind in ElementTree.parse(ROOT / schema).getroot().findall(f"{XS}simpleType"):
        said = kind.find(f"{XS}annotation/{XS}documentation").text
        words = [f"`{word.get('value')}`" for word in kind.iter(f"{XS}enumeration")]
        out.append(f"### {kind.get('name')}\n\n{said}\n")
        if words:
            out.append(" ".join(words) + "\n")
    return "\n".join(out) + "\n"


def schemas(folder):
    """The JSON schemas with their titles."""
    rows = []
    for file in sorted((ROOT / folder).glob("*.schema.json")):
        schema = json.loads(file.read_text())
        name = file.name.removesuffix(".schema.json")
        keys = ", ".join(f"`{key}`" for key in schema.get("required", []))
        rows.append(f"| [{name}](../schemas/{file.name}) | {schema['title']} | {keys} |")
    return "| schema | what it describes | keys that are always there |\n|---|---|---|\n" + "\n".join(rows) + "\n"


def sources(patterns):
    for pattern in patterns:
        yield from sorted(ROOT.glob(pattern))


SERIAL = re.compile(r"^IMPLEMENT_SERIAL\((\w+), (\w+), VERSIONABLE_SCHEMA \| ([\w:]+)\)", re.M)


def serial_classes(*patterns):
    """The classes with a record, with the schema that each writes."""
    rows = []
    for file in sources(patterns):
        for name, base, schema in SERIAL.findall(file.read_text()):
            if not schema.isdigit():
                schema = re.search(rf"{schema.split('::')[-1]} = (\d+);", file.with_suffix(".h").read_text())[1]
            rows.append((name, base, schema, str(file.relative_to(ROOT))))
    rows.sort(key=lambda row: (row[3], row[0]))
    lines = [f"| `{name}` | `{base}` | {schema} | `{file}` |" for name, base, schema, file in rows]
    return "| class | base class | schema | source |\n|---|---|---|---|\n" + "\n".join(lines) + "\n"


def comment(name, first="", last=""):
    """The comment at the top of a source, from its line that begins with `first` to that which begins with `last`."""
    lines = []
    for line in (ROOT / name).read_text().splitlines():
        if not line.startswith("//"):
            break
        lines.append(line[3:])
    starts = [at for at, line in enumerate(lines) if line.lstrip().startswith(first.replace("_", " "))]
    if not starts:
        sys.exit(f"the comment of {name} has no line that begins with {first}")
    lines = lines[starts[0]:]
    if last:
        lines = lines[:[line.lstrip().startswith(last.replace("_", " ")) for line in lines].index(True) + 1]
    return "```\n" + "\n".join(lines).rstrip() + "\n```\n"


def enumeration(name, enumeration_name):
    """The values of an enumeration in a header."""
    body = re.search(rf"enum (?:class )?{enumeration_name}\b[^{{]*{{(.*?)}}", (ROOT / name).read_text(), re.S)[1]
    rows = re.findall(r"^\s*(\w+) = (\w+),?(?: *// *(.*))?$", body, re.M)
    return "| value | name | |\n|---|---|---|\n" + "".join(f"| {v} | `{n}` | {c} |\n" for n, v, c in rows)


def constants(name, prefix):
    """The constants of a header whose names begin with the prefix."""
    rows = re.findall(rf"^ *(?:static |inline )*constexpr [\w:]+ ({prefix}\w*) = (.*?);", (ROOT / name).read_text(), re.M)
    return "| constant | value |\n|---|---|\n" + "".join(f"| `{n}` | {v} |\n" for n, v in rows)


def switches(name, table):
    """A table of feature switches in a header."""
    body = re.search(rf"{table} = {{{{(.*?)}}}};", (ROOT / name).read_text(), re.S)[1]
    rows = re.findall(r'_T\("(\w+)"\), (\d+)', body)
    return "| switch | default |\n|---|---|\n" + "".join(f"| `{n}` | {v} |\n" for n, v in rows)


def registry_keys(name):
    """The registry keys that a header names, with the comment above each."""
    rows = []
    text = (ROOT / name).read_text().replace("=\n    _T", "= _T")
    for said, constants_below in re.findall(r"((?:^// .*\n)*)((?:^inline constexpr .*\n)+)", text, re.M):
        words = " ".join(line[3:] for line in said.splitlines())
        for key in re.findall(r'_T\("(.*)"\);', constants_below) if words else ():
            rows.append("| `" + key.replace("\\\\", "\\") + f"` | {words} |")
    return "| key | |\n|---|---|\n" + "\n".join(rows) + "\n"


def rooms(name, layer):
    """The rooms of a layer by rank, from the test of the include lines."""
    ranks = {}
    for rank, room in re.findall(rf'{{(\d+), "{layer}/(\w+)"}}', (ROOT / name).read_text()):
        ranks.setdefault(int(rank), []).append(f"`{room}`" if (ROOT / layer / room).exists() else None)
    rows = [(rank, ", ".join(filter(None, names))) for rank, names in sorted(ranks.items(), reverse=True)]
    return "| rank | rooms |\n|---|---|\n" + "".join(f"| {rank} | {names} |\n" for rank, names in rows if names)


def commands():
    """The commands of the command line, such as "env doctor"."""
    shown = []

    def offered(*words):
        done = subprocess.run([BUILD / "bin/kestrova", "complete-words", *words, ""], stdout=subprocess.PIPE, check=True,
                              env={**os.environ, "KV_REGISTRY": os.devnull})
        return done.stdout.decode().split()

    for group in offered():
        below = [word for word in offered(group) if re.fullmatch("[a-z]+", word)]
        if group in ("env", "picture", "completion"):
            shown.append(group)
        if group != "completion":
            shown += [f"{group} {word}" for word in below]
    return shown


def wrong_schemas(text):
    """What is wrong with the schemas that the headings of a page name."""
    named = re.findall(r"^### (\w+), schema (\d+)$", text, re.M)
    if named:
        known = {row[0]: row[2] for row in
                 re.findall(r"^\| `(\w+)` \| `(\w+)` \| (\d+) \|", serial_classes("share/*/*.cpp", "host/*/*.cpp"), re.M)}
        for name, schema in named:
            if known.get(name) != schema:
                yield f"the record of {name} has schema {known.get(name)}, not {schema}"


TABLES = {"serial-classes": serial_classes, "comment": comment, "enum": enumeration, "constants": constants, "switches": switches,
          "registry-keys": registry_keys, "rooms": rooms, "machine-elements": machine_elements, "machine-values": machine_values, "schemas": schemas}


# ---- pages


def run_block(shell, body):
    commands, out = re.findall(r"^\$ (.*(?:\n> .*)*)", body, re.M), ""
    for command in commands:
        out += f"$ {command}\n" + shell.run(command.replace("\n> ", "\n"))
    return out


MARK = re.compile(r"<!-- setup: (?P<setup>.*?) -->"
                  r"|<!-- run -->\n```[a-z]*\n(?P<run>.*?)^```$"
                  r"|<!-- lines (?P<file>\S+)(?: (?P<tag>\S+))? -->\n(?P<fence>```[a-z]*\n).*?^```$"
                  r"|<!-- table (?P<table>[^\n]+) -->\n.*?<!-- end -->", re.S | re.M)


def page_again(text):
    shell = None

    def again(found):
        nonlocal shell
        if found["setup"] is not None or found["run"] is not None:
            shell = shell or Shell()
        if found["setup"] is not None:
            out = shell.run(found["setup"])
            if "[exit code" in out:
                sys.exit(f"{found['setup']}\n{out}")
            return found[0]
        if found["run"] is not None:
            mark, fence, _ = found[0].split("\n", 2)
            return f"{mark}\n{fence}\n{run_block(shell, found['run'])}```"
        if found["file"] is not None:
            name = found["file"] + (f" {found['tag']}" if found["tag"] else "")
            return f"<!-- lines {name} -->\n{found['fence']}{lines_of(found['file'], found['tag'])}```"
        name, *arguments = found["table"].split()
        return f"<!-- table {found['table']} -->\n{TABLES[name](*arguments)}<!-- end -->"

    try:
        return MARK.sub(again, text)
    finally:
        if shell:
            shell.remove()


def anchors(text):
    """The anchors of a page's headings."""
    text = re.sub(r"^```.*?^```", "", text, flags=re.S | re.M)
    titles = re.findall(r"^#+ (.*)$", text, re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def broken_links(page, text):
    """What is wrong with the relative links of a page."""
    text = re.sub(r"^```.*?^```", "", text, flags=re.S | re.M)
    for target, _, anchor in re.findall(r"\]\(([^)#\s]*)(#([^)\s]*))?\)", text):
        if re.match(r"[a-z]+:", target):
            continue
        file = page.parent / target if target else page
        if not file.exists():
            yield f"the link {target} leads to no file"
        elif anchor and file.suffix == ".md" and anchor not in anchors(text if file == page else file.read_text()):
            yield f"the link {target}#{anchor} leads to no heading"


def main():
    check = sys.argv[1:] == ["--check"]
    differs = False
    pages = sorted((ROOT / "docs").rglob("*.md")) + sorted(ROOT.glob("*.md"))
    texts = [page.read_text() for page in pages]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        made = list(pool.map(page_again, texts))
    for page, text, again in zip(pages, texts, made):
        missing = [f"kestrova {command} is not shown" for command in commands() if f"kestrova {command}" not in again
                   ] if page.name == "commands.md" else []
        for fault in [*broken_links(page, again), *wrong_schemas(again), *missing]:
            print(f"{page.relative_to(ROOT)}: {fault}")
            differs = True
        if again == text:
            continue
        differs = differs or check
        name = str(page.relative_to(ROOT))
        if check:
            sys.stdout.writelines(difflib.unified_diff(text.splitlines(True), again.splitlines(True), name, "made"))
        else:
            page.write_text(again)
            print(name)
    if check and differs:
        print("scripts/guides.py writes the pages again")
    sys.exit(1 if differs else 0)


if __name__ == "__main__":
    main()
