# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""What all pictures are drawn with: colours, curves, distance fields, a canvas and the PNG writer.

A shape is an array that holds, for each pixel, the distance to the shape's edge, negative inside.
Coverage, bevels, rims and glows all follow from that one array, and edges come out smooth without
oversampling.  Square pictures use coordinates from -1 to 1 with y upward (the nose of a ship is at large y,
in the picture's top row); the strips of the HUD use pixels with y downward."""

import numpy as np
from PIL import Image

# ---------------------------------------------------------------------------------------------------------
# Colours.  The blue family is round and bright, the red family angular and darker, so that they differ in
# shape and brightness and not by hue alone.
# ---------------------------------------------------------------------------------------------------------


def rgb(code):
    return np.array([int(code[i:i + 2], 16) / 255 for i in (0, 2, 4)])


BLUE, BLUE_PALE = rgb("2f8dff"), rgb("a8f0ff")
RED, RED_PALE, RED_DARK = rgb("ff3a28"), rgb("ffb37a"), rgb("4d0a0e")
STEEL, STEEL_DARK = rgb("b9c4d2"), rgb("2a3140")
ICE, WHITE, BLACK = rgb("dcf3ff"), rgb("ffffff"), rgb("000000")
GOLD, VIOLET, GREEN = rgb("ffcf6a"), rgb("b79bff"), rgb("7de8b4")

# ---------------------------------------------------------------------------------------------------------
# Curves and distance fields
# ---------------------------------------------------------------------------------------------------------


def ramp(low, high, value):
    """0 up to low, 1 from high on, a smooth step between; low > high gives a falling step."""
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def bell(distance, width):
    return np.exp(-(distance / width) ** 2)


def mix(a, b, t):
    """Blend of colours a and b by the array t, as an array of colours."""
    t = np.asarray(t)[..., None]
    return a * (1 - t) + b * t


def disc(x, y, cx, cy, radius):
    return np.hypot(x - cx, y - cy) - radius


def box(x, y, left, top, right, bottom, corner):
    """Rectangle with rounded corners."""
    dx = np.abs(x - (left + right) / 2) - (right - left) / 2 + corner
    dy = np.abs(y - (top + bottom) / 2) - (bottom - top) / 2 + corner
    return np.hypot(np.maximum(dx, 0), np.maximum(dy, 0)) + np.minimum(np.maximum(dx, dy), 0) - corner


def segment_distance(x, y, ax, ay, bx, by):
    ux, uy = bx - ax, by - ay
    length2 = ux * ux + uy * uy
    t = np.clip(((x - ax) * ux + (y - ay) * uy) / length2, 0, 1) if length2 else 0
    return np.hypot(x - ax - t * ux, y - ay - t * uy)


def polygon(x, y, points):
    """Distance to the nearest edge, signed by the even-odd rule."""
    distance = np.full(x.shape, np.inf)
    inside = np.zeros(x.shape, bool)
    for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]):
        distance = np.minimum(distance, segment_distance(x, y, ax, ay, bx, by))
        if ay != by:
            inside ^= ((ay > y) != (by > y)) & (x < ax + (y - ay) * (bx - ax) / (by - ay))
    return np.where(inside, -distance, distance)


def mirrored(right_half):
    """Closes an outline, given from the top down on the right, with its mirror image on the left."""
    return right_half + [(-px, py) for px, py in reversed(right_half) if px != 0]


def polar(count, radii, phase):
    """count corners around the origin whose radii repeat the given ones; phase in turns."""
    turns = [phase + k / count for k in range(count)]
    return [(radii[k % len(radii)] * np.sin(2 * np.pi * t), radii[k % len(radii)] * np.cos(2 * np.pi * t))
            for k, t in enumerate(turns)]


def clouds(size, steepness, seed, smallest=0.0):
    """Tileable noise, mean 0 and deviation 1, its spectrum falling with the given steepness.

    Waves longer than 1/smallest of the picture's width are left out when smallest is given.
    """
    noise = np.random.default_rng(seed).standard_normal((size, size))
    frequency = np.hypot(np.fft.fftfreq(size)[:, None], np.fft.rfftfreq(size)[None, :]) * size
    weight = np.where(frequency > smallest, np.maximum(frequency, 1) ** -steepness, 0)
    field = np.fft.irfft2(np.fft.rfft2(noise) * weight, s=noise.shape)
    return (field - field.mean()) / field.std()


def around(angle, waves, seed, steepness=0.5):
    """Noise along the circle, without a seam: waves harmonics of the angle with seeded phases."""
    rng = np.random.default_rng(seed)
    total = sum(rng.standard_normal() * k ** -steepness * np.cos(k * angle + rng.uniform(0, 2 * np.pi))
                for k in range(1, waves + 1))
    return total / total.std()


# ---------------------------------------------------------------------------------------------------------
# Canvas
# ---------------------------------------------------------------------------------------------------------


class Canvas:
    """A picture under construction.  Colour is kept multiplied by alpha, which makes layering exact."""

    def __init__(self, width, height=None):
        height = height or width
        self.colour = np.zeros((height, width, 3))
        self.alpha = np.zeros((height, width))
        self.py, self.px = np.mgrid[0:height, 0:width] + 0.5
        self.x, self.y = self.px / width * 2 - 1, 1 - self.py / height * 2
        self.r, self.angle = np.hypot(self.x, self.y), np.arctan2(self.y, self.x)
        self.pixel = 2 / width  # the size of a pixel in the units of x and y

    def over(self, colour, alpha, at=np.s_[:, :]):
        """Lays a colour (one, or one per pixel) over what is there."""
        alpha = np.clip(alpha, 0, 1)
        self.colour[at] = self.colour[at] * (1 - alpha[..., None]) + colour * alpha[..., None]
        self.alpha[at] = self.alpha[at] * (1 - alpha) + alpha

    def fill(self, shape, colour, alpha=1.0):
        self.over(colour, alpha * np.clip(0.5 - shape / self.pixel, 0, 1))

    def line(self, shape, colour, width, alpha=1.0):
        """Outline of a shape, drawn along its edge."""
        self.fill(np.abs(shape) - width / 2, colour, alpha)

    def relief(self, shape, colour, bevel, rim, rim_strength=0.6):
        """Fills a shape as a bevelled solid lit from the upper left, with a bright rim along its edge."""
        depth = np.clip(-shape / bevel, 0, 1)
        height = np.sqrt(1 - (1 - depth) ** 2) * bevel
        slope_y, slope_x = np.gradient(height, self.pixel)
        light = (0.35 * slope_x + 0.55 * slope_y + 0.75) / np.sqrt(1 + slope_x ** 2 + slope_y ** 2)
        lit = mix(colour * 0.22, colour, np.clip(light, 0, 1)) + np.clip(light - 0.85, 0, 1)[..., None] * 0.9
        edge = rim_strength * bell(shape, 2.2 * self.pixel)
        self.fill(shape, np.clip(mix(lit, rim, edge), 0, 1))

    def fade_out(self, mask):
        self.colour *= mask[..., None]
        self.alpha *= mask

    def rgba(self):
        """8-bit RGBA with straight alpha, the colour of clear pixels taken from the nearest painted ones."""
        straight = self.colour / np.maximum(self.alpha, 1e-9)[..., None]
        painted = self.alpha >= 0.5 / 255
        straight = np.where(painted[..., None], straight, bled(self.colour * painted[..., None], self.alpha * painted))
        return to_bytes(np.dstack([straight, self.alpha]))


def to_bytes(values):
    return (np.clip(values, 0, 1) * 255 + 0.5).astype(np.uint8)


def bled(colour, weight):
    """Spreads colours into the places without weight: average over ever larger blocks until all have some."""
    if weight.all() or min(weight.shape) == 1:
        mean = colour.sum((0, 1)) / max(weight.sum(), 1e-9)
        return np.where(weight[..., None] > 0, colour / np.maximum(weight, 1e-9)[..., None], mean)

    def blocks(a):
        return a[0::2, 0::2] + a[1::2, 0::2] + a[0::2, 1::2] + a[1::2, 1::2]

    coarse = bled(np.dstack([blocks(colour[..., c]) for c in range(3)]), blocks(weight))
    spread = coarse.repeat(2, 0).repeat(2, 1)
    return np.where(weight[..., None] > 0, colour / np.maximum(weight, 1e-9)[..., None], spread)


def from_light(light):
    """Canvas for additive drawing: the picture adds exactly the given light (rgb) to what lies below."""
    canvas = Canvas(light.shape[1], light.shape[0])
    canvas.alpha = np.clip(light.max(2), 0, 1)
    canvas.colour = light * (canvas.alpha / np.maximum(light.max(2), 1e-9))[..., None]
    return canvas

def glowing(*layers):
    """Sum of light: each layer is a strength per pixel and a colour."""
    return sum(strength[..., None] * colour for strength, colour in layers)


def save_picture(path, picture):
    """Writes a canvas, or a finished array of 8-bit samples, as a PNG or (by its name) a JPEG."""
    image = Image.fromarray(picture.rgba() if isinstance(picture, Canvas) else picture)
    if path.suffix == ".jpg":
        image.save(path, quality=90, optimize=True)
    else:
        image.save(path, optimize=True)


def pictures(table):
    """FILES of a module: how to write each picture of a table of names and drawing functions."""
    return {f"graphics/{name}": lambda path, draw=draw: save_picture(path, draw()) for name, draw in table.items()}
