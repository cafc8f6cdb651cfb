"""Drawings that open the pages of classes, in the colours of the page: each function gives the lines of an SVG."""


def arrow(x1, y1, x2, y2, kind="ink"):
    """A line with a head of 10 units at its end."""
    length = ((x2 - x1) ** 2 + (y2 - y1) ** 2) ** 0.5
    ux, uy = (x2 - x1) / length, (y2 - y1) / length
    bx, by = x2 - 10 * ux, y2 - 10 * uy
    tip = "accent-tip" if kind == "accent" else "tip"
    return (f'<path class="{kind}" d="M{x1} {y1} L{bx:.1f} {by:.1f}"/>'
            f'<path class="{tip}" d="M{x2} {y2} L{bx - 4 * uy:.1f} {by + 4 * ux:.1f} L{bx + 4 * uy:.1f} {by - 4 * ux:.1f} Z"/>')


def text(x, y, words, anchor="middle"):
    return f'<text x="{x}" y="{y}" text-anchor="{anchor}">{words}</text>'


def dot(x, y):
    return f'<circle class="dot" cx="{x}" cy="{y}" r="4.5"/>'


def plane():
    """Axis 1 to the right, axis 2 to the back, the normal up or down as v x u has it."""
    return "0 0 520 250", [
        '<path class="face" d="M40 190 L330 190 L480 90 L190 90 Z"/><path class="thin" d="M40 190 L330 190 L480 90 L190 90 Z"/>',
        arrow(170, 160, 330, 160), text(340, 165, "axis1 (s)", "start"),
        arrow(170, 160, 260, 100), text(268, 98, "axis2 (t)", "start"),
        arrow(170, 160, 170, 235, "accent"), text(182, 240, "normal = axis2 × axis1", "start"),
        dot(170, 160), text(160, 150, "origin", "end"),
        '<path class="thin" stroke-dasharray="4 4" d="M266 160 L311 130 L215 130"/>', dot(311, 130),
        text(322, 136, "origin + s axis1 + t axis2", "start"),
    ]


def rotation():
    """The axis towards the reader, a positive angle clockwise."""
    return "0 0 520 230", [
        '<circle class="thin" cx="150" cy="115" r="80"/>', '<circle class="ink" cx="150" cy="115" r="8"/>', dot(150, 115),
        text(140, 150, "axis, towards", "end"), text(140, 168, "you", "end"),
        arrow(158, 115, 230, 115), text(242, 120, "+x", "start"),
        arrow(157, 121, 207, 171, "accent"), text(214, 186, "rotate(axis, angle)", "start"),
        '<path class="accent" d="M206 115 A56 56 0 0 1 193 150"/>',
        '<path class="accent-tip" d="M188 157 L198 151 L190 144 Z"/>', text(246, 146, "angle &gt; 0", "start"),
        arrow(150, 107, 150, 35), text(150, 26, "+y"),
        text(370, 60, "Seen from the tip of the axis,"), text(370, 82, "a positive angle is clockwise."),
    ]


def wrapped():
    """A matrix of three columns and two rows, and where indices beyond it lead."""
    out = []
    for y in range(-0, 3):
        for x in range(5):
            inside = x < 3 and y < 2
            left, top = 90 + 84 * x, 30 + 54 * y
            out.append(f'<rect class="{"face" if inside else "thin"}" {"" if inside else "stroke-dasharray=" + chr(34) + "3 4" + chr(34)} '
                       f'x="{left}" y="{top}" width="84" height="54"/>')
            if inside:
                out.append(f'<rect class="ink" x="{left}" y="{top}" width="84" height="54"/>')
            out.append(text(left + 42, top + 32, f"({x % 3}, {y % 2})"))
    out += [text(90 + 84 * x + 42, 20, f"x = {x}") for x in range(5)]
    out += [text(80, 30 + 54 * y + 32, f"y = {y}", "end") for y in range(3)]
    return "0 0 520 205", out


def curvature():
    """A parabola y = x^2 / 160 turned up, its vertex circle, and the vector from curve to centre."""
    points = [(260 + t, 190 - t * t / 160) for t in range(-165, 166, 15)]
    path = "M" + " L".join(f"{x} {y:.1f}" for x, y in points)
    return "0 0 520 215", [
        f'<path class="ink" d="{path}"/>', '<circle class="thin" cx="260" cy="110" r="80"/>',
        arrow(260, 190, 260, 115, "accent"), dot(260, 190), dot(260, 110),
        text(250, 158, "normale(x)", "end"), text(260, 98, "centre"), text(260, 209, "(x, p(x))"),
        text(432, 60, "y = p(x)", "start"), text(92, 190, "radius = 1 / |arc(x)|"),
    ]


def turn():
    """The unit circle with the angle of cplx(2.0) and the point of cplx(2.0, 0.0)."""
    return "0 0 520 240", [
        '<circle class="thin" cx="180" cy="125" r="90"/>', arrow(60, 125, 420, 125), text(428, 130, "re", "start"),
        arrow(180, 230, 180, 18), text(192, 26, "im", "start"),
        '<path class="accent" d="M180 125 L142.5 43.2"/>', dot(142.5, 43.2), text(132, 36, "cplx(2.0)", "end"),
        '<path class="accent" d="M210 125 A30 30 0 0 0 167.5 97.7"/>', text(212, 100, "2 radians", "start"),
        dot(360, 125), text(360, 150, "cplx(2.0, 0.0)"), text(270, 142, "1", "middle"),
    ]


def polar():
    """Azimuth alpha in the plane of x and y, elevation beta above it."""
    return "0 0 520 240", [
        arrow(200, 180, 430, 180), text(438, 185, "y", "start"), arrow(200, 180, 200, 20), text(212, 28, "z", "start"),
        arrow(200, 180, 90, 232), text(80, 238, "x", "end"),
        arrow(200, 180, 330, 70, "accent"), text(340, 68, "len", "start"),
        '<path class="thin" stroke-dasharray="4 4" d="M330 70 L330 225 L200 180"/>',
        '<path class="accent" d="M160 199 Q205 222 258 200"/>', text(212, 232, "alpha"),
        '<path class="accent" d="M268 203 Q283 160 262 128"/>', text(290, 160, "beta", "start"),
    ]


def direction():
    """Two vectors at 120 degrees to the x axis, one up and one down: what the signed and the unsigned angle say."""
    ox, oy, far, near = 150, 135, 115, 42
    cx, sy = -0.5, 0.75 ** 0.5
    up, down = (ox + far * cx, oy - far * sy), (ox + far * cx, oy + far * sy)
    out = [arrow(30, oy, 290, oy), text(280, oy - 10, "+x"), arrow(ox, 262, ox, 12), text(ox + 10, 20, "+y", "start"),
           arrow(ox, oy, *up, "accent"), text(up[0] - 8, up[1] + 4, "a", "end"),
           arrow(ox, oy, *down, "accent"), text(down[0] - 8, down[1] + 4, "b", "end"),
           f'<path class="accent" d="M{ox + near} {oy} A{near} {near} 0 0 0 {ox + near * cx} {oy - near * sy:.1f}"/>',
           f'<path class="accent" d="M{ox + near} {oy} A{near} {near} 0 0 1 {ox + near * cx} {oy + near * sy:.1f}"/>',
           text(188, 92, "+2π/3", "start"), text(188, 190, "−2π/3", "start")]
    lines = ["a.dirarc() = +2π/3", "b.dirarc() = −2π/3", "a.arc() = b.arc() = 2π/3", "a.dirarc(b) = +2π/3", "b.dirarc(a) = −2π/3"]
    return "0 0 520 270", out + [text(328, (40, 64, 100, 176, 200)[i], words, "start") for i, words in enumerate(lines)]


def moving_mean():
    """Points, the mean of up to eleven neighbours around each, and the band of sqrt(limit) about it; one point lies outside."""
    ys = [2.0, 2.3, 2.1, 2.7, 2.6, 3.1, 2.9, 3.5, 3.3, 7.2, 3.9, 3.7, 4.3, 4.1, 4.6, 4.4, 4.9, 4.7, 5.2, 5.0]
    limit = 4
    means = [sum(ys[max(i - 5, 0):i + 6]) / len(ys[max(i - 5, 0):i + 6]) for i in range(len(ys))]
    left, bottom, step, unit = 40, 225, 19.5, 27

    def at(i, y):
        return f"{left + step * i:.1f} {bottom - unit * y:.1f}"

    upper = [at(i, m + limit ** 0.5) for i, m in enumerate(means)]
    lower = [at(i, m - limit ** 0.5) for i, m in enumerate(means)]
    out = [f'<path class="face" d="M{" L".join(upper)} L{" L".join(reversed(lower))} Z"/>',
           f'<path class="thin" stroke-dasharray="5 4" d="M{" L".join(upper)}"/>',
           f'<path class="thin" stroke-dasharray="5 4" d="M{" L".join(lower)}"/>',
           f'<path class="ink" d="M{" L".join(at(i, m) for i, m in enumerate(means))}"/>']
    for i, (y, mean) in enumerate(zip(ys, means)):
        x, height = (float(v) for v in at(i, y).split())
        if abs(y - mean) > limit ** 0.5:
            out += [f'<path class="accent" d="M{x - 6} {height - 6} l12 12 m0 -12 l-12 12"/>',
                    text(x + 14, height + 5, "removed", "start")]
        else:
            out.append(dot(x, height))
    right = left + step * (len(ys) - 1) + 8
    heights = [bottom - unit * (means[-1] + d * limit ** 0.5) + 5 for d in (1, 0, -1)]
    return "0 0 520 230", out + [text(right, h, words, "start") for h, words in zip(heights, ("+ √limit", "mean", "− √limit"))]


def terms():
    """The table of a polynomial in two variables of the grade 3: its terms, and the order in which they stand."""
    size, left, top = (104, 50), 92, 42
    powers = lambda name, n: "" if n == 0 else name if n == 1 else name + "²"
    out = []
    for j in range(3):
        for i in range(3):
            x, y = left + size[0] * i, top + size[1] * j
            out += [f'<rect class="face" x="{x}" y="{y}" width="{size[0]}" height="{size[1]}"/>' if j == 0 else "",
                    f'<rect class="ink" x="{x}" y="{y}" width="{size[0]}" height="{size[1]}"/>',
                    text(x + size[0] // 2, y + 31, f"c({i}, {j}) {powers('x', i)} {powers('y', j)}".strip())]
    out += [text(left + size[0] * i + size[0] // 2, 30, f"i = {i}") for i in range(3)]
    out += [text(left - 12, top + size[1] * j + 31, f"j = {j}", "end") for j in range(3)]
    out += [text(418, top + 22, "pure powers of x:", "start"), text(418, top + 42, "resize keeps", "start"),
            text(418, top + 62, "these alone", "start")]
    return "0 0 560 205", out


def entries():
    """A square matrix written in rows, and the entry that get(2, 0) reads: the column comes first."""
    side, left, top = 58, 80, 44
    out = []
    for y in range(3):
        for x in range(3):
            at = (left + side * x, top + side * y)
            if (x, y) == (2, 0):
                out.append(f'<rect class="face" x="{at[0]}" y="{at[1]}" width="{side}" height="{side}"/>')
            out += [f'<rect class="ink" x="{at[0]}" y="{at[1]}" width="{side}" height="{side}"/>',
                    text(at[0] + side // 2, at[1] + 35, str(3 * y + x + 1))]
    out.append(f'<rect class="accent" x="{left + 2 * side}" y="{top}" width="{side}" height="{side}"/>')
    out += [text(left + side * i + side // 2, 32, f"x = {i}") for i in range(3)]
    out += [text(left - 10, top + side * i + 35, f"y = {i}", "end") for i in range(3)]
    return "0 0 560 228", out + [
        text(286, top + 24, "a{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}", "start"), text(286, top + 48, "is written row by row,", "start"),
        text(286, top + 94, "a.get(2, 0) == 3", "start"), text(286, top + 118, "reads column 2 of row 0.", "start"),
        arrow(278, top + 89, left + 3 * side + 2, top + side // 2 + 6, "accent"),
    ]


def html(name, alternative):
    box, lines = globals()[name]()
    return (f'<figure class="drawing"><svg viewBox="{box}" role="img" aria-label="{alternative}">' + "".join(lines) +
            f"</svg><figcaption>{alternative}</figcaption></figure>")
