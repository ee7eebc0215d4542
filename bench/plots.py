"""Curves over the number of items of a feed as an SVG picture that can be read on a light and on a dark page."""

import math
from html import escape

WIDTH, HEIGHT = 760, 380
LEFT, RIGHT, TOP, BOTTOM = 70, 590, 50, 330  # of the plane the curves lie in; to its right stand their names
COLOURS = ("#2f7ed8", "#d9541e", "#2a9d55", "#9b59b6", "#888888")
NAME_HEIGHT = 18
DASHES = ("", "8 3", "3 3", "10 3 3 3", "1 4")  # for those who do not tell the colours apart


# What may stand beside an axis.
STEPS = [step * 10.0 ** decade for decade in range(-3, 9) for step in (1, 2, 5)]


def _ticks(values):
    """The steps from that below the least value to that above the largest one; of many only the ends and the powers of ten."""
    first = max(at for at, step in enumerate(STEPS) if step <= min(values))
    last = min(at for at, step in enumerate(STEPS) if step >= max(values))
    return [STEPS[at] for at in range(first, last + 1) if last - first < 8 or at % 3 == 0 or at in (first, last)]


def _names(ends):
    """Heights for the names, near those of the ends of their curves and apart from each other."""
    heights, free = {}, TOP
    for name, height in sorted(ends.items(), key=lambda end: end[1]):
        heights[name] = free = max(height, free)
        free += NAME_HEIGHT
    return heights


def plot(title, unit, curves):
    """Both axes are logarithmic. `curves` has for each name its points, as pairs of items and of the unit."""
    ticks_x = _ticks([x for points in curves.values() for x, _ in points])
    ticks_y = _ticks([y for points in curves.values() for _, y in points])

    def at_x(items):
        return LEFT + math.log(items / ticks_x[0], ticks_x[-1] / ticks_x[0]) * (RIGHT - LEFT)

    def at_y(value):
        return BOTTOM - math.log(value / ticks_y[0], ticks_y[-1] / ticks_y[0]) * (BOTTOM - TOP)

    parts = [f'<text x="{LEFT}" y="22" class="title">{escape(title)}</text>',
             f'<text x="{LEFT}" y="{TOP - 9}">{escape(unit)}</text>',
             f'<text x="{RIGHT}" y="{BOTTOM + 38}" text-anchor="end">items of the feed</text>']
    for x in ticks_x:
        parts.append(f'<path class="grid" d="M{at_x(x):.1f} {TOP}V{BOTTOM}"/>'
                     f'<text x="{at_x(x):.1f}" y="{BOTTOM + 18}" text-anchor="middle">{x:,.0f}</text>')
    for y in ticks_y:
        parts.append(f'<path class="grid" d="M{LEFT} {at_y(y):.1f}H{RIGHT}"/>'
                     f'<text x="{LEFT - 8}" y="{at_y(y) + 4:.1f}" text-anchor="end">{y:,g}</text>')
    heights = _names({name: at_y(points[-1][1]) for name, points in curves.items()})
    for colour, dashes, (name, points) in zip(COLOURS, DASHES, curves.items()):
        line = " ".join(f"{at_x(x):.1f},{at_y(y):.1f}" for x, y in points)
        parts.append(f'<polyline points="{line}" stroke="{colour}" stroke-dasharray="{dashes}"/>')
        parts.extend(f'<circle cx="{at_x(x):.1f}" cy="{at_y(y):.1f}" r="3" fill="{colour}"/>' for x, y in points)
        parts.append(f'<text x="{RIGHT + 12}" y="{heights[name] + 4:.1f}" style="fill:{colour}">{escape(name)}</text>')
    style = ("text{font:13px sans-serif;fill:#1f2328}.title{font-weight:bold;font-size:15px}"
             ".grid{stroke:#8886;fill:none}polyline{fill:none;stroke-width:2}"
             "@media(prefers-color-scheme:dark){text{fill:#e6edf3}}")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" width="{WIDTH}" height="{HEIGHT}">\n'
            f"<style>{style}</style>\n" + "\n".join(parts) + "\n</svg>\n")
