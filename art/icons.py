# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The icons of the game and of its recordings: SVG, and the sizes that desktops ask for.

A black hole between the two colours, blue a smooth crescent and red a barbed one, and the ship in front.
Below 48 pixels the ship would be dirt: there the icon is the hole and the crescents alone.
"""

import math
import subprocess

SIZES = (16, 32, 48, 64, 128, 256, 512)
SMALL = 48  # pixels from which the details are drawn

DEFINITIONS = """
  <defs>
    <radialGradient id="space" cx="50%" cy="42%" r="62%">
      <stop offset="0" stop-color="#27365f"/><stop offset="0.6" stop-color="#10182f"/>
      <stop offset="1" stop-color="#060913"/>
    </radialGradient>
    <linearGradient id="blue" x1="0" y1="1" x2="0.6" y2="0">
      <stop offset="0" stop-color="#1c5fd6"/><stop offset="0.6" stop-color="#3fa2ff"/>
      <stop offset="1" stop-color="#c4f6ff"/>
    </linearGradient>
    <linearGradient id="red" x1="1" y1="0" x2="0.4" y2="1">
      <stop offset="0" stop-color="#b5180f"/><stop offset="0.6" stop-color="#ff4a2c"/>
      <stop offset="1" stop-color="#ffc48e"/>
    </linearGradient>
    <radialGradient id="ring" cx="50%" cy="50%" r="50%">
      <stop offset="0.80" stop-color="#ffe2b0" stop-opacity="0"/><stop offset="0.86" stop-color="#fff3dc"/>
      <stop offset="0.90" stop-color="#ffd089" stop-opacity="0.55"/><stop offset="1" stop-color="#ff9a4a" stop-opacity="0"/>
    </radialGradient>
    <linearGradient id="hull" x1="0" y1="0" x2="1" y2="0">
      <stop offset="0" stop-color="#f2f7ff"/><stop offset="0.5" stop-color="#c3cfdf"/>
      <stop offset="0.5" stop-color="#77859a"/><stop offset="1" stop-color="#a9b7ca"/>
    </linearGradient>
    <radialGradient id="flame" cx="50%" cy="20%" r="80%">
      <stop offset="0" stop-color="#ffffff"/><stop offset="0.4" stop-color="#ffd27a"/>
      <stop offset="1" stop-color="#ff7a2a" stop-opacity="0"/>
    </radialGradient>
  </defs>
"""


def at(radius, degrees):
    t = math.radians(degrees)
    return f"{256 + radius * math.sin(t):.1f} {236 - radius * math.cos(t):.1f}"


def crescents():
    """Blue from seven to one o'clock with round ends; red from one to seven, its edge cut into barbs."""
    blue = (f'<path d="M {at(150, 204)} A 182 182 0 0 1 {at(166, 20)} A 150 150 0 0 0 {at(150, 204)} Z" '
            'fill="url(#blue)" stroke="url(#blue)" stroke-width="16" stroke-linejoin="round"/>')
    outer = " ".join(f"L {at(r, d)}" for d, r in
                     [(36, 150), (44, 214), (58, 172), (74, 222), (90, 180), (108, 224), (124, 180),
                      (141, 216), (156, 168), (170, 194)])
    red = (f'<path d="M {at(136, 30)} {outer} L {at(142, 186)} A 150 150 0 0 0 {at(136, 30)} Z" '
           'fill="url(#red)" stroke="url(#red)" stroke-width="5" stroke-linejoin="miter"/>')
    return blue + red


HOLE = '<circle cx="256" cy="236" r="122" fill="url(#ring)"/><circle cx="256" cy="236" r="101" fill="#000"/>'
SHIP = """
  <ellipse cx="238" cy="470" rx="10" ry="30" fill="url(#flame)"/><ellipse cx="274" cy="470" rx="10" ry="30" fill="url(#flame)"/>
  <path d="M256 262 L274 336 L286 374 L352 432 L356 458 L290 442 L276 456 H236 L222 442 L156 458 L160 432 L226 374 L238 336 Z"
        fill="url(#hull)" stroke="#0a1122" stroke-width="8" stroke-linejoin="round"/>
  <path d="M256 344 L266 380 L256 402 L246 380 Z" fill="#1b4a66"/>
"""
BACKGROUND = '<circle cx="256" cy="256" r="248" fill="url(#space)" stroke="#3b4c78" stroke-width="6"/>'
STARS = "".join(f'<circle cx="{x}" cy="{y}" r="{r}" fill="#dfe9ff" opacity="{o}"/>' for x, y, r, o in
                [(96, 150, 4, .8), (150, 92, 3, .6), (70, 282, 3, .6), (120, 384, 4, .7), (402, 100, 3, .6),
                 (350, 60, 4, .7), (446, 214, 3, .5), (424, 372, 4, .8), (258, 40, 3, .6), (182, 446, 3, .5)])


def svg(body):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 512 512" width="512" height="512">'
            f"{DEFINITIONS}{body}</svg>\n")


def game(size):
    return svg(BACKGROUND + STARS + crescents() + HOLE + SHIP if size >= SMALL else
               f'<g transform="translate(256 256) scale(1.12) translate(-256 -236)">{crescents()}{HOLE}</g>')


def replay(size):
    """A sheet with a folded corner that carries the game's sign and a triangle to play it."""
    sheet = ('<path d="M96 16 H336 L432 112 V480 A16 16 0 0 1 416 496 H96 A16 16 0 0 1 80 480 V32 A16 16 0 0 1 96 16 Z" '
             'fill="url(#space)" stroke="#8fa3cc" stroke-width="12"/>'
             '<path d="M336 16 V96 A16 16 0 0 0 352 112 H432 Z" fill="#8fa3cc"/>')
    sign = f'<g transform="translate(256 290) scale({0.72 if size >= SMALL else 0.8}) translate(-256 -236)">{crescents()}{HOLE}</g>'
    return svg(sheet + sign + '<path d="M234 246 L304 290 L234 334 Z" fill="#fff"/>')


def write_svg(path, draw):
    path.write_text("<!--\nSPDX-FileCopyrightText: The Quorvane project\nSPDX-License-Identifier: CC-BY-4.0\n-->\n" +
                    draw(SIZES[-1]))


def write_png(path, draw, size):
    subprocess.run(["rsvg-convert", "-w", str(size), "-h", str(size), "-o", str(path)], check=True,
                   input=draw(size).encode())


FILES = {}
for name, draw in (("quorvane", game), ("replay", replay)):
    FILES[f"icons/{name}.svg"] = lambda path, draw=draw: write_svg(path, draw)
    for size in SIZES:
        FILES[f"icons/{name}-{size}.png"] = lambda path, draw=draw, size=size: write_png(path, draw, size)
