#!/usr/bin/env python3
"""Puts the benchmark's output into docs/performance-tables.md, what a reader wants first of it into
docs/performance.md, and draws docs/performance.svg.

  scripts/bench.sh > FILE; scripts/performance.py FILE
"""
import math
import re
import sys
from html import escape
from pathlib import Path

DOCS = Path(__file__).parent.parent / "docs"
NAME, DATA, CELL = 35, 22, 17  # columns of text that the benchmark prints
PLAIN = "one table, plainly"  # neither the build that we have nor another library's
OURS = {"portable", "128 bits", "256 bits", "ours", "one call", "eight bands"}


def read_cells(line, columns):
    """Nanoseconds and times the loop; a gap is as wide as a column, but a large ratio may be wider."""
    cells, at = {}, NAME + DATA
    for column in columns:
        if cell := re.compile(r" {1,9}([\d.]+) \( *([\d.]+)\)").match(line, at):
            cells[column] = float(cell[1]), float(cell[2])
        at = cell.end() if cell else at + CELL
    return cells


def read_tables(text):
    """Yields a title, the printed lines, and for each line its name, data and {column: cell}."""
    for block in text.strip("\n").split("\n\n"):
        title, head, *lines = block.split("\n")
        columns = re.split(r" {2,}", head[:head.index("   x ")].strip())
        parsed = [(line[:NAME].strip(), line[NAME:NAME + DATA].strip(), read_cells(line, columns)) for line in lines]
        yield title.split(":")[0], [head, *lines], parsed


def whole_frames(lines):
    """One line an operation, on a whole frame, of soft pixels where there is a choice: its name,
    data, slowest and fastest build, and the best peer's name and cell."""
    found = {}
    for name, data, cells in lines:
        if data.startswith("1920x") and (
                name not in found or data.endswith("soft") or data.endswith("1280x720")):
            found[name] = data, cells
    for name, (data, cells) in found.items():
        ours = [cells[c] for c in cells if c in OURS]
        peers = {c: cell for c, cell in cells.items() if c not in OURS and c != PLAIN}
        best = min(peers, key=lambda c: peers[c][0], default=None)
        yield name, data.partition(" ")[2], ours[0], ours[-1], best, peers.get(best)


def by_size(lines):
    """An operation a row, its time on one processor and on all at each size of picture. One call uses
    all processors where the operation has threads; the others are given bands."""
    rows = {}
    for name, size, cells in lines:
        for column, (ns, _) in cells.items():
            operation, _, all_threads = name.partition(", all ")
            in_bands = ", in bands" if column == "eight bands" else ""
            row = rows.setdefault((operation + in_bands, bool(all_threads)), {})
            row[size.replace("x", " × ")] = f"{ns:.3g}"
    sizes = list(next(iter(rows.values())))
    out = [f"| | processors | {' | '.join(sizes)} |", "|---|---" + "|---:" * len(sizes) + "|"]
    rows = {key: times for key, times in rows.items() if not key[1] or (key[0] + ", in bands", True) not in rows}
    for (operation, all_threads), times in sorted(rows.items(), key=lambda row: (int(row[0][0].split()[0]), row[0])):
        out.append(f"| {operation} | {'all' if all_threads else 'one'} | {' | '.join(times.values())} |")
    return "\n".join(out)


def summary(lines):
    if "one call" in lines[0][2]:
        return by_size(lines)
    rows = ["| | of | ns | times the loop | best peer, ns |", "|---|---|---:|---:|---:|"]
    for name, data, _, (ns, ratio), best, peer in whole_frames(lines):
        beside = f"{best} {peer[0]:.2f}" if peer else ""
        rows.append(f"| {name} | {data} | {ns:.3g} | {ratio:.2g} | {beside} |")
    return "\n".join(rows)


def chart_rows(tables):
    """One row a method: the first of its lines."""
    rows = {}
    for _, _, lines in tables:
        for name, data, portable, ours, best, peer in whole_frames(lines):
            rows.setdefault(name.split()[0], (", ".join(filter(None, (name, data))), portable[1], ours[1], best, peer and peer[1]))
    return [row for _, row in sorted(rows.items(), key=lambda item: int(item[0]))]


def draw(rows):
    left, width, step, top = 320, 560, 18, 60
    least, most = 0.2, 500.0
    x = lambda ratio: left + width * math.log(max(least, min(most, ratio)) / least) / math.log(most / least)
    height = top + step * len(rows) + 20
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 90} {height}" '
           'font-family="sans-serif" font-size="11">',
           '<rect width="100%" height="100%" fill="white"/>',
           '<text x="10" y="18" font-size="14">Times the streaming loop that moves the same bytes '
           '(1920 × 1080, one processor; shorter is faster)</text>',
           f'<rect x="10" y="28" width="12" height="10" fill="#2b6cb0"/><text x="26" y="37">fastest build</text>',
           f'<circle cx="116" cy="33" r="4" fill="#a0aec0"/><text x="124" y="37">portable build</text>',
           f'<circle cx="216" cy="33" r="4" fill="#dd6b20"/><text x="224" y="37">best of the other libraries</text>']
    for tick in (0.5, 1, 2, 5, 10, 20, 50, 100, 200):
        out.append(f'<line x1="{x(tick):.1f}" x2="{x(tick):.1f}" y1="{top - 4}" y2="{height - 14}" '
                   f'stroke="{"#4a5568" if tick == 1 else "#e2e8f0"}"/>'
                   f'<text x="{x(tick):.1f}" y="{top - 8}" text-anchor="middle">{tick:g}</text>')
    for i, (label, portable, ours, best, peer) in enumerate(rows):
        y = top + step * i
        out.append(f'<text x="{left - 6}" y="{y + 12}" text-anchor="end">{escape(label)}</text>'
                   f'<rect x="{left}" y="{y + 3}" width="{x(ours) - left:.1f}" height="11" fill="#2b6cb0"/>'
                   f'<circle cx="{x(portable):.1f}" cy="{y + 8.5}" r="4" fill="#a0aec0"/>')
        if peer:
            out.append(f'<circle cx="{x(peer):.1f}" cy="{y + 8.5}" r="4" fill="#dd6b20"/>'
                       f'<text x="{x(peer) + 7:.1f}" y="{y + 12}" fill="#9c4221" stroke="white" stroke-width="3" paint-order="stroke">{escape(best)}</text>')
    return "\n".join(out + ["</svg>"]) + "\n"


def main():
    tables = list(read_tables(Path(sys.argv[1]).read_text()))
    long = "".join(f"## {title}\n\n```text\n" + "\n".join(map(str.rstrip, printed)) + "\n```\n\n"
                   for title, printed, _ in tables)
    short = "".join(f"### {title}\n\n{summary(lines)}\n\n" for title, _, lines in tables if summary(lines).count("\n") > 1)
    for page, text in (("performance.md", short), ("performance-tables.md", long)):
        begin, end = "<!-- tables: scripts/performance.py -->\n", "<!-- end of tables -->"
        content = (DOCS / page).read_text()
        (DOCS / page).write_text(re.sub(begin + ".*" + end, lambda _: begin + "\n" + text + end, content, flags=re.S))
    (DOCS / "performance.svg").write_text(draw(chart_rows(tables)))


if __name__ == "__main__":
    main()
