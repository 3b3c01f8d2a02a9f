#!/usr/bin/python3
"""Prepares the input of doxygen: docs/reference/prepare.py FOLDER VERSION

Copies the public headers, each into the group of its interface, and the documents: their headings get the anchors that
links on GitHub use, their links become references, and their diagrams pictures. Line numbers stay.
"""

import html
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = ["README.md", "CONTRIBUTING.md", "SECURITY.md", "CHANGELOG.md", "fuzz/README.md"]
THREAD = re.compile(r"\[(audio|setup|any)\]")


def headers(version):
    """Yields path, text and group of each public header."""
    cmake = (ROOT / "CMakeLists.txt").read_text()
    for name in re.search(r"set\(public_headers([^)]*)\)", cmake)[1].split():
        yield name, (ROOT / name).read_text(), "engine_interface"
    stream = (ROOT / "stream/CMakeLists.txt").read_text()
    for name in re.search(r"FILES ([^)]*\.h)\)", stream)[1].split():
        yield f"stream/{name}", (ROOT / "stream" / name).read_text(), "stream_interface"
    folder = ROOT / "c/include/audio_filter"
    yield "audio_filter/c.h", (folder / "c.h").read_text(), "c_interface"
    text = (folder / "version.h.in").read_text().replace("@PROJECT_VERSION@", version)
    for part, number in zip(("MAJOR", "MINOR", "PATCH"), version.split(".")):
        text = text.replace(f"@PROJECT_VERSION_{part}@", number)
    yield "audio_filter/version.h", text, "c_interface"


def header(text, group):
    """A header whose thread tags are labels, within the group of its interface."""
    text = THREAD.sub(r'<span class="thread \1">\1</span>', text)
    return text.replace("\n\n", f"\n/** @addtogroup {group} *//** @{{ */\n", 1) + "/** @} */\n"


def page_name(path):
    """The doxygen page of a document."""
    name = path.relative_to(ROOT).with_suffix("")
    return {"README": "index", "fuzz/README": "fuzzing"}.get(str(name), name.name.lower())


def slug(heading):
    """The anchor that GitHub gives a heading."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).lower()
    return re.sub(r"[^\w -]", "", text).strip().replace(" ", "-")


NODE = re.compile(r'(\w+)(?:\["([^"]*)"\]|\{"([^"]*)"\})?')
EDGE = re.compile(r' *(?:-- "?([^">-]*)"? -->|-\. ?"?([^".]*)"? ?\.->|(-->)) *')


def diagram(source, name):
    """A flow chart of Mermaid as SVG within the page, drawn by Graphviz."""
    direction, *lines = source.strip().splitlines()
    dot = [f"rankdir={direction.split()[1]}"]
    for line in lines:
        at, left, label, style = 0, None, "", ""
        while at < len(line.strip()):
            node = NODE.match(line.strip(), at)
            if not node:
                raise SystemExit(f"{name}: this diagram has a line that {__file__} cannot draw: {line}")
            text = node[2] or node[3]
            if text:
                shape = "diamond" if node[3] else "box"
                text = html.unescape(text).replace('"', '\\"').replace("<br/>", "\\n")
                dot.append(f'{node[1]} [shape={shape} label="{text}"]')
            if left:
                dot.append(f'{left} -> {node[1]} [label="{label}" style="{style}"]')
            left, at = node[1], node.end()
            edge = EDGE.match(line.strip(), at)
            if edge:
                label, style, at = (edge[1] or edge[2] or "").strip(), "dashed" if edge[2] else "solid", edge.end()
            elif at < len(line.strip()):
                raise SystemExit(f"{name}: this diagram has a line that {__file__} cannot draw: {line}")
    graph = ('digraph { bgcolor=transparent; node [fontname="Helvetica" fontsize=11 style=rounded]; '
             'edge [fontname="Helvetica" fontsize=10];\n' + "\n".join(dot) + "}")
    svg = subprocess.run(["dot", "-Tsvg"], input=graph, text=True, check=True, capture_output=True).stdout
    svg = svg[svg.index("<svg"):]
    svg = re.sub(r"<!--.*?-->\n?|<title>.*?</title>\n?", "", svg, flags=re.DOTALL)
    return re.sub(r' id="[^"]*"', "", svg).replace("\n", "")


def document(path, pages):
    """A document as doxygen's Markdown."""
    name, seen, result, code, drawing = page_name(path), set(), [], False, None

    def target(match):
        text, link = match[1], match[2]
        if "://" in link:
            return match[0]
        file, _, anchor = link.partition("#")
        to = (path.parent / file).resolve() if file else path
        if to.suffix in (".png", ".jpg"):
            return f"{text}({to.name})"
        if to not in pages:
            raise SystemExit(f"{path}: {link} is not part of the reference")
        return f"{text}(@ref {page_name(to) + ('_' + anchor if anchor else '')})"

    for line in path.read_text().splitlines():
        if line.startswith("```"):
            if drawing is not None:
                result += [""] * len(drawing)
                line = f"@htmlonly[block]<div class=\"diagram\">{diagram(chr(10).join(drawing), path)}</div>@endhtmlonly"
                drawing, code = None, False
            elif line == "```mermaid":
                drawing, code = [], True
                line = ""
            else:
                code = not code
        elif drawing is not None:
            drawing.append(line)
            continue
        elif not code:
            heading = re.match(r"(#+) (.*)", line)
            if heading:
                anchor = slug(heading[2])
                if len(heading[1]) == 1:
                    line = f"{line} {{#{'mainpage' if name == 'index' else name}}}"
                elif anchor not in seen:
                    line = f"{line} {{#{name}_{anchor}}}"
                seen.add(anchor)
            line = re.sub(r"(!?\[[^]]*\])\(([^)\s]*)\)", target, line)
        result.append(line)
    return "\n".join(result) + "\n"


def main(folder, version):
    for name, text, group in headers(version):
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(header(text, group))
    pages = [ROOT / name for name in DOCUMENTS] + sorted((ROOT / "docs").glob("*.md"))
    for page in pages:
        (folder / f"{page_name(page)}.md").write_text(document(page, pages))
    shutil.copy(ROOT / "docs/reference/reference.dox", folder)
    shutil.copytree(ROOT / "docs/pictures", folder / "pictures")
    shutil.copytree(ROOT / "examples", folder / "examples")


main(pathlib.Path(sys.argv[1]), sys.argv[2])
