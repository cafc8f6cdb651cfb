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


def html(name, alternative):
    box, lines = globals()[name]()
    return (f'<figure class="drawing"><svg viewBox="{box}" role="img" aria-label="{alternative}">' + "".join(lines) +
            f"</svg><figcaption>{alternative}</figcaption></figure>")
