#!/usr/bin/env python3
"""Every link and picture in a folder's pages, Markdown and HTML, leads to a file of that folder, and to
a place in it.
  links_test.py FOLDER
In the source tree, a picture may also be one that scripts/docs.sh or a command on the page makes; no two
commands make the same one."""
import re
import sys
from html import unescape
from pathlib import Path
from urllib.parse import unquote

ROOT = Path(sys.argv[1]).resolve()
MAKER = ROOT / "scripts/docs.sh"
LINK = {".md": r"\]\(([^()\s]+)\)", ".html": r"<[^>]*?\b(?:href|src|data)=\"([^\"]*)\""}
CODE = r"^```.*?^```|`[^`\n]*`"
MADE = r"<br>`[^`]*` \| !\[[^]]*\]\(([^)]*)\)"  # by the command below which it is shown


def pages():
    """Of the source tree only its documents: its builds have pages of others."""
    places = ["*.md", "docs/*"] if MAKER.exists() else ["**/*"]
    return sorted(path for place in places for path in ROOT.glob(place) if path.suffix in LINK)


def links(page):
    text = page.read_text(encoding="utf-8")
    if page.suffix == ".md":
        text = re.sub(CODE, "", text, flags=re.M | re.S)
    return [link for link in re.findall(LINK[page.suffix], text) if not re.match(r"[a-z]+:", link)]


def places(path):
    text = path.read_text(encoding="utf-8")
    headings = re.findall(r"^#+ (.*)", text, re.M) if path.suffix == ".md" else []
    return {re.sub(r"[^\w -]", "", heading).strip().lower().replace(" ", "-") for heading in headings} | \
        set(re.findall(r"\b(?:id|name)=\"([^\"]*)\"", text))


def is_made(page, name):
    commands = MAKER.read_text() + " ".join(re.findall(CODE, page.read_text(encoding="utf-8"), re.M | re.S))
    return name.endswith(".png") and f" {name}" in commands


def is_alive(page, link):
    file, _, place = unquote(unescape(link)).partition("#")
    target = (page.parent / file).resolve() if file else page
    if not target.exists() or not target.is_relative_to(ROOT):
        return MAKER.exists() and is_made(page, file)
    return not place or target.suffix not in LINK or place in places(target)


found = [(page, link) for page in pages() for link in links(page)]
dead = sorted({(str(page.relative_to(ROOT)), link) for page, link in found if not is_alive(page, link)})
for page, link in dead:
    print(f"{page}: {link} is not there")
made = [picture for page in pages() if page.suffix == ".md" for picture in re.findall(MADE, page.read_text("utf-8"))]
twice = sorted({picture for picture in made if made.count(picture) > 1})
print(f"{len(found)} links, {len(dead)} of them dead; {len(made)} commands for a picture, made twice: {twice}")
sys.exit(1 if dead or twice or len(found) < 20 else 0)
