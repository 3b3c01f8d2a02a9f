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
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = ["README.md", "CONTRIBUTING.md", "SECURITY.md", "CHANGELOG.md", "fuzz/README.md"]
THREADS = {
    "audio": "may run on the audio thread",
    "setup": "may allocate; not while audio runs",
    "any": "from any thread at any time",
}


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
    for tag, meaning in THREADS.items():
        text = text.replace(f"[{tag}]", f'<span class="thread {tag}" title="{meaning}">{tag}</span>')
    if "\nnamespace audio_filter {\n" in text:  # in a group, other links to members of a namespace would be broken
        return re.sub(r"^(?=(?:class|struct) .*\{$)", f"/** @ingroup {group} */ ", text, flags=re.MULTILINE)
    return text.replace("\n\n", f"\n/** @addtogroup {group} *//** @{{ */\n", 1) + "/** @} */\n"


def page_name(path):
    """The doxygen page of a document."""
    name = path.relative_to(ROOT).with_suffix("")
    return {"README": "index", "fuzz/README": "fuzzing"}.get(str(name), name.name.lower())


def slug(heading):
    """The anchor that GitHub gives a heading."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).lower()
    return re.sub(r"[^\w -]", "", text).strip().replace(" ", "-")


LABEL = 36  # characters
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
                rows = [row for line in html.unescape(text).split("<br/>") for row in textwrap.wrap(line, LABEL)]
                text = "\\n".join(rows).replace('"', '\\"')
                dot.append(f'{node[1]} [shape={shape} label="{text}"]')
            if left:
                dot.append(f'{left} -> {node[1]} [label="{label}" style="{style}"]')
            left, at = node[1], node.end()
            edge = EDGE.match(line.strip(), at)
            if edge:
                label, style, at = (edge[1] or edge[2] or "").strip(), "dashed" if edge[2] else "solid", edge.end()
            elif at < len(line.strip()):
                raise SystemExit(f"{name}: this diagram has a line that {__file__} cannot draw: {line}")
    graph = ('digraph { bgcolor=transparent; nodesep=0.2 ranksep=0.35; '
             'node [fontname="Helvetica" fontsize=11 style=rounded height=0.3 margin="0.1,0.06"]; '
             'edge [fontname="Helvetica" fontsize=10];\n' + "\n".join(dot) + "}")
    svg = subprocess.run(["dot", "-Tsvg"], input=graph, text=True, check=True, capture_output=True).stdout
    svg = svg[svg.index("<svg"):]
    svg = re.sub(r"<!--.*?-->\n?|<title>.*?</title>\n?", "", svg, flags=re.DOTALL)
    svg = re.sub(r' (id|font-family|xmlns[:\w]*)="[^"]*"', "", svg).replace("\n", "")
    width = int(re.search(r'width="(\d+)pt"', svg)[1])
    return svg.replace("<svg", f'<svg style="min-width: {width}px"', 1)


def heading(match, name, seen):
    """A heading with the anchor that it has on GitHub, below the name of its page."""
    level, text = match[1], match[2]
    if level == "#":
        return f"{match[0]} {{#{'mainpage' if name == 'index' else name}}}"
    anchor = slug(text)
    if name == "index" or anchor in seen:  # the contents list the sections of all pages but the first
        return match[0]
    seen.add(anchor)
    return f"{match[0]} {{#{name}_{anchor}}}"


def document(path, pages):
    """A document as doxygen's Markdown."""
    name, seen = page_name(path), set()

    def link(match):
        file, _, anchor = match[2].partition("#")
        to = (path.parent / file).resolve() if file else path
        if "://" in match[2]:
            return match[0]
        if to.suffix in (".png", ".jpg"):
            return f"{match[1]}({to.name})"
        if to not in pages:
            raise SystemExit(f"{path}: {match[2]} is not part of the reference")
        return f"{match[1]}(@ref {page_name(to)}{'_' + anchor if anchor else ''})"

    def span(match):
        # Single backquotes would end at an apostrophe.
        return f"``{match[1]}``" if "'" in match[1] else match[0]

    parts = re.split(r"^(```.*?^```)$", path.read_text(), flags=re.MULTILINE | re.DOTALL)
    for i, part in enumerate(parts):
        if part.startswith("```mermaid"):
            picture = diagram(part.removeprefix("```mermaid").removesuffix("```"), path)
            parts[i] = f'@htmlonly[block]<div class="diagram">{picture}</div>@endhtmlonly' + "\n" * part.count("\n")
        elif not part.startswith("```"):
            part = re.sub(r"(?<!`)`([^`]+)`(?!`)", span, part)
            part = re.sub(r"(!?\[[^]]*\])\(([^)\s]*)\)", link, part)
            parts[i] = re.sub(r"^(#+) (.*)$", lambda match: heading(match, name, seen), part, flags=re.MULTILINE)
    return "".join(parts)


def main(folder, version):
    for name, text, group in headers(version):
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(header(text, group))
    pages = [ROOT / name for name in DOCUMENTS] + sorted((ROOT / "docs").glob("*.md"))
    links = re.findall(r"\]\(([\w/]+\.md)\)", (ROOT / "README.md").read_text().partition("\n## Documentation\n")[2])
    order = [ROOT / name for name in dict.fromkeys(links)] + pages[1:]
    guides = "".join(f"- @subpage {page_name(page)}\n" for page in dict.fromkeys(order))
    (folder / "guides.md").write_text("# Guides {#guides}\n\n" + guides)
    for page in pages:
        (folder / f"{page_name(page)}.md").write_text(document(page, pages))
    shutil.copy(ROOT / "docs/reference/reference.dox", folder)
    shutil.copytree(ROOT / "docs/pictures", folder / "pictures")
    shutil.copytree(ROOT / "examples", folder / "examples")


main(pathlib.Path(sys.argv[1]), sys.argv[2])
