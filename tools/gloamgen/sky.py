"""The six faces of the night sky.  Every texel is painted from the world direction it stands for,
so the faces meet without seams: stars, a moon high in the north-east, thin moonlit clouds, and
below the horizon a misty valley under far hills.

Face k is chosen by the sky pass from its direction (dx, dy, dz), y down: 0 +x, 1 -x, 2 +y (down),
3 -y (up), 4 +z, 5 -z, with u across and v down as below.  The sky pass turns the view by the camera
with z the other way round from the world's (looking along world +z it looks up sky -z), so a
texel of sky direction (dx, dy, dz) shows what lies toward world (dx, dy, -dz)."""
import math

import numpy as np

from . import game_tables
from .texture_kit import rng

N = 256
MOON_AZIMUTH, MOON_ELEVATION = 42.0, 39.0     # degrees; azimuth from north (+z) toward east (+x)


def face_directions(k, n=N):
    j, i = np.mgrid[0:n, 0:n].astype(np.float64)
    b = (i + 0.5) / n * 2 - 1     # across (u)
    a = (j + 0.5) / n * 2 - 1     # down (v)
    one = np.ones_like(a)
    if k == 0:
        d = (one, a, b)
    elif k == 1:
        d = (-one, a, -b)
    elif k == 2:
        d = (b, one, a)
    elif k == 3:
        d = (b, -one, -a)
    elif k == 4:
        d = (-b, a, one)
    else:
        d = (b, a, -one)
    d = np.stack(d, axis=-1)
    return d / np.linalg.norm(d, axis=-1, keepdims=True)


def face_coords(k, d):
    """Where the (unit, file-space) directions d land on face k, as texel x, y, and whether they face it."""
    dx, dy, dz = d[:, 0], d[:, 1], d[:, 2]
    axis = [dx, -dx, dy, -dy, dz, -dz][k]
    m = np.maximum(axis, 1e-9)
    if k == 0:
        a, b = dy / m, dz / m
    elif k == 1:
        a, b = dy / m, -dz / m
    elif k == 2:
        b, a = dx / m, dz / m
    elif k == 3:
        b, a = dx / m, -dz / m
    elif k == 4:
        a, b = dy / m, -dx / m
    else:
        a, b = dy / m, dx / m
    return (b + 1) / 2 * N - 0.5, (a + 1) / 2 * N - 0.5, axis > 0.3


def value_noise3(p, seed, cells=16):
    """Smooth 3-D value noise on a wrapped lattice, evaluated at points p (..., 3)."""
    lat = rng(seed).random((cells, cells, cells))
    q = (p + 2.0) * (cells / 4.0)
    i = np.floor(q).astype(np.int64)
    f = q - i
    f = f * f * (3 - 2 * f)
    out = 0.0
    for dx in (0, 1):
        for dy in (0, 1):
            for dz in (0, 1):
                w = ((f[..., 0] if dx else 1 - f[..., 0]) * (f[..., 1] if dy else 1 - f[..., 1]) *
                     (f[..., 2] if dz else 1 - f[..., 2]))
                out = out + w * lat[(i[..., 0] + dx) % cells, (i[..., 1] + dy) % cells, (i[..., 2] + dz) % cells]
    return out


def fbm3(p, seed, octaves=4):
    total, amp, norm = 0.0, 1.0, 0.0
    for o in range(octaves):
        total = total + amp * value_noise3(p * (2 ** o), seed + o)
        norm += amp
        amp *= 0.5
    return total / norm


def moon_direction():
    az, el = math.radians(MOON_AZIMUTH), math.radians(MOON_ELEVATION)
    return np.array([math.sin(az) * math.cos(el), -math.sin(el), math.cos(az) * math.cos(el)])


def paint(d, stars):
    up = -d[..., 1]
    el = np.degrees(np.arcsin(np.clip(up, -1, 1)))
    az = np.degrees(np.arctan2(d[..., 0], d[..., 2]))
    # far hills: a ridge line a few degrees high, wrapping around the horizon
    ridge = 1.2 + 2.2 * (np.sin(np.radians(az) * 3 + 0.7) * 0.5 + 0.5) + 1.6 * (np.sin(np.radians(az) * 7 + 2.1) * 0.5 + 0.5)
    ridge += 0.8 * (fbm3(np.stack([np.sin(np.radians(az)), np.zeros_like(az), np.cos(np.radians(az))], -1) * 1.5, 7) - 0.5)
    t = np.clip(up, 0, 1)
    horizon = np.array([22, 34, 58]) / 255
    zenith = np.array([3, 5, 14]) / 255
    sky = horizon * (1 - t[..., None] ** 0.45) + zenith * (t[..., None] ** 0.45)
    # the band of the galaxy, faint and grainy
    band_axis = np.array([0.55, -0.45, -0.7])
    band_axis /= np.linalg.norm(band_axis)
    band = np.exp(-(np.tensordot(d, band_axis, axes=([-1], [0])) / 0.18) ** 2)
    grainy = fbm3(d * 3.0, 31)
    sky += (np.array([30, 30, 40]) / 255) * (band * np.clip(grainy * 1.6 - 0.5, 0, 1))[..., None]
    # moon glow
    md = moon_direction()
    cosang = np.clip(np.tensordot(d, md, axes=([-1], [0])), -1, 1)
    ang = np.degrees(np.arccos(cosang))
    sky += (np.array([70, 80, 96]) / 255) * (np.exp(-ang / 9.0) * 0.6)[..., None]
    # stars (splatted beforehand), dimmed near the horizon
    sky += stars * np.clip(el / 8.0, 0, 1)[..., None]
    # thin clouds, lit from the moon's side
    cl = fbm3(d * np.array([1.0, 3.0, 1.0]) * 1.6, 57)
    cover = np.clip((cl - 0.5) * 3.0, 0, 1) * np.clip(el / 10.0, 0, 1) * np.clip(1.4 - el / 60.0, 0, 1)
    lit = 0.35 + 0.65 * np.exp(-ang / 35.0)
    cloud_col = np.array([62, 66, 80]) / 255 * lit[..., None]
    sky = sky * (1 - 0.85 * cover[..., None]) + cloud_col * cover[..., None]
    # the moon's disc, with a few darker seas
    r = 2.6
    disc = ang < r
    if disc.any():
        sea = fbm3(d * 40.0, 91)
        limb = np.clip(1 - (ang / r) ** 2, 0, 1) ** 0.25
        moon_col = np.array([238, 234, 214]) / 255 * (0.82 + 0.18 * (sea < 0.52))[..., None] * (0.7 + 0.3 * limb)[..., None]
        edge = np.clip((r - ang) / 0.25, 0, 1)[..., None]
        sky = np.where(disc[..., None], sky * (1 - edge) + moon_col * edge, sky)
    # the land below the ridge: dark hills, then a pale mist lying in the valley
    below = el < ridge
    depth = np.clip(-el, 0, 90)
    land = np.array([8, 10, 14]) / 255 * (1 + 0.4 * fbm3(d * 6.0, 101))[..., None]
    mist = np.exp(-depth / 9.0) * np.clip(1.2 - (ridge - el) / 4.0, 0, 1) * 0.0 + np.exp(-np.abs(el + 3.0) / 3.0)
    land = land + (np.array([34, 44, 60]) / 255) * (mist * 0.55)[..., None]
    lights = fbm3(d * 60.0, 113) > 0.8
    lights &= (el < -2.5) & (el > -9)
    land = np.where(lights[..., None], np.array([150, 110, 50]) / 255, land)
    ridge_edge = np.clip((ridge - el) / 0.3, 0, 1)[..., None]
    return np.where(below[..., None], sky * (1 - ridge_edge) + land * ridge_edge, sky)


def star_list(count=2200, seed=4242):
    r = rng(seed)
    v = r.standard_normal((count, 3))
    v /= np.linalg.norm(v, axis=1, keepdims=True)
    mag = r.random(count) ** 6 * 0.9 + 0.08
    tint = r.uniform(-0.15, 0.15, count)
    col = np.stack([1 + tint, np.ones(count), 1 - tint], axis=1) * mag[:, None]
    return v, col


def faces():
    v, col = star_list()
    out = []
    for k in range(6):
        stars = np.zeros((N, N, 3))
        x, y, ok = face_coords(k, v)
        for xi, yi, c, good in zip(x, y, col, ok):
            if not good:
                continue
            x0, y0 = int(math.floor(xi)), int(math.floor(yi))
            fx, fy = xi - x0, yi - y0
            for dx, dy, w in ((0, 0, (1 - fx) * (1 - fy)), (1, 0, fx * (1 - fy)), (0, 1, (1 - fx) * fy), (1, 1, fx * fy)):
                px, py = x0 + dx, y0 + dy
                if 0 <= px < N and 0 <= py < N:
                    stars[py, px] += c * w * 1.6
        world = face_directions(k) * np.array([1.0, 1.0, -1.0])
        out.append((game_tables.SKY_FACES[k], np.clip(paint(world, stars), 0, 1)))
    return out
