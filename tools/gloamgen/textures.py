"""Every texture of the level, painted from noise and simple shapes with fixed seeds.
Each recipe returns (rgb, alpha or None) as floats in 0..1."""
import math

import numpy as np

from .texture_kit import (noise, grain, voronoi, colour, shade, mix, fill, blocks, rng)


def stone_wall(n=256, seed=11, tone=(118, 110, 100)):
    ids, edge = blocks((n, n), 8, 40, 92, seed)
    r = rng(seed)
    tint = r.uniform(0.78, 1.12, ids.max() + 1)[ids]
    hue = r.uniform(-0.05, 0.05, ids.max() + 1)[ids]
    base = fill((n, n), tone)
    base[..., 0] *= 1 + hue
    base[..., 2] *= 1 - hue
    rough = noise((n, n), seed + 1, 1.6) * 0.35 + noise((n, n), seed + 2, 2.6) * 0.45 + 0.45
    bevel = np.clip(edge / 3.0, 0, 1) ** 0.6
    img = shade(base, tint * rough * (0.45 + 0.55 * bevel))
    chips = noise((n, n), seed + 3, 1.2) > 0.86
    img[chips] *= 0.7
    return img, None


def stone_floor(n=256, seed=21):
    r = rng(seed)
    pts = [(r.uniform(0, n), r.uniform(0, n)) for _ in range(14)]
    d1, d2, idx = voronoi((n, n), pts)
    gap = np.clip((d2 - d1) / 4.0, 0, 1)
    tint = r.uniform(0.8, 1.1, len(pts))[idx]
    base = fill((n, n), (112, 108, 102))
    rough = noise((n, n), seed + 1, 1.8) * 0.3 + noise((n, n), seed + 2, 2.8) * 0.4 + 0.5
    img = shade(base, tint * rough * (0.35 + 0.65 * gap ** 0.5))
    return img, None


def cobbles(n=256, seed=31):
    r = rng(seed)
    pts = []
    for gy in range(10):
        for gx in range(10):
            pts.append(((gy + r.uniform(0.2, 0.8)) * n / 10, (gx + r.uniform(0.2, 0.8)) * n / 10))
    d1, d2, idx = voronoi((n, n), pts)
    dome = np.clip((d2 - d1) / 9.0, 0, 1)
    tint = r.uniform(0.75, 1.15, len(pts))[idx]
    base = fill((n, n), (104, 106, 112))
    rough = noise((n, n), seed + 1, 2.2) * 0.35 + 0.65
    img = shade(base, tint * rough * (0.25 + 0.75 * np.sqrt(dome)))
    moss = noise((n, n), seed + 2, 2.0)
    img = mix(img, fill((n, n), (52, 66, 40)) * rough[..., None], (moss - 0.62) * 3 * (1 - dome))
    return img, None


def earth(n=256, seed=41):
    base = fill((n, n), (96, 78, 58))
    a = noise((n, n), seed, 1.7)
    b = noise((n, n), seed + 1, 2.8)
    img = shade(base, 0.55 + 0.35 * a + 0.25 * b)
    r = rng(seed + 2)
    for _ in range(260):
        y, x = int(r.integers(0, n)), int(r.integers(0, n))
        s = int(r.integers(1, 3))
        c = r.uniform(0.8, 1.4)
        img[np.ix_([(y + i) % n for i in range(s)], [(x + i) % n for i in range(s)])] *= c
    grass = noise((n, n), seed + 3, 1.9)
    img = mix(img, fill((n, n), (58, 72, 40)) * (0.6 + 0.5 * b)[..., None], (grass - 0.6) * 2.5)
    return img, None


def rock(n=256, seed=51):
    a = noise((n, n), seed, 2.0)
    b = noise((n, n), seed + 1, 1.4)
    base = fill((n, n), (84, 82, 86))
    img = shade(base, 0.35 + 0.55 * a + 0.25 * b)
    cracks = np.abs(noise((n, n), seed + 2, 2.4) - 0.5) < 0.015
    img[cracks] *= 0.45
    return img, None


def brick(n=128, seed=61):
    ids, edge = blocks((n, n), 8, 30, 34, seed)
    r = rng(seed)
    tint = r.uniform(0.72, 1.15, ids.max() + 1)[ids]
    base = fill((n, n), (150, 74, 52))
    rough = noise((n, n), seed + 1, 2.0) * 0.3 + 0.75
    brickc = shade(base, tint * rough)
    mortar = fill((n, n), (120, 112, 100)) * (0.8 + 0.3 * noise((n, n), seed + 2, 1.0))[..., None]
    img = mix(mortar, brickc, edge / 1.6)
    soot = noise((n, n), seed + 3, 2.0)
    img *= (1 - np.clip((soot - 0.55) * 1.5, 0, 0.5))[..., None]
    return img, None


def plaster(n=256, seed=71):
    base = fill((n, n), (176, 166, 146))
    a = noise((n, n), seed, 2.2)
    b = noise((n, n), seed + 1, 1.2)
    img = shade(base, 0.78 + 0.2 * a + 0.08 * b)
    stain = noise((n, n), seed + 2, 2.5)
    img = mix(img, img * colour((150, 130, 100)), np.clip((stain - 0.6) * 2.5, 0, 0.6))
    cracks = np.abs(noise((n, n), seed + 3, 2.2) - 0.5) < 0.006
    img[cracks] *= 0.6
    return img, None


def planks(n=256, seed=81, tone=(126, 88, 56), boards=8):
    h = n // boards
    g = grain((n, n), seed, along=1)
    r = rng(seed)
    img = np.zeros((n, n, 3))
    for b in range(boards):
        t = r.uniform(0.8, 1.15)
        sl = slice(b * h, (b + 1) * h)
        off = int(r.integers(0, n))
        img[sl] = shade(fill((h, n), tone), t * (0.65 + 0.5 * np.roll(g[sl], off, axis=1)))
        img[b * h] *= 0.35
        img[b * h + h - 1] *= 0.7
        cut = int(r.integers(0, n))
        img[sl, cut] *= 0.35
        for nail in (cut + 6, cut - 7):
            img[b * h + h // 2 - 1:b * h + h // 2 + 1, nail % n] *= 0.4
    return img, None


def wood_dark(n=128, seed=91):
    g = grain((n, n), seed, along=0, stretch=16)
    img = shade(fill((n, n), (96, 64, 40)), 0.55 + 0.55 * g)
    return img, None


def carpet(n=128, seed=101):
    yy, xx = np.mgrid[0:n, 0:n] / n
    red = fill((n, n), (128, 30, 32))
    gold = fill((n, n), (176, 136, 60))
    blue = fill((n, n), (40, 46, 92))
    # a lozenge in each tile and a border stripe
    u = (xx * 2) % 1 - 0.5
    v = (yy * 2) % 1 - 0.5
    diamond = np.abs(u) + np.abs(v)
    img = red.copy()
    img = mix(img, gold, (np.abs(diamond - 0.36) < 0.035).astype(float))
    img = mix(img, blue, (diamond < 0.16).astype(float))
    img = mix(img, gold, (np.abs(diamond - 0.08) < 0.025).astype(float))
    weave = noise((n, n), seed, 3.0) * 0.25 + 0.85
    img = shade(img, weave * (0.92 + 0.08 * np.sin(xx * n * math.pi)))
    worn = noise((n, n), seed + 1, 1.5)
    img *= (1 - np.clip((worn - 0.65) * 1.5, 0, 0.3))[..., None]
    return img, None


def tiles(n=128, seed=111):
    t = n // 4
    yy, xx = np.mgrid[0:n, 0:n]
    checker = ((xx // t + yy // t) % 2).astype(float)
    terracotta = fill((n, n), (164, 84, 52))
    cream = fill((n, n), (196, 182, 150))
    img = mix(terracotta, cream, checker)
    r = rng(seed)
    tint = r.uniform(0.85, 1.1, 16)[(yy // t) * 4 + xx // t]
    gx, gy = xx % t, yy % t
    grout = (np.minimum(gx, gy) < 2) | (np.maximum(gx, gy) > t - 2)
    img = shade(img, tint * (0.9 + 0.15 * noise((n, n), seed + 1, 2.0)))
    glaze = np.clip(1 - np.hypot(gx - t * 0.3, gy - t * 0.3) / (t * 0.5), 0, 1) * 0.15
    img = img + glaze[..., None]
    img[grout] = colour((90, 84, 76))
    return img, None


def iron_plate(n=128, seed=121):
    t = n // 2
    yy, xx = np.mgrid[0:n, 0:n]
    base = fill((n, n), (92, 96, 104))
    img = shade(base, 0.7 + 0.3 * noise((n, n), seed, 2.0))
    # raised diamond tread
    u, v = (xx % 16) - 8, (yy % 16) - 8
    bump = (np.abs(u + v) < 2) & (np.abs(u - v) < 7) & (((xx // 16) + (yy // 16)) % 2 == 0)
    bump2 = (np.abs(u - v) < 2) & (np.abs(u + v) < 7) & (((xx // 16) + (yy // 16)) % 2 == 1)
    img[bump | bump2] *= 1.3
    seam = (xx % t < 2) | (yy % t < 2)
    img[seam] *= 0.4
    rivet = ((np.hypot((xx % t) - 6, (yy % t) - 6) < 2.2) | (np.hypot((xx % t) - t + 6, (yy % t) - 6) < 2.2) |
             (np.hypot((xx % t) - 6, (yy % t) - t + 6) < 2.2) | (np.hypot((xx % t) - t + 6, (yy % t) - t + 6) < 2.2))
    img[rivet] = colour((150, 150, 150))
    rust = noise((n, n), seed + 1, 2.2)
    img = mix(img, fill((n, n), (120, 70, 40)) * (0.6 + 0.4 * rust)[..., None], (rust - 0.66) * 2.5)
    return img, None


def door(w=128, h=256, seed=131, iron=False):
    g = grain((h, w), seed, along=0, stretch=20)
    base = fill((h, w), (112, 74, 44) if not iron else (80, 56, 38))
    img = shade(base, 0.55 + 0.5 * g)
    xx = np.arange(w)[None, :].repeat(h, 0)
    yy = np.arange(h)[:, None].repeat(w, 1)
    img[(xx % (w // 5)) < 2] *= 0.4
    bands = [40, 128, 216] if not iron else [24, 72, 128, 184, 232]
    metal = fill((h, w), (60, 60, 64)) * (0.8 + 0.4 * noise((h, w), seed + 1, 2.0))[..., None]
    for b in bands:
        sl = (yy >= b - 7) & (yy <= b + 7)
        img[sl] = metal[sl]
        img[(yy == b - 7) | (yy == b + 7)] *= 0.5
        for x in range(8, w, 20 if not iron else 14):
            stud = np.hypot(xx - x, yy - b) < 3
            img[stud] = colour((140, 140, 136))
    if iron:
        for x in range(10, w, 28):
            for y in range(48, h, 48):
                img[np.hypot(xx - x, yy - y) < 3] = colour((120, 118, 112))
        plate = (np.abs(xx - (w - 28)) < 12) & (np.abs(yy - 150) < 18)
        img[plate] = colour((70, 68, 60))
        img[(np.abs(xx - (w - 28)) < 2) & (np.abs(yy - 154) < 7)] = colour((10, 10, 10))
    frame = (xx < 3) | (xx > w - 4) | (yy < 3) | (yy > h - 4)
    img[frame] *= 0.5
    return img, None


def env_steel(n=128, seed=141):
    """What polished steel reflects: the ceiling's cool dark above, warm firelight around the
    horizon, the dark floor below, blurred as on a curved surface."""
    yy, xx = np.mgrid[0:n, 0:n] / (n - 1) * 2 - 1
    rz2 = np.clip(1 - xx * xx - yy * yy, 0, 1)
    img = np.zeros((n, n, 3))
    up = np.clip(-yy, 0, 1)
    down = np.clip(yy, 0, 1)
    img += colour((150, 160, 176)) * (0.35 + 0.5 * up)[..., None]
    img = mix(img, colour((60, 52, 48)), down * 1.2)
    glow = np.exp(-((xx - 0.45) ** 2 + (yy + 0.05) ** 2) / 0.05)
    img += colour((255, 190, 110)) * glow[..., None] * 0.8
    glow2 = np.exp(-((xx + 0.55) ** 2 + (yy - 0.1) ** 2) / 0.03)
    img += colour((255, 170, 90)) * glow2[..., None] * 0.5
    spectrum = np.exp(-((xx + 0.2) ** 2 + (yy + 0.55) ** 2) / 0.01)
    img += spectrum[..., None] * 0.9
    img *= (0.8 + 0.2 * noise((n, n), seed, 3.0))[..., None]
    img = mix(img, img * 0.6, 1 - rz2)
    return img, None


def ivy(n=128, seed=151):
    r = rng(seed)
    img = np.zeros((n, n, 3))
    alpha = np.zeros((n, n))
    yy, xx = np.mgrid[0:n, 0:n]
    # stems wandering down, then leaves along them
    for s in range(9):
        x = r.uniform(0, n)
        for y in range(n):
            x += r.uniform(-0.8, 0.8)
            xi = int(x) % n
            img[y, xi] = colour((60, 44, 30))
            alpha[y, xi] = 1
            if r.random() < 0.3:
                cx, cy = (x + r.uniform(-7, 7)) % n, (y + r.uniform(-4, 4)) % n
                rad = r.uniform(3.5, 6.5)
                ang = r.uniform(0, math.pi)
                dx = (xx - cx + n / 2) % n - n / 2
                dy = (yy - cy + n / 2) % n - n / 2
                u = dx * math.cos(ang) + dy * math.sin(ang)
                v = -dx * math.sin(ang) + dy * math.cos(ang)
                leaf = (u / rad) ** 2 + (v / (rad * 0.7)) ** 2 < 1
                g = r.uniform(0.6, 1.1)
                img[leaf] = colour((52, 96, 44)) * g * (0.8 + 0.3 * (u[leaf] / rad))[..., None]
                alpha[leaf] = 1
    return img, alpha


def flame(n=64, seed=161):
    yy, xx = np.mgrid[0:n, 0:n] / (n - 1)
    x = (xx - 0.5) * 2
    y = 1 - yy                                  # 0 at the bottom, 1 at the top
    width = 0.75 * np.sqrt(np.clip(1 - y, 0, 1)) * np.clip(y * 4, 0, 1) ** 0.5 + 0.02
    wob = (noise((n, n), seed, 2.0) - 0.5) * 0.25
    d = np.abs(x + wob * y) / width
    alpha = (d < 1) & (y < 0.95)
    heat = np.clip(1 - d, 0, 1) * (1 - y * 0.6)
    img = mix(colour((200, 60, 10)) * np.ones((n, n, 3)), colour((255, 190, 60)) * np.ones((n, n, 3)), heat * 1.6)
    img = mix(img, np.ones((n, n, 3)) * colour((255, 250, 210)), (heat - 0.55) * 3)
    return img, alpha.astype(float)


def embers(n=64, seed=171):
    a = noise((n, n), seed, 2.4)
    b = noise((n, n), seed + 1, 1.5)
    img = mix(fill((n, n), (40, 16, 10)), fill((n, n), (255, 120, 30)), (a - 0.4) * 2.5)
    img = mix(img, fill((n, n), (255, 220, 120)), (a * b - 0.45) * 4)
    return img, None


def soup(n=32, seed=181):
    a = noise((n, n), seed, 2.0)
    return mix(fill((n, n), (70, 58, 30)), fill((n, n), (140, 120, 60)), a), None


def stained_glass(n=64, seed=191):
    yy, xx = np.mgrid[0:n, 0:n]
    u = (xx + yy) % 16
    v = (xx - yy) % 16
    cell = ((xx + yy) // 16 * 7 + (xx - yy) // 16 * 3) % 4
    palette = np.array([colour((60, 90, 200)), colour((190, 40, 40)), colour((220, 170, 50)), colour((60, 150, 80))])
    img = palette[cell]
    img *= (0.8 + 0.3 * noise((n, n), seed, 2.0))[..., None]
    lead = (u < 1.5) | (v < 1.5)
    img[lead] = colour((24, 22, 20))
    moon = np.hypot(xx - 32, yy - 24) < 9
    img[moon & ~lead] = colour((235, 230, 200))
    frame = (xx < 2) | (xx > n - 3) | (yy < 2) | (yy > n - 3)
    img[frame] = colour((24, 22, 20))
    return img, None


def books(n=128, seed=201):
    r = rng(seed)
    img = shade(fill((n, n), (70, 46, 28)), 0.7 + 0.4 * grain((n, n), seed, along=1))
    shelf_h = n // 4
    palette = [(120, 30, 30), (40, 60, 110), (50, 90, 50), (130, 100, 50), (80, 40, 80), (150, 130, 100), (60, 40, 30)]
    for s in range(4):
        y1 = (s + 1) * shelf_h - 4
        x = 4
        while x < n - 6:
            bw = int(r.integers(3, 7))
            bh = int(r.integers(shelf_h - 14, shelf_h - 5))
            c = colour(palette[int(r.integers(0, len(palette)))]) * r.uniform(0.7, 1.1)
            img[y1 - bh:y1, x:x + bw] = c
            img[y1 - bh:y1, x] *= 0.6
            img[y1 - bh + 3:y1 - bh + 5, x:x + bw] = colour((190, 160, 80)) * 0.8
            x += bw + (1 if r.random() < 0.8 else int(r.integers(3, 9)))
        img[y1:y1 + 4, :] = colour((90, 60, 36))
        img[y1, :] *= 1.3
    img[:, :4] = colour((90, 60, 36))
    img[:, n - 4:] = colour((90, 60, 36))
    return img, None


def banner(w=64, h=128, seed=211):
    yy, xx = np.mgrid[0:h, 0:w]
    img = fill((h, w), (110, 20, 28)) * (0.85 + 0.2 * noise((h, w), seed, 2.0))[..., None]
    border = (xx < 4) | (xx > w - 5) | (yy < 4)
    img[border] = colour((190, 150, 60))
    # a tower under a crescent moon
    tower = (np.abs(xx - 32) < 9) & (yy > 50) & (yy < 92)
    merl = (yy > 44) & (yy <= 50) & (np.abs(xx - 32) < 9) & (((xx - 23) // 4) % 2 == 0)
    gate = (np.abs(xx - 32) < 3) & (yy > 80) & (yy < 92)
    img[tower | merl] = colour((210, 200, 170))
    img[gate] = colour((40, 10, 14))
    moon = (np.hypot(xx - 32, yy - 26) < 10) & ~(np.hypot(xx - 36, yy - 23) < 9)
    img[moon] = colour((220, 190, 90))
    tail = yy > h - 22 + np.abs(xx - w / 2) * -0.7 + 22 * 0
    cut = (yy > h - 24) & (np.abs(xx - w / 2) < (yy - (h - 24)) * 1.3)
    alpha = np.ones((h, w))
    alpha[cut] = 0
    return img, alpha


def gate(n=128, seed=221):
    g = grain((n, n), seed, along=0, stretch=20)
    img = shade(fill((n, n), (92, 64, 40)), 0.5 + 0.5 * g)
    xx = np.arange(n)[None, :].repeat(n, 0)
    yy = np.arange(n)[:, None].repeat(n, 1)
    img[(xx % 16) < 2] *= 0.4
    metal = colour((56, 56, 60))
    for b in (14, 64, 114):
        img[(yy >= b - 4) & (yy <= b + 4)] = metal
    diag = (np.abs(xx - yy) < 4) | (np.abs(xx - (n - yy)) < 4)
    img[diag] = metal * 1.1
    for x in range(6, n, 12):
        for b in (14, 64, 114):
            img[np.hypot(xx - x, yy - b) < 2] = colour((130, 126, 120))
    return img, None


def cloth(n=64, seed=231, tone=(190, 184, 166)):
    yy, xx = np.mgrid[0:n, 0:n]
    weave = 0.9 + 0.1 * ((xx + yy) % 2)
    img = shade(fill((n, n), tone), weave * (0.8 + 0.25 * noise((n, n), seed, 1.8)))
    return img, None


def chest(n=64, seed=241):
    img, _ = wood_dark(n, seed)
    yy, xx = np.mgrid[0:n, 0:n]
    band = (np.abs(xx - 10) < 3) | (np.abs(xx - n + 10) < 3) | (yy < 3) | (yy > n - 4)
    img[band] = colour((60, 58, 56))
    img[(np.abs(xx - n // 2) < 5) & (np.abs(yy - 18) < 6)] = colour((150, 120, 50))
    return img, None


def barrel(n=64, seed=251):
    g = grain((n, n), seed, along=0, stretch=10)
    img = shade(fill((n, n), (120, 82, 48)), 0.6 + 0.45 * g)
    xx = np.arange(n)[None, :].repeat(n, 0)
    yy = np.arange(n)[:, None].repeat(n, 1)
    img[(xx % 8) == 0] *= 0.45
    for b in (6, 24, 40, 58):
        img[np.abs(yy - b) < 2] = colour((58, 56, 54))
    return img, None


def barrel_top(n=64, seed=261):
    g = grain((n, n), seed, along=1, stretch=10)
    img = shade(fill((n, n), (126, 88, 52)), 0.6 + 0.4 * g)
    yy, xx = np.mgrid[0:n, 0:n]
    img[(yy % 12) == 0] *= 0.5
    ring = np.abs(np.hypot(xx - n / 2 + 0.5, yy - n / 2 + 0.5) - n / 2 + 3) < 2
    img[ring] = colour((58, 56, 54))
    return img, None


def crate(n=64, seed=271):
    g = grain((n, n), seed, along=1, stretch=12)
    img = shade(fill((n, n), (150, 116, 70)), 0.6 + 0.4 * g)
    yy, xx = np.mgrid[0:n, 0:n]
    img[(yy % 16) == 0] *= 0.5
    frame = (xx < 6) | (xx > n - 7) | (yy < 6) | (yy > n - 7)
    img[frame] *= 0.75
    img[np.abs(xx - yy) < 4] *= 0.8
    return img, None


def metal(n=64, seed=281, tone=(70, 70, 76), rusty=False):
    a = noise((n, n), seed, 2.2)
    img = shade(fill((n, n), tone), 0.7 + 0.45 * a)
    if rusty:
        b = noise((n, n), seed + 1, 1.8)
        img = mix(img, fill((n, n), (140, 70, 34)) * (0.6 + 0.5 * a)[..., None], b * 1.4)
    return img, None


def letter(n=64, seed=291):
    img = shade(fill((n, n), (214, 198, 160)), 0.85 + 0.15 * noise((n, n), seed, 2.0))
    yy, xx = np.mgrid[0:n, 0:n]
    r = rng(seed)
    for y in range(10, n - 8, 6):
        x1 = int(r.integers(40, 56))
        line = (yy == y) & (xx > 8) & (xx < x1) & (noise((n, n), seed + y, 1.0) > 0.3)
        img[line] = colour((60, 44, 40))
    seal = np.hypot(xx - 46, yy - 50) < 6
    img[seal] = colour((150, 24, 24))
    return img, None


def simple(n, rgb, seed, var=0.2, beta=2.0):
    return shade(fill((n, n), rgb), 1 - var + var * 2 * noise((n, n), seed, beta)), None


def character(seed, robe, trim, hair, skin=(200, 150, 120), beard=False, hood=False):
    """A 128 x 128 atlas: robe on the left half, the face top right, skin and hair below it."""
    n = 128
    img = np.zeros((n, n, 3))
    yy, xx = np.mgrid[0:n, 0:n]
    # robe: vertical folds, a belt, a hem
    folds = 0.8 + 0.2 * np.sin(xx[:, :64] / 64 * math.pi * 8) + 0.1 * noise((n, 64), seed, 2.0)
    img[:, :64] = shade(fill((n, 64), robe), folds)
    img[60:66, :64] = colour(trim)
    img[n - 6:, :64] = colour(trim) * 0.8
    img[:8, :64] = colour(trim)
    # face
    f = img[:64, 64:]
    f[:] = colour(skin)
    fy, fx = np.mgrid[0:64, 0:64]
    f[:14] = colour(hair)
    if hood:
        f[:20] = colour(robe) * 0.8
        f[:, :6] = colour(robe) * 0.8
        f[:, 58:] = colour(robe) * 0.8
    for ex in (22, 42):
        f[(np.abs(fx - ex) < 4) & (np.abs(fy - 26) < 2)] = colour((250, 250, 240))
        f[(np.abs(fx - ex) < 2) & (np.abs(fy - 26) < 2)] = colour((30, 24, 20))
        f[(np.abs(fx - ex) < 5) & (np.abs(fy - 21) < 1)] = colour(hair) * 0.8
    f[(np.abs(fx - 32) < 2) & (fy > 26) & (fy < 38)] *= 0.8
    f[(np.abs(fx - 32) < 7) & (np.abs(fy - 44) < 1)] = colour((120, 50, 50))
    if beard:
        b = (fy > 40) & (np.abs(fx - 32) < 20 - (fy - 40) * 0.3)
        f[b] = colour(hair) * (0.85 + 0.2 * noise((64, 64), seed + 3, 2.0))[b][..., None]
        f[(np.abs(fx - 32) < 7) & (np.abs(fy - 43) < 1)] = colour((80, 40, 40))
    f *= (0.9 + 0.1 * noise((64, 64), seed + 1, 2.0))[..., None]
    img[64:, 64:96] = shade(fill((64, 32), skin), 0.9 + 0.1 * noise((64, 32), seed + 2, 2.0))
    img[64:, 96:] = shade(fill((64, 32), hair if not hood else robe), 0.75 + 0.3 * noise((64, 32), seed + 4, 2.4))
    return img, None


def all_textures():
    """(file name, recipe) in a fixed order."""
    return [
        ("stone_wall.png", stone_wall), ("stone_floor.png", stone_floor), ("cobbles.png", cobbles),
        ("earth.png", earth), ("rock.png", rock), ("brick.png", brick), ("plaster.png", plaster),
        ("planks.png", planks), ("wood_dark.png", wood_dark), ("carpet.png", carpet), ("tiles.png", tiles),
        ("iron_plate.png", iron_plate), ("door_oak.png", lambda: door(seed=131)),
        ("door_iron.png", lambda: door(seed=137, iron=True)), ("env_steel.png", env_steel),
        ("ivy@d.png", ivy), ("flame@de9.png", flame), ("embers@e8.png", embers), ("soup@e6.png", soup),
        ("stained_glass@dt4.png", stained_glass), ("books.png", books), ("banner@d.png", banner),
        ("gate.png", gate), ("linen.png", cloth), ("chest.png", chest), ("barrel.png", barrel),
        ("barrel_top.png", barrel_top), ("crate.png", crate), ("iron.png", metal),
        ("rust.png", lambda: metal(seed=283, tone=(90, 70, 60), rusty=True)),
        ("silver.png", lambda: simple(32, (200, 204, 210), 301, 0.15)),
        ("letter.png", letter), ("candle.png", lambda: simple(32, (226, 214, 180), 311, 0.08)),
        ("soot.png", lambda: simple(32, (24, 20, 18), 321, 0.3)),
        ("rope.png", lambda: simple(32, (150, 124, 80), 331, 0.3, 3.0)),
        ("bone.png", lambda: simple(32, (206, 196, 168), 341, 0.15)),
        ("warden.png", lambda: character(351, (58, 62, 72), (140, 110, 50), (150, 150, 150), beard=True)),
        ("maud.png", lambda: character(361, (120, 60, 48), (200, 190, 160), (110, 70, 40), hood=True)),
    ]
