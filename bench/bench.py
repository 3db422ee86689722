#!/usr/bin/python3
"""The system that bench.sh measures on, and the table of what it measured.

bench.py seed SCAN MOST                  writes its crowded registries, as a part of user.reg
bench.py seed-start                      writes what the first page shows, as a part of system.reg
bench.py report FOLDER PROGRAM...        prints the tables of what was measured into FOLDER,
                                         and saves them and the plots there
"""
import json
import math
import os
import statistics
import sys

CLASS = "{%08d-0000-4000-8000-000000000000}"
SIZES = (100, 1000, 10000, 50000)
PARTS = ("start", "work", "shell", "new", "sendto", "menus", "bars", "toolbars", "buttons",
         "helpers", "activex", "settings")
COSTLY = ("bars", "toolbars", "helpers", "activex")  # stop at 10,000 entries
IE = r"Software\Microsoft\Internet Explorer"

# What the figures may be at most: the ratio of the medians, or the difference in bytes.
LIMITS = {"start": 1.3, "scan": 1.15, "scan, shown": 1.15, "bytes at start": 1.5}
ROW_LIMIT = 400
GROWTH_LIMIT = 1.03
SIZE_LIMIT = 800_000
IDLE = 0.5  # a load up to this is none


# ---- Seeds: each scan's entries as (key, {value name: text or number}) ----

def module_class(classes, class_id, number):
    yield rf"{classes}\CLSID\{class_id}", {"": f"Class {number}"}
    yield rf"{classes}\CLSID\{class_id}\InprocServer32", {"": rf"C:\bench\{10 + number % 50}.dll"}


def entries(scan, count):
    classes = r"Machine\Software\Classes"
    for i in range(count):
        entry, class_id, file = f"Entry {i:05d}", CLASS % i, rf"C:\bench\{10 + i % 50}"
        if scan == "shell":
            if i % 4 == 1:
                yield rf"{classes}\*\shell\{entry}\Command", {"": file + ".exe %1"}
            elif i % 4 == 3:
                yield rf"{classes}\Directory\shell\{entry}", {"": entry}
                yield rf"{classes}\Directory\shell\{entry}\command", {"": file + ".exe %1"}
            else:
                yield rf"{classes}\*\shellex\ContextMenuHandlers\Entry {i // 2:05d}", {"": class_id}
        elif scan == "new":
            yield rf"{classes}\.e{i:05d}", {"": f"type{i:05d}"}
            yield rf"{classes}\.e{i:05d}\ShellNew", {"NullFile": ""}
            yield rf"{classes}\type{i:05d}", {"": f"Document of type {i}"}
            yield rf"{classes}\type{i:05d}\DefaultIcon", {"": file + ".ico,00"}
        elif scan == "menus":
            yield rf"User\{IE}\MenuExt\{entry}", {"": file + ".htm"}
        elif scan == "bars":
            yield rf"User\{IE}\Explorer Bars\{class_id}", {}
            yield from module_class(classes, class_id, i)
        elif scan == "toolbars":
            yield from module_class(classes, class_id, i)
        elif scan == "buttons":
            yield rf"Machine\{IE}\Extensions\{class_id}", {"MenuText": entry, "Exec": file + ".exe"}
        elif scan == "helpers":
            stats = r"User\Software\Microsoft\Windows\CurrentVersion\Ext\Stats"
            yield rf"{stats}\{class_id}\iexplore", {"Type": 3}
            yield from module_class(classes, class_id, i)
        elif scan == "activex":
            units = r"Machine\Software\Microsoft\Code Store Database\Distribution Units"
            yield rf"{units}\{class_id}", {}
            yield from module_class(classes, class_id, i)
    if scan == "toolbars":
        yield rf"Machine\{IE}\Toolbar", {CLASS % i: "A toolbar" for i in range(count)}
    if scan == "bars":
        approved = r"Machine\Software\Microsoft\Windows\CurrentVersion\Shell Extensions\Approved"
        yield approved, {CLASS % (90000 + i): "Approved" for i in range(100)}


def settings():
    url = "http://hijacked.example/"
    main = dict.fromkeys(("Start Page", "Search Page", "Default_Page_URL", "Local Page",
                          "Search Bar", "Default_Search_URL"), url)
    for root in ("User", "Machine"):
        yield rf"{root}\{IE}\Main", main
        yield rf"{root}\{IE}\SearchUrl", {"": url}
    yield rf"Machine\{IE}\Search", dict.fromkeys(("CustomizeSearch", "SearchAssistant"), url)
    yield rf"Machine\{IE}\AboutURLs", dict.fromkeys(
        ("blank", "DesktopItemNavigationFailure", "NavigationCanceled", "NavigationFailure",
         "OfflineInformation", "PostNotCached"), url)


def write(prefix, keys):
    def quoted(text):
        return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'
    lines = []
    for key, values in keys:
        lines.append("\n[" + (prefix + key).replace("\\", "\\\\") + "] 1700000000")
        for name, value in values.items():
            shown = f"dword:{value:08x}" if isinstance(value, int) else quoted(value)
            lines.append(f"{quoted(name) if name else '@'}={shown}")
    sys.stdout.write("\n".join(lines) + "\n")


def seed(scan, most):
    if scan == "work":
        seed("shell", most)
    if scan in ("settings", "work"):
        write("Software\\TarvelinBench\\settings\\22\\", settings())
        return
    for size in SIZES:
        if size <= most and not (scan in COSTLY and size > 10000):
            write(rf"Software\TarvelinBench\{scan}\{size}" + "\\", entries(scan, size))


def seed_start():
    handlers = r"Software\Classes\*\shellex\ContextMenuHandlers"
    write("", ((rf"{handlers}\Entry {i:05d}", {"": CLASS % i}) for i in range(60)))


# ---- Report ----

def spread(values):
    low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else (values[0],) * 3
    return low, statistics.median(values), high


def shown(value):
    return f"{value:,.0f}" if value >= 1000 else f"{value:.4g}"


def exponent(points):
    (x0, y0), (x1, y1) = points[0], points[-1]
    return math.log(y1 / y0) / math.log(x1 / x0)


def read_pairs(path):
    """{(group, item, size): ([floors], [programs])} in the order of the file, and the load."""
    figures = {}
    with open(path, encoding="utf-8") as file:
        load = float(file.readline().split("\t")[1])
        for line in file:
            group, item, size, floor, program = line.rstrip("\n").split("\t")
            floors, programs = figures.setdefault((group, item, int(size)), ([], []))
            floors.append(float(floor))
            programs.append(float(program))
    return figures, load


def verdict(value, limit, idle):
    if limit is None:
        return ""
    if not idle:
        return f"(limit {limit:,})"
    return f"limit {limit:,}: " + ("kept" if value <= limit else "NOT KEPT")


def table(figures, idle):
    yield f"{'':20}{'':20}{'entries':>8}  {'floor: median (quartiles)':>30}  " \
          f"{'program: median (quartiles)':>30}  {'ratio':>6}"
    for (group, item, size), (floors, programs) in figures.items():
        (low, floor, high), (own_low, own, own_high) = spread(floors), spread(programs)
        if group == "bytes of a row":
            # Of few rows most is what is needed once.
            result, limit = own - floor, ROW_LIMIT if size >= 1000 else None
            ratio = f"+{result:.0f}"
        else:
            result, limit = own / floor, LIMITS.get(group)
            ratio = f"{result:.3f}"
        bare = f"{shown(floor)} ({shown(low)}-{shown(high)})"
        full = f"{shown(own)} ({shown(own_low)}-{shown(own_high)})"
        yield f"{group:20}{item:20}{size:>8,}  {bare:>30}  {full:>30}  {ratio:>6}  " \
              f"{verdict(result, limit, idle[group, item])}"


def curves(figures):
    """{(group, item): [(size, floor, program)]} of what was measured at several sizes."""
    by_item = {}
    for (group, item, size), (floors, programs) in figures.items():
        if not group.startswith("bytes"):
            by_item.setdefault((group, item), []).append(
                (size, statistics.median(floors), statistics.median(programs)))
    return {key: points for key, points in by_item.items() if len(points) > 1}


def growth(figures, idle):
    for (group, item), points in curves(figures).items():
        floor = exponent([(size, bare) for size, bare, _ in points])
        own = exponent([(size, program) for size, _, program in points])
        limit = GROWTH_LIMIT if group.startswith("scan") else None
        yield f"{group:20}{item:20} floor {floor:.3f}, program {own:.3f}  " \
              f"{verdict(own, limit, idle[group, item])}"


def portable(path):
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    points, speeds = {}, {}
    for run in runs:
        name, size = run["name"].split("/")
        points.setdefault(name, []).append((int(size), run["cpu_time"] / 1000))
        if "bytes_per_second" in run:
            speeds[name] = run["bytes_per_second"] / 1e6
    for name, times in points.items():
        figures = ", ".join(f"{size:,}: {shown(time)} us" for size, time in times)
        speed = f", {speeds[name]:.0f} MB/s" if name in speeds else ""
        yield f"{name:20}{figures}; growth exponent {exponent(times):.3f}{speed}"


def plot(item, series):
    """An SVG of time against size, both logarithmic; a pair of curves for each group."""
    width, height, left, bottom, top = 520, 360, 70, 320, 30
    times = [value for points in series.values() for _, bare, own in points for value in (bare, own)]
    sizes = [size for points in series.values() for size, _, _ in points]
    low, high = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))
    first, last = math.log10(min(sizes)), math.log10(max(sizes))

    def at(size, time):
        return (left + (math.log10(size) - first) / (last - first) * (width - left - 30),
                bottom - (math.log10(time) - low) / (high - low) * (bottom - top))

    yield f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" ' \
          'font-family="sans-serif" font-size="12">'
    yield f'<rect width="{width}" height="{height}" fill="white"/>'
    yield f'<text x="{left}" y="18">{item}: milliseconds against entries</text>'
    for power in range(low, high + 1):
        _, y = at(min(sizes), 10 ** power)
        yield f'<path d="M{left} {y:.1f}H{width - 30}" stroke="#ddd"/>' \
              f'<text x="{left - 6}" y="{y + 4:.1f}" text-anchor="end">{10.0 ** power:,g}</text>'
    for size in sorted(set(sizes)):
        x, _ = at(size, 10 ** low)
        yield f'<text x="{x:.1f}" y="{bottom + 18}" text-anchor="middle">{size:,}</text>'
    colours = iter(("#888888", "#1f5fbf", "#bbbb55", "#bf3f1f"))
    row = top + 14
    for group, points in series.items():
        for column, name in ((1, f"{group}: floor"), (2, f"{group}: program")):
            colour = next(colours)
            line = " ".join("{:.1f},{:.1f}".format(*at(p[0], p[column])) for p in points)
            yield f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="1.5"/>' \
                  f'<text x="{left + 10}" y="{row}" fill="{colour}">{name}</text>'
            row += 15
    yield "</svg>"


def report(folder, programs):
    figures, loads, idle = {}, {}, {}
    for part in PARTS:
        path = os.path.join(folder, part + ".tsv")
        if os.path.exists(path):
            of_part, loads[part] = read_pairs(path)
            figures.update(of_part)
            idle.update({key[:2]: loads[part] <= IDLE for key in of_part})
    lines = ["Load of the last minute before: " +
             ", ".join(f"{part} {load}" for part, load in loads.items()) + "."]
    if not all(idle.values()):
        lines.append(f"Where it was above {IDLE} the machine was not idle: no limit is judged there, "
                     "and the figures tell little.")
    lines += ["", "Milliseconds, or bytes where the group says so", *table(figures, idle)]
    lines += ["", "Growth exponents, from the smallest to the largest size", *growth(figures, idle)]
    lines += ["", "Portable logic", *portable(os.path.join(folder, "portable.json"))]
    lines += ["", "Size in bytes"]
    lines += [f"{path:40}{os.path.getsize(path):>10,}  "
              f"{verdict(os.path.getsize(path), SIZE_LIMIT, True)}" for path in programs]
    text = "\n".join(lines) + "\n"
    sys.stdout.write(text)
    with open(os.path.join(folder, "report.txt"), "w", encoding="utf-8") as file:
        file.write(text)
    scans = {}
    for (group, item), points in curves(figures).items():
        if group.startswith("scan"):
            scans.setdefault(item, {})[group] = points
    for item, series in scans.items():
        with open(os.path.join(folder, item + ".svg"), "w", encoding="utf-8") as file:
            file.write("\n".join(plot(item, series)) + "\n")


if __name__ == "__main__":
    command, *arguments = sys.argv[1:] or [""]
    if command == "seed" and len(arguments) == 2:
        seed(arguments[0], int(arguments[1]))
    elif command == "seed-start":
        seed_start()
    elif command == "report" and len(arguments) > 1:
        report(arguments[0], arguments[1:])
    else:
        sys.exit(__doc__)
