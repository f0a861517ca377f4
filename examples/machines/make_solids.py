#!/usr/bin/env python3
"""Writes the geometry files of the example machines: small binary STL solids, in millimetres.

Run it after changing a size; the output is the same on every computer. Each table below lists the files of a machine:
file name -> list of bodies. box(x, y, z, dx, dy, dz) has its low corner at x, y, z. prism(axis, outline, low, high)
extends an outline along an axis, from low to high: outlines are counterclockwise lists of (x, y) for the axis Z, (y, z)
for X and (z, x) for Y. revolve(axis, x, y, z, profile) turns a profile of (radius, distance along the axis) about the
axis through x, y, z; a profile starts and ends at radius 0. turned(body, degrees, x, y) turns a body about the line
parallel to Z through x, y.
"""
import math
import pathlib
import struct


def box(x, y, z, dx, dy, dz):
    corners = [(x + dx * (i & 1), y + dy * (i >> 1 & 1), z + dz * (i >> 2)) for i in range(8)]
    faces = ((0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5))
    return [t for a, b, c, d in faces for t in ((corners[a], corners[b], corners[c]), (corners[a], corners[c], corners[d]))]


def place(axis, u, v, w):  # u and v are across the axis, w is along it
    return {"X": (w, u, v), "Y": (v, w, u), "Z": (u, v, w)}[axis]


def clip_ears(outline):
    """The triangles of a simple polygon."""
    left, triangles = list(range(len(outline))), []

    def cross(a, b, c):
        (ax, ay), (bx, by), (cx, cy) = outline[a], outline[b], outline[c]
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax)

    while len(left) > 2:
        for i in range(len(left)):
            a, b, c = left[i - 1], left[i], left[(i + 1) % len(left)]
            others = (p for p in left if p not in (a, b, c))
            if cross(a, b, c) > 0 and not any(min(cross(a, b, p), cross(b, c, p), cross(c, a, p)) >= 0 for p in others):
                triangles.append((a, b, c))
                left.pop(i)
                break
        else:
            raise ValueError("an outline crosses itself or is clockwise")
    return triangles


def prism(axis, outline, low, high):
    triangles = []
    for a, b, c in clip_ears(outline):
        for w, corners in ((low, (c, b, a)), (high, (a, b, c))):
            triangles.append(tuple(place(axis, *outline[k], w) for k in corners))
    for k, start in enumerate(outline):
        end = outline[(k + 1) % len(outline)]
        a, b, c, d = (place(axis, *p, w) for w in (low, high) for p in (start, end))
        triangles += [(a, b, d), (a, d, c)]
    return triangles


def revolve(axis, x, y, z, profile, sides=40):
    def rim(i, radius, w):
        angle = 2 * math.pi * (i % sides) / sides
        u, v, w = place(axis, round(radius * math.cos(angle), 4), round(radius * math.sin(angle), 4), w)
        return (x + u, y + v, z + w)

    triangles = []
    for (r0, w0), (r1, w1) in zip(profile, profile[1:]):
        for i in range(sides):
            a, b, c, d = rim(i, r0, w0), rim(i + 1, r0, w0), rim(i, r1, w1), rim(i + 1, r1, w1)
            triangles += [t for t in ((a, b, d), (a, d, c)) if len(set(t)) == 3]
    return triangles


def turned(body, degrees, x=0, y=0):
    cosine, sine = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))

    def turn(p):
        u, v = p[0] - x, p[1] - y
        return (round(x + u * cosine - v * sine, 4), round(y + u * sine + v * cosine, 4), p[2])

    return [tuple(turn(p) for p in t) for t in body]


def beveled(u, v, du, dv, bevel):
    """The outline of a rectangle with beveled corners."""
    return [(u + bevel, v), (u + du - bevel, v), (u + du, v + bevel), (u + du, v + dv - bevel),
            (u + du - bevel, v + dv), (u + bevel, v + dv), (u, v + dv - bevel), (u, v + bevel)]


def comb(u, v, du, dv, slots, width, depth):
    """The outline of a rectangle with slots in its upper side."""
    outline = [(u, v), (u + du, v), (u + du, v + dv)]
    for k in reversed(range(slots)):
        middle = u + du * (k + 0.5) / slots
        outline += [(middle + width / 2, v + dv), (middle + width / 2, v + dv - depth),
                    (middle - width / 2, v + dv - depth), (middle - width / 2, v + dv)]
    return outline + [(u, v + dv)]


def jaws(radius, low, high):
    """The three jaws of a chuck about Z."""
    jaw = prism("Z", [(radius * 0.3, -12), (radius * 0.62, -24), (radius * 0.95, -24), (radius * 0.95, 24),
                      (radius * 0.62, 24), (radius * 0.3, 12)], low, high)
    return [turned(jaw, 90 + 120 * k) for k in range(3)]


def turret(x, radius, driven):
    """A disk with a holder and a tool at each of twelve stations; those in `driven` have a tool along Z."""
    bodies = [revolve("Z", x, 0, 0, [(0, 40), (radius * 0.35, 40), (radius * 0.35, 55), (radius - 12, 55),
                                     (radius - 12, 150), (0, 150)], sides=36),
              prism("Z", [(x + (radius - 8) * math.cos(math.radians(15 + 30 * k)),
                           (radius - 8) * math.sin(math.radians(15 + 30 * k))) for k in range(12)], 58, 140)]
    for k in range(12):
        holder = prism("Z", beveled(x + radius - 14, -24, 42, 48, 6), 62, 132)
        if k in driven:
            tool = revolve("Z", x + radius + 8, 0, 0, [(0, 2), (9, 12), (9, 40), (16, 40), (16, 62), (0, 62)], sides=16)
        else:
            tool = box(x + radius + 20, -9, 84, 34, 18, 18)
        bodies += [turned(holder, 30 * k, x), turned(tool, 30 * k, x)]
    return bodies


def normal(a, b, c):
    u = [b[i] - a[i] for i in range(3)]
    v = [c[i] - a[i] for i in range(3)]
    n = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
    length = math.sqrt(sum(k * k for k in n)) or 1.0
    return [round(k / length, 6) for k in n]


def write(path, bodies):
    triangles = [t for body in bodies for t in body]
    with open(path, "wb") as out:
        out.write(path.stem.encode("ascii").ljust(80, b" "))
        out.write(struct.pack("<I", len(triangles)))
        for t in triangles:
            out.write(struct.pack("<12fH", *normal(*t), *(k for corner in t for k in corner), 0))


VERTICAL = {
    "bed.stl": [prism("X", [(-450, -900), (650, -900), (650, -550), (380, -550), (320, -600), (-400, -600), (-450, -650)],
                      -480, 480),
                box(-300, -380, -600, 70, 760, 50), box(230, -380, -600, 70, 760, 50)],
    "column.stl": [prism("Z", beveled(-280, 420, 560, 330, 60), -550, 980), box(-210, 395, -300, 60, 30, 1240),
                   box(150, 395, -300, 60, 30, 1240)],
    "saddle.stl": [prism("Y", beveled(-550, -360, 100, 720, 20), -300, 300), box(-360, -190, -450, 720, 50, 20),
                   box(-360, 140, -450, 720, 50, 20)],
    "table.stl": [prism("X", comb(-255, -430, 510, 70, 5, 22, 26), -500, 500)],
    "vise.stl": [prism("Z", beveled(-150, -75, 300, 150, 12), -360, -305), box(-150, -75, -305, 300, 30, 45),
                 box(-150, 38, -305, 300, 37, 45), revolve("Y", 0, 0, -330, [(0, -130), (14, -130), (14, -75), (0, -75)],
                                                           sides=20)],
    "head.stl": [prism("Z", beveled(-180, -120, 360, 515, 45), 160, 560),
                 revolve("Z", 0, 0, 0, [(0, 120), (95, 120), (120, 150), (120, 160), (0, 160)]),
                 revolve("Z", 0, 0, 0, [(0, 560), (85, 560), (85, 690), (70, 700), (0, 700)])],
    "spindle.stl": [revolve("Z", 0, 0, 0, [(0, 0), (38, 0), (38, 18), (60, 30), (60, 120), (0, 120)])],
}
TRUNNION = {
    "base.stl": [prism("Z", beveled(-700, -800, 1400, 1700, 60), -1000, -740), box(-400, -700, -740, 90, 1100, 40),
                 box(310, -700, -740, 90, 1100, 40)],
    "portal.stl": [prism("Z", beveled(-700, 500, 170, 400, 30), -740, 700), prism("Z", beveled(530, 500, 170, 400, 30), -740, 700),
                   prism("X", beveled(500, 700, 400, 220, 30), -700, 700), box(-690, 470, 760, 1380, 30, 45),
                   box(-690, 470, 840, 1380, 30, 45)],
    "crossbeam.stl": [prism("Z", beveled(-240, 380, 480, 90, 25), 260, 900)],
    "ram.stl": [prism("Z", beveled(-130, 120, 260, 260, 35), 180, 1000),
                prism("Z", beveled(-110, -120, 220, 245, 40), 180, 460),
                revolve("Z", 0, 0, 0, [(0, 100), (85, 100), (105, 130), (105, 180), (0, 180)])],
    "spindle.stl": [revolve("Z", 0, 0, 0, [(0, 0), (40, 0), (40, 20), (66, 34), (66, 100), (0, 100)])],
    "slide.stl": [prism("Z", beveled(-450, -350, 900, 700, 30), -700, -640),
                  prism("X", [(-130, -640), (130, -640), (90, -280 + 70), (-90, -280 + 70)], -450, -392),
                  prism("X", [(-130, -640), (130, -640), (90, -280 + 70), (-90, -280 + 70)], 392, 450)],
    "trunnion.stl": [prism("Y", [(-210, -340), (-210, -290), (-410, -240), (-410, 240), (-210, 290), (-210, 340), (-470, 340),
                                 (-470, -340)], -190, 190),
                     revolve("X", -390, 0, -280, [(0, 0), (75, 0), (75, 60), (0, 60)]),
                     revolve("X", 330, 0, -280, [(0, 0), (75, 0), (75, 60), (0, 60)])],
    "rotary_table.stl": [revolve("Z", 0, 0, 0, [(0, -410), (185, -410), (200, -395), (200, -345), (195, -340), (60, -340),
                                                (60, -352), (0, -352)], sides=60)],
}
MILL_TURN = {
    "bed.stl": [prism("Z", beveled(-820, -520, 180, 900, 30), -720, 1520), box(-640, -520, -700, 1260, 240, 2200),
                *(box(x, -280, -660, 46, 40, 2120) for x in (-600, -170, 124, 560))],
    "main_spindle.stl": [prism("Z", beveled(-215, -240, 430, 430, 70), -640, -170),
                         revolve("Z", 0, 0, 0, [(0, -170), (150, -170), (150, -150), (130, -130), (130, -100), (0, -100)])],
    "main_chuck.stl": [revolve("Z", 0, 0, 0, [(0, -100), (105, -100), (105, -40), (97, -30), (36, -30), (36, -60), (0, -60)]),
                       *jaws(105, -30, 0)],
    "sub_carriage.stl": [box(-230, -240, 960, 460, 50, 400), prism("Z", beveled(-190, -190, 380, 360, 60), 1000, 1340)],
    "sub_spindle.stl": [revolve("Z", 0, 0, 0, [(0, 900), (92, 900), (110, 920), (110, 1000), (0, 1000)])],
    "sub_chuck.stl": [revolve("Z", 0, 0, 0, [(0, 870), (28, 870), (28, 848), (78, 848), (85, 856), (85, 900), (0, 900)]),
                      *jaws(85, 820, 848)],
    "upper_slide.stl": [box(230, -240, 140, 400, 60, 360), prism("Z", beveled(290, -180, 260, 280, 40), 150, 470)],
    "upper_turret.stl": turret(420, 150, driven=(0, 1, 2, 3, 10, 11)),
    "lower_slide.stl": [box(-630, -240, 140, 400, 60, 360), prism("Z", beveled(-550, -180, 260, 280, 40), 150, 470)],
    "lower_turret.stl": turret(-420, 140, driven=(4, 5, 6, 7, 8)),
}

if __name__ == "__main__":
    here = pathlib.Path(__file__).parent
    for folder, solids in (("Mill/Vertical850", VERTICAL), ("Mill/Trunnion500", TRUNNION), ("MillTurn/TwinTurret12", MILL_TURN)):
        (here / folder).mkdir(parents=True, exist_ok=True)
        for name, bodies in solids.items():
            write(here / folder / name, bodies)
