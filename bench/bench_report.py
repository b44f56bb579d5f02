"""What scripts/bench shows: the table at a terminal and in docs/performance.md, and the picture."""
import platform
import re
import subprocess

from bench_rows import SECTIONS

BEGIN = "<!-- what follows was written by scripts/bench --update -->"
END = "<!-- end of what scripts/bench wrote -->"


def duration(nanoseconds):
    if not nanoseconds:
        return ""
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def shown(measure, value):
    """A result in the unit of its row."""
    if value is None:
        return ""
    if measure == "ns":
        return duration(value)
    if measure == "added ns":
        return f"+{value:.0f} ns"
    if measure == "MiB":
        return f"{value:.1f} MiB"
    return f"{value:.2f}"


def cells(row, result):
    measure = result["measure"]
    spread = f"{shown(measure, result['low'])} - {shown(measure, result['high'])}"
    if result["low"] == result["high"]:
        spread = ""
    return [row.title, duration(result["library_ns"]), duration(result["floor_ns"]),
            shown(measure, result["result"]), spread, shown(measure, row.wanted)]


def measured_sections(results):
    for title, rows in SECTIONS:
        found = [(row, results[row.id]) for row in rows if row.id in results]
        if found:
            yield title, found


HEADINGS = ["work", "library", "floor", "result", "quartiles", "wanted"]


def terminal_table(results):
    lines = []
    for title, rows in measured_sections(results):
        lines.append(title)
        for row, result in rows:
            line = cells(row, result)
            lines.append("  {:<44}{:>10}{:>10}{:>10}  {:<20}{:>8}".format(*line))
    head = "  {:<44}{:>10}{:>10}{:>10}  {:<20}{:>8}".format(*HEADINGS)
    return "\n".join([head, *lines])


def markdown_table(results):
    lines = []
    for title, rows in measured_sections(results):
        lines += [f"### {title}", "", f"| {' | '.join(HEADINGS)} | the floor |",
                  "|---|---:|---:|---:|---|---:|---|"]
        for row, result in rows:
            lines.append(f"| {' | '.join(cells(row, result))} | {result['floor']} |")
        lines.append("")
    return "\n".join(lines)


def first_line(*command):
    try:
        return subprocess.run(command, text=True, capture_output=True).stdout.splitlines()[0]
    except (OSError, IndexError):
        return "not installed"


def machine():
    """The kind of machine, without its name."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        text = file.read()
    models = re.findall(r"^model name\s*: (.*)$", text, re.MULTILINE)
    system = re.search(r'PRETTY_NAME="(.*)"', open("/etc/os-release", encoding="utf-8").read())[1]
    return {
        "processor": f"{models[0]}, {len(models)} cores",
        "system": f"{system}, Linux {platform.release().split('-')[0]}",
        "compiler": first_line("g++", "--version"),
        "compiler for Windows": first_line("x86_64-w64-mingw32-g++-posix", "--version"),
        "Wine": first_line("/usr/lib/wine/wine64", "--version"),
        "libcrypto": first_line("openssl", "version").split(" (")[0],
        "pkcs11-tool": "OpenSC " + first_line("dpkg-query", "-W", "-f", "${Version}", "opensc"),
        "SoftHSM2": first_line("dpkg-query", "-W", "-f", "${Version}", "softhsm2"),
    }


def write_document(path, kind, date, results, peers):
    """Replaces what stands between the two marks."""
    text = path.read_text(encoding="utf-8")
    head, _, rest = text.partition(BEGIN)
    _, _, tail = rest.partition(END)
    lines = [f"Measured on {date}:", ""]
    lines += [f"- {name}: {value}" for name, value in kind.items()]
    lines += ["", markdown_table(results)]
    if peers:
        lines += ["### Peers, to the same bare calls", "", peers_table(peers), ""]
    path.write_text(f"{head}{BEGIN}\n\n" + "\n".join(lines) + f"\n{END}{tail}", encoding="utf-8")


def peers_table(peers):
    lines = ["| work | the bare calls | the library | " + " | ".join(peers["names"]) + " |",
             "|---|---:|---:|" + "---:|" * len(peers["names"])]
    for title, times in peers["rows"]:
        floor = times[0]
        line = [f"{duration(time)} ({time / floor:.2f})" if time else "not run" for time in times[1:]]
        lines.append(f"| {title} | {duration(floor)} | {' | '.join(line)} |")
    return "\n".join(lines)


PICTURE = """
set terminal svg size 860,{height} font "sans,12" background rgb "white"
set output "{output}"
set title "The library's time as a ratio to its floor (1 is the floor; quartiles as lines)"
set logscale x 2
set xrange [0.125:*]
set yrange [{rows}-0.4:-0.6]
set xtics nomirror
set ytics nomirror
unset key
set border 1
set grid xtics lc rgb "#dddddd"
set lmargin 46
set arrow from 1,graph 0 to 1,graph 1 nohead lc rgb "#666666" dt 2
$rows << END
{data}
END
set style fill solid
plot $rows using 2:1:3:4:ytic(6) with xerrorbars pt 7 ps 0.7 lc rgb "#2f6f4f", \\
     $rows using 5:1 with points pt 2 ps 0.7 lw 2 lc rgb "#b05020"
"""


def draw_picture(path, results):
    """The ratios, by gnuplot: a dot for each, a cross for what is wanted."""
    rows = [(row, result) for _, found in measured_sections(results) for row, result in found
            if result["measure"] == "ratio" and result["floor_ns"] and "growth" not in row.id]
    data = []
    for index, (row, result) in enumerate(rows):
        wanted = row.wanted if row.wanted else "NaN"
        title = row.title.replace("`", "").replace("_", "\\\\_")
        begin = "Wine: " if row.id.startswith("windows/") else ""
        data.append(f'{index} {result["result"]} {result["low"]} {result["high"]} {wanted} '
                    f'"{begin}{title}"')
    script = PICTURE.format(output=path, rows=len(rows), data="\n".join(data),
                            height=90 + 20 * len(rows))
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
