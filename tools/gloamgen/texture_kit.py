"""Small, deterministic building blocks for the procedural textures: tileable noise, cell
patterns, blending, and the final reduction to the game's 5 bits per channel."""
import io
import zlib
import struct

import numpy as np

BAYER = np.array([[0, 8, 2, 10], [12, 4, 14, 6], [3, 11, 1, 9], [15, 7, 13, 5]], dtype=np.float64) / 16.0


def rng(seed):
    return np.random.default_rng(seed)


def noise(size, seed, beta=2.0, aspect=(1, 1)):
    """Tileable fractal noise in [0, 1]: white noise shaped by 1/f^beta in the frequency domain,
    so it wraps at the edges by construction.  size is (height, width)."""
    h, w = size
    r = rng(seed)
    white = r.standard_normal((h, w))
    fy = np.fft.fftfreq(h)[:, None] * aspect[0]
    fx = np.fft.fftfreq(w)[None, :] * aspect[1]
    f = np.sqrt(fx * fx + fy * fy)
    f[0, 0] = 1.0
    spectrum = np.fft.fft2(white) / (f ** (beta / 2.0))
    spectrum[0, 0] = 0
    out = np.real(np.fft.ifft2(spectrum))
    out -= out.min()
    out /= max(out.max(), 1e-9)
    return out


def grain(size, seed, along=1, stretch=24.0):
    """Wood grain: noise stretched along one axis (1 = along x)."""
    if along == 1:
        return noise(size, seed, 2.2, aspect=(1, 1.0 / stretch))
    return noise(size, seed, 2.2, aspect=(1.0 / stretch, 1))


def voronoi(size, points, wrap=True):
    """Distance to the nearest and second-nearest feature point and the nearest point's index,
    with the plane wrapped so that the pattern tiles."""
    h, w = size
    yy, xx = np.mgrid[0:h, 0:w].astype(np.float64)
    d1 = np.full((h, w), 1e9)
    d2 = np.full((h, w), 1e9)
    idx = np.zeros((h, w), dtype=np.int64)
    for i, (py, px) in enumerate(points):
        dy = np.abs(yy - py)
        dx = np.abs(xx - px)
        if wrap:
            dy = np.minimum(dy, h - dy)
            dx = np.minimum(dx, w - dx)
        d = np.sqrt(dx * dx + dy * dy)
        closer = d < d1
        d2 = np.where(closer, d1, np.minimum(d2, d))
        idx = np.where(closer, i, idx)
        d1 = np.where(closer, d, d1)
    return d1, d2, idx


def colour(rgb):
    return np.array(rgb, dtype=np.float64) / 255.0


def shade(base, amount):
    """base (h, w, 3) scaled per texel by amount (h, w)."""
    return base * amount[..., None]


def mix(a, b, t):
    t = np.clip(t, 0, 1)[..., None]
    return a * (1 - t) + b * t


def fill(size, rgb):
    h, w = size
    return np.ones((h, w, 3)) * colour(rgb)


def to_5bit(img, dither=True):
    """Reduces to 5 bits per channel (what the game keeps) with a fixed ordered dither, and
    expands back to 8 bits so that the file shows exactly what the game will."""
    h, w = img.shape[:2]
    t = np.clip(img, 0, 1) * 31.0
    if dither:
        t = t + np.tile(BAYER, (h // 4 + 1, w // 4 + 1))[:h, :w][..., None] - 0.5
    c = np.clip(np.floor(t + 0.5), 0, 31).astype(np.uint8)
    return (c << 3) | (c >> 2)


def png_bytes(img, alpha=None, dither=True):
    """A PNG with no metadata at all (no time stamps), so that output is byte-for-byte stable."""
    rgb = to_5bit(img, dither)
    h, w = rgb.shape[:2]
    if alpha is not None:
        a = np.where(alpha > 0.5, 255, 0).astype(np.uint8)
        data = np.concatenate([rgb, a[..., None]], axis=2)
        ctype, chans = 6, 4
    else:
        data = rgb
        ctype, chans = 2, 3
    raw = b"".join(b"\x00" + data[y].tobytes() for y in range(h))

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body) & 0xFFFFFFFF)

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", w, h, 8, ctype, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def blocks(size, rows, min_w, max_w, seed, mortar=2, stagger=True):
    """A coursed-stone or brick layout: per texel the block id and the distance to the mortar."""
    h, w = size
    r = rng(seed)
    ids = np.zeros((h, w), dtype=np.int64)
    edge = np.zeros((h, w))
    row_h = h // rows
    bid = 0
    for row in range(rows):
        y0 = row * row_h
        x = int(r.integers(0, max_w)) if stagger else 0
        widths = []
        total = 0
        while total < w:
            bw = int(r.integers(min_w, max_w + 1))
            if w - (total + bw) < min_w:
                bw = w - total
            widths.append(bw)
            total += bw
        xs = x
        for bw in widths:
            for dx in range(bw):
                col = (xs + dx) % w
                ids[y0:y0 + row_h, col] = bid
                de = min(dx, bw - 1 - dx)
                for dy in range(row_h):
                    edge[y0 + dy, col] = min(de, dy, row_h - 1 - dy)
            xs += bw
            bid += 1
    return ids, edge
