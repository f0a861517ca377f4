#!/usr/bin/env python3
"""Writes the geometry files of the example machines: small binary STL solids of boxes and cylinders, in millimetres.

Run it after changing a size; the output is the same on every computer. Each table below lists the files of a machine:
file name -> list of bodies. box(x, y, z, dx, dy, dz) has its low corner at x, y, z. cylinder(axis, x, y, z, radius,
length) starts at x, y, z and extends along the axis.
"""
import math
import pathlib
import struct


def box(x, y, z, dx, dy, dz):
    corners = [(x + dx * (i & 1), y + dy * (i >> 1 & 1), z + dz * (i >> 2)) for i in range(8)]
    faces = ((0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5))
    return [t for a, b, c, d in faces for t in ((corners[a], corners[b], corners[c]), (corners[a], corners[c], corners[d]))]


def cylinder(axis, x, y, z, radius, length, sides=24):
    def place(u, v, w):  # u and v are across the axis, w is along it
        return {"X": (x + w, y + u, z + v), "Y": (x + v, y + w, z + u), "Z": (x + u, y + v, z + w)}[axis]

    def rim(i, w):
        angle = 2 * math.pi * (i % sides) / sides
        return place(round(radius * math.cos(angle), 4), round(radius * math.sin(angle), 4), w)

    low, high = place(0, 0, 0), place(0, 0, length)
    triangles = []
    for i in range(sides):
        a, b, c, d = rim(i, 0), rim(i + 1, 0), rim(i, length), rim(i + 1, length)
        triangles += [(low, b, a), (high, c, d), (a, b, d), (a, d, c)]
    return triangles


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
    "bed.stl": [box(-500, -450, -900, 1000, 1100, 350)],
    "column.stl": [box(-300, 400, -550, 600, 350, 1500)],
    "saddle.stl": [box(-350, -300, -550, 700, 600, 120)],
    "table.stl": [box(-500, -255, -430, 1000, 510, 70)],
    "vise.stl": [box(-150, -75, -360, 300, 150, 55), box(-150, -75, -305, 300, 30, 45), box(-150, 45, -305, 300, 30, 45)],
    "head.stl": [box(-200, -120, 120, 400, 520, 450)],
    "spindle.stl": [cylinder("Z", 0, 0, 0, 60, 120)],
}
TRUNNION = {
    "base.stl": [box(-700, -800, -1000, 1400, 1700, 300)],
    "portal.stl": [box(-700, 500, -700, 150, 400, 1400), box(550, 500, -700, 150, 400, 1400), box(-700, 500, 700, 1400, 400, 200)],
    "crossbeam.stl": [box(-550, 380, 300, 1100, 120, 300)],
    "ram.stl": [box(-160, 60, 100, 320, 320, 600)],
    "spindle.stl": [cylinder("Z", 0, 0, 0, 70, 100)],
    "slide.stl": [box(-450, -350, -700, 900, 700, 100)],
    "trunnion.stl": [box(-330, -200, -460, 660, 400, 60), box(-390, -90, -460, 60, 180, 240), box(330, -90, -460, 60, 180, 240)],
    "rotary_table.stl": [cylinder("Z", 0, 0, -400, 200, 60)],
}
MILL_TURN = {
    "bed.stl": [box(-700, -400, -700, 900, 800, 2200)],
    "main_spindle.stl": [cylinder("Z", 0, 0, -400, 130, 300)],
    "main_chuck.stl": [cylinder("Z", 0, 0, -100, 105, 100)],
    "sub_carriage.stl": [box(-220, -180, 1000, 440, 360, 320)],
    "sub_spindle.stl": [cylinder("Z", 0, 0, 900, 110, 120)],
    "sub_chuck.stl": [cylinder("Z", 0, 0, 820, 85, 80)],
    "upper_slide.stl": [box(260, -120, 150, 240, 240, 320)],
    "upper_turret.stl": [cylinder("Z", 420, 0, 40, 150, 110, sides=12)],
    "lower_slide.stl": [box(-500, -120, 150, 240, 240, 320)],
    "lower_turret.stl": [cylinder("Z", -420, 0, 40, 140, 110, sides=12)],
}

if __name__ == "__main__":
    here = pathlib.Path(__file__).parent
    for folder, solids in (("Mill/Vertical850", VERTICAL), ("Mill/Trunnion500", TRUNNION), ("MillTurn/TwinTurret12", MILL_TURN)):
        (here / folder).mkdir(parents=True, exist_ok=True)
        for name, bodies in solids.items():
            write(here / folder / name, bodies)
