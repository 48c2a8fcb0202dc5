#!/usr/bin/env python3
"""Makes charts of a table of benchmarks, docs/charts/*.svg, and the part of docs/performance.md that shows them.

    report.py [--check]

reads bench/results.txt: lines "machine: ...", "date: ..." and "size: ...", and behind an empty line what table.py prints. With --check nothing
is written: what differs from the table is named."""
import collections
import html
import math
import pathlib
import re
import sys

from table import readable_ratio

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "bench/results.txt"
PAGE = ROOT / "docs/performance.md"
BEGIN, END = "<!-- made by bench/report.py -->\n", "<!-- end of what is made -->\n"

# The chart that a case stands in: the first whose pattern begins it.
CHARTS = [
    ("Errors", r"error"),
    ("Lists", r"list|sort of"),
    ("Trees", r"tree"),
    ("Tries", r"trie"),
    ("Maps", r"map"),
    ("Bits", r".* 1e8 bits|next set"),
    ("Objects", r"connect|emit|create with|add and destroy|destroy"),
    ("Formatting", r"format"),
    ("Texts", r"comparison|copy of|appending|UTF-8|replacement|text to|to base|from base|shortest"),
    ("Checksums", r"crc|sha1"),
    ("Images", r"read |write |wide read |histogram|entropy|density|intensity|circle|smooth"),
    ("Files", r"walk"),
    ("Line editor", r"key and"),
    ("Start", r"start"),
    ("C++", r""),
]

STYLE = """
  text { font: 12px system-ui, sans-serif; fill: #1f2328 } .small { font-size: 11px; fill: #57606a } .title { font-weight: 600 }
  .gain { fill: #2da44e } .loss { fill: #cf222e } .limit { fill: #ffffff; stroke: #8250df; stroke-width: 1.5 }
  .grid { stroke: #d0d7de } .one { stroke: #57606a; stroke-width: 1.5 }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3 } .small { fill: #8b949e } .gain { fill: #3fb950 } .loss { fill: #ff7b72 } .limit { fill: #0d1117; stroke: #d2a8ff }
    .grid { stroke: #30363d } .one { stroke: #8b949e }
  }
"""
LABELS, PLOT, NOTES, ROW = 370, 300, 190, 20  # pixels
LEAST, MOST = 1 / 8, 64.0

Case = collections.namedtuple("Case", "name ours peer_time peer ratio limit_time limit share")


def read_results():
    """What is known of the run, and its cases in the order of the table: those that we lose first."""
    known, _, table = RESULTS.read_text().partition("\n\n")
    facts = dict(line.split(": ", 1) for line in known.splitlines())
    head, *lines = table.splitlines()
    limits = head.index("  limit ") + 2
    cases = []
    for line in lines:
        if not line.strip():
            break
        fields = re.split(r"  +", line.rstrip())
        peer = fields[2:5] if len(fields) > 2 and line.find("  " + fields[2]) + 2 < limits else ["", "", ""]
        limit = fields[-3:] if len(line) > limits else ["", "", ""]
        cases.append(Case(*fields[:2], *peer[:2], float(peer[2] or 0), *limit[:2], float(limit[2] or 0)))
    return facts, cases


def chart_of(case):
    return next(name for name, pattern in CHARTS if re.match(pattern, case.name))


def place(ratio):
    """The column of a ratio, on a logarithmic scale."""
    share = math.log(min(max(ratio, LEAST), MOST) / LEAST) / math.log(MOST / LEAST)
    return LABELS + share * PLOT


def draw_case(case, top):
    middle = top + ROW / 2 + 4
    shown = f'<text x="{LABELS - 10}" y="{middle}" text-anchor="end">{html.escape(case.name)}</text>\n'
    note = []
    if case.peer:
        left, right = sorted((place(1), place(case.ratio)))
        kind = "gain" if case.ratio >= 1 else "loss"
        shown += f'<rect class="{kind}" x="{left:.1f}" y="{top + 4}" width="{max(right - left, 1):.1f}" height="{ROW - 8}" rx="2"/>\n'
        note.append(f"{readable_ratio(case.ratio)} {case.peer}")
    if case.limit:
        x, y = place(case.share), top + ROW / 2
        shown += f'<path class="limit" d="M{x - 4:.1f} {y} L{x:.1f} {y - 5} L{x + 4:.1f} {y} L{x:.1f} {y + 5} Z"/>\n'
    if not case.peer and case.limit:
        note.append(f"{readable_ratio(case.share)} of {case.limit}")
    return shown + f'<text class="small" x="{LABELS + PLOT + 10}" y="{middle}">{html.escape("; ".join(note) or case.ours)}</text>\n'


def draw(title, cases):
    width, height = LABELS + PLOT + NOTES, len(cases) * ROW + 58
    shown = f'<text class="title" x="10" y="18">{title}: the time of the best peer / ours; diamonds: limit / ours</text>\n'
    for power in range(-3, 7):
        x, label = place(2.0 ** power), f"1/{2 ** -power}" if power < 0 else str(2 ** power)
        shown += f'<line class="{"grid" if power else "one"}" x1="{x:.1f}" y1="30" x2="{x:.1f}" y2="{height - 20}"/>\n'
        shown += f'<text class="small" x="{x:.1f}" y="{height - 6}" text-anchor="middle">{label}</text>\n'
    for row, case in enumerate(cases):
        shown += draw_case(case, 32 + row * ROW)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" role="img">\n'
            f"<title>{title}: {len(cases)} cases beside their peers and limits</title>\n<style>{STYLE}</style>\n{shown}</svg>\n")


def row_of(case):
    peer = f"{case.peer}, {case.peer_time} | {readable_ratio(case.ratio)}" if case.peer else " | "
    limit = f"{case.limit}, {case.limit_time} | {readable_ratio(case.share)}" if case.limit else " | "
    return f"| {case.name} | {case.ours} | {peer} | {limit} |\n"


def table_of(cases):
    return "| Case | Ours | Best peer | Peer / ours | Limit | Limit / ours |\n|---|--:|---|--:|---|--:|\n" + "".join(map(row_of, cases))


def make():
    """The files, by their paths."""
    facts, cases = read_results()
    charts = {}
    for case in cases:
        charts.setdefault(chart_of(case), []).append(case)
    made = {}
    compared = [case for case in cases if case.peer]
    lost = [case for case in compared if case.ratio < 1]
    text = (f"Measured {facts['date']} on {facts['machine']}. Of {len(compared)} cases beside a peer, {len(compared) - len(lost)} are as fast as the "
            f"best one or faster, and {len(lost)} are slower. {facts['size']}.\n\n## Where we lose\n\n{table_of(lost)}\n## All cases\n\n")
    for title, _ in CHARTS:
        if title in charts:
            file = f"docs/charts/{title.lower().replace('+', 'p').replace(' ', '-')}.svg"
            made[ROOT / file] = draw(title, charts[title])
            text += f"![{title}: the time of the best peer divided by ours, case by case]({file.removeprefix('docs/')})\n\n"
    text += f"<details><summary>The same in numbers</summary>\n\n{table_of([case for case in cases if case not in lost])}\n</details>\n\n"
    page = PAGE.read_text()
    made[PAGE] = page[:page.index(BEGIN) + len(BEGIN)] + text + page[page.index(END):]
    return made


def main():
    made = make()
    if "--check" in sys.argv:
        wrong = [str(path.relative_to(ROOT)) for path, text in made.items() if not path.exists() or path.read_text() != text]
        print("".join(f"{path} does not show bench/results.txt; bench/report.py mends it\n" for path in wrong), end="")
        return 1 if wrong else 0
    (ROOT / "docs/charts").mkdir(exist_ok=True)
    for path, text in made.items():
        path.write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
