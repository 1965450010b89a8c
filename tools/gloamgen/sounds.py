"""Every sound of the game, synthesised: impacts as sums of decaying partials (modal synthesis),
scrapes and crunches from shaped noise, voices from a pulse train through vowel formants.
All sounds are 22050 Hz, 16-bit, mono PCM; peaks are kept well below full scale because the mixer
adds voices with wrap-around and no clipping."""
import struct

import numpy as np

from . import game_tables
from .texture_kit import rng

RATE = 22050
MATERIALS = game_tables.MATERIALS


def t_axis(seconds):
    return np.arange(int(seconds * RATE)) / RATE


def modes(seconds, partials, seed=0, start=0.0):
    """Sum of decaying sines: partials is a list of (frequency, decay time, amplitude)."""
    t = t_axis(seconds)
    r = rng(seed)
    out = np.zeros_like(t)
    tt = np.clip(t - start, 0, None)
    on = t >= start
    for f, tau, amp in partials:
        out += on * amp * np.exp(-tt / tau) * np.sin(2 * np.pi * f * tt + r.uniform(0, 2 * np.pi))
    return out


def band_noise(seconds, lo, hi, seed, tilt=0.0):
    """White noise limited to lo..hi Hz (in the frequency domain: no filter state, no drift)."""
    n = int(seconds * RATE)
    spectrum = np.fft.rfft(rng(seed).standard_normal(n))
    f = np.fft.rfftfreq(n, 1 / RATE)
    edge = 0.15
    gain = np.clip(np.minimum((f - lo * (1 - edge)) / (lo * edge + 1), ((hi * (1 + edge)) - f) / (hi * edge + 1)), 0, 1)
    if tilt:
        gain *= (np.maximum(f, 20) / 1000.0) ** tilt
    out = np.fft.irfft(spectrum * gain, n)
    return out / (np.abs(out).max() + 1e-9)


def env(seconds, attack, decay, start=0.0):
    t = t_axis(seconds) - start
    a = np.clip(t / max(attack, 1e-4), 0, 1)
    return np.where(t < 0, 0, a * np.exp(-np.clip(t - attack, 0, None) / decay))


def place(total, piece, at):
    out = np.zeros(int(total * RATE))
    i = int(at * RATE)
    n = min(len(piece), len(out) - i)
    if n > 0:
        out[i:i + n] += piece[:n]
    return out


def normalise(x, peak):
    x = x - np.mean(x)
    fade = np.ones_like(x)
    k = min(len(x), int(0.01 * RATE))
    fade[-k:] = np.linspace(1, 0, k)
    x = x * fade
    return x * (peak / (np.abs(x).max() + 1e-9))


def step(material, variant, heavy=False):
    seed = 1000 + MATERIALS.index(material) * 50 + variant * 7 + (25 if heavy else 0)
    r = rng(seed)
    p = r.uniform(0.93, 1.07)
    dur = 0.5 if heavy else 0.3
    thud = modes(dur, [(70 * p, 0.05 if heavy else 0.03, 1.0), (110 * p, 0.03, 0.5)], seed)
    if material == "stone":
        click = band_noise(dur, 1800, 6000, seed) * env(dur, 0.001, 0.008)
        grit = band_noise(dur, 900, 3500, seed + 1) * env(dur, 0.004, 0.035, 0.01) * 0.35
        x = click * 0.9 + grit + thud * (0.8 if heavy else 0.45)
    elif material == "ground":
        x = thud * (0.7 if heavy else 0.35)
        for g in range(int(r.integers(9, 15)) * (2 if heavy else 1)):
            at = r.uniform(0, 0.07 if not heavy else 0.12)
            grain = band_noise(0.012, 700, 3800, seed + 10 + g) * env(0.012, 0.0005, 0.003)
            x = x + place(dur, grain, at) * r.uniform(0.3, 1.0)
        x = x + band_noise(dur, 200, 1500, seed + 3) * env(dur, 0.01, 0.05) * 0.3
    elif material == "wood":
        body = modes(dur, [(185 * p, 0.06, 1.0), (420 * p, 0.045, 0.6), (760 * p, 0.03, 0.35),
                           (1270 * p, 0.02, 0.2)], seed)
        click = band_noise(dur, 1500, 5000, seed + 2) * env(dur, 0.001, 0.006) * 0.5
        x = body * env(dur, 0.002, 0.12) + click + thud * (0.6 if heavy else 0.2)
    elif material == "metal":
        ring = modes(dur * 1.6, [(430 * p, 0.16, 0.7), (1165 * p, 0.12, 0.5), (2230 * p, 0.09, 0.45),
                                 (3510 * p, 0.06, 0.3), (4710 * p, 0.04, 0.2)], seed)
        click = band_noise(dur * 1.6, 2000, 7000, seed + 2) * env(dur * 1.6, 0.001, 0.005) * 0.6
        x = ring + click + modes(dur * 1.6, [(75 * p, 0.05, 1.0)], seed + 4) * (0.7 if heavy else 0.3)
    elif material == "carpet":
        muff = band_noise(dur, 60, 500, seed) * env(dur, 0.006, 0.035 if not heavy else 0.07)
        x = muff + thud * (0.6 if heavy else 0.3) + band_noise(dur, 500, 2500, seed + 1) * env(dur, 0.01, 0.02) * 0.08
    else:  # ceramic
        tick = modes(dur, [(2600 * p, 0.03, 0.8), (3950 * p, 0.02, 0.6), (5300 * p, 0.015, 0.4)], seed)
        click = band_noise(dur, 3000, 9000, seed + 2) * env(dur, 0.0005, 0.004)
        x = tick + click * 0.7 + thud * (0.7 if heavy else 0.3)
    quiet = {"stone": 0.24, "ground": 0.2, "wood": 0.24, "metal": 0.2, "carpet": 0.14, "ceramic": 0.22}[material]
    return normalise(x, (0.42 if heavy else quiet) * 32767)


def voice(seconds, f0_start, f0_end, formants, seed, breath=0.25, vibrato=0.0):
    """A voiced sound: a glottal pulse train through fixed vowel resonances."""
    t = t_axis(seconds)
    r = rng(seed)
    f0 = f0_start + (f0_end - f0_start) * (t / seconds) ** 0.8
    f0 = f0 * (1 + 0.03 * np.sin(2 * np.pi * 5.5 * t) * vibrato) * (1 + 0.02 * r.standard_normal(len(t)).cumsum() / np.sqrt(len(t)))
    phase = np.cumsum(f0 / RATE)
    pulses = (np.diff(np.floor(phase), prepend=0) > 0).astype(float)
    src = pulses + breath * r.standard_normal(len(t)) * 0.3
    spectrum = np.fft.rfft(src)
    f = np.fft.rfftfreq(len(t), 1 / RATE)
    gain = np.zeros_like(f)
    for fc, bw, amp in formants:
        gain += amp / (1 + ((f - fc) / (bw / 2)) ** 2)
    gain *= 1 / (1 + (f / 3000) ** 2)
    return np.fft.irfft(spectrum * gain, len(t))


def hurt():
    x = voice(0.38, 165, 120, [(620, 120, 1.0), (1150, 150, 0.6), (2500, 250, 0.25)], 2001, 0.4)
    x *= env(0.38, 0.015, 0.12)
    return normalise(x, 0.45 * 32767)


def death():
    d = 1.5
    x = voice(d, 150, 70, [(700, 140, 1.0), (1050, 150, 0.5), (2500, 300, 0.2)], 2002, 0.5, vibrato=1.0)
    x *= env(d, 0.03, 0.45)
    fall = modes(d, [(60, 0.09, 1.0), (95, 0.06, 0.6)], 2003, start=1.05) + \
        band_noise(d, 100, 1200, 2004) * env(d, 0.003, 0.05, 1.05) * 0.4
    return normalise(x + fall * 0.9, 0.45 * 32767)


def climb():
    d = 0.55
    x = voice(d, 190, 150, [(520, 120, 1.0), (1000, 160, 0.5), (2400, 250, 0.2)], 2005, 0.6) * env(d, 0.01, 0.09)
    scrape = band_noise(d, 400, 4000, 2006) * env(d, 0.05, 0.15, 0.08) * 0.35
    knee = modes(d, [(90, 0.03, 1.0)], 2007, start=0.3) * 0.4
    return normalise(x + scrape + knee, 0.35 * 32767)


def creak(seconds, seed, rate_path, body=(240, 520, 900, 1600)):
    """Stick-slip creaking of a hinge: irregular pulses, each ringing the door's wooden body."""
    r = rng(seed)
    t = t_axis(seconds)
    rate = np.interp(t, np.linspace(0, seconds, len(rate_path)), rate_path)
    rate *= 1 + 0.25 * np.sin(2 * np.pi * 3.1 * t + r.uniform(0, 6)) * r.uniform(0.5, 1.0)
    phase = np.cumsum(rate / RATE)
    pulses = (np.diff(np.floor(phase), prepend=0) > 0).astype(float) * (0.6 + 0.4 * r.random(len(t)))
    ir = modes(0.04, [(body[0], 0.012, 1.0), (body[1], 0.01, 0.8), (body[2], 0.008, 0.6), (body[3], 0.005, 0.4)], seed + 1)
    x = np.convolve(pulses, ir)[:len(t)]
    amp = np.interp(t, [0, 0.05, seconds * 0.8, seconds], [0, 1, 0.8, 0])
    return x * amp


def latch(seed):
    return modes(0.12, [(1900, 0.012, 1.0), (3200, 0.008, 0.7), (4700, 0.005, 0.4)], seed) + \
        band_noise(0.12, 2000, 8000, seed + 1) * env(0.12, 0.0005, 0.004) * 0.6


def door_opening():
    d = 1.0
    x = place(d, latch(3001), 0.0) * 0.6 + place(d, creak(0.85, 3002, [30, 70, 110, 60, 45, 80]), 0.1)
    return normalise(x, 0.33 * 32767)


def door_closing():
    d = 0.9
    slam = modes(0.5, [(72, 0.08, 1.0), (140, 0.05, 0.6), (310, 0.03, 0.3)], 3011) + \
        band_noise(0.5, 100, 2000, 3012) * env(0.5, 0.002, 0.03) * 0.5
    x = place(d, creak(0.4, 3013, [80, 50, 90]), 0.0) * 0.6 + place(d, slam, 0.4) + place(d, latch(3014), 0.42) * 0.5
    return normalise(x, 0.4 * 32767)


def door_locked():
    d = 0.6
    thump = modes(0.3, [(85, 0.04, 1.0), (180, 0.03, 0.5)], 3021) + band_noise(0.3, 100, 1500, 3022) * env(0.3, 0.002, 0.02) * 0.4
    x = place(d, latch(3023), 0.0) + place(d, thump, 0.02) + place(d, latch(3024), 0.2) * 0.8 + place(d, thump, 0.22) * 0.8
    return normalise(x, 0.35 * 32767)


def door_unlock():
    d = 0.7
    scrape = band_noise(0.2, 2500, 7000, 3031) * env(0.2, 0.02, 0.07)
    ratchet = sum(place(0.3, latch(3032 + i) * 0.35, 0.05 * i) for i in range(3))
    bolt = modes(0.35, [(1150, 0.05, 1.0), (2450, 0.04, 0.7), (3900, 0.02, 0.4), (140, 0.05, 0.8)], 3040) + \
        band_noise(0.35, 1500, 7000, 3041) * env(0.35, 0.0005, 0.006)
    x = place(d, scrape, 0.0) * 0.5 + place(d, ratchet, 0.15) + place(d, bolt, 0.4)
    return normalise(x, 0.38 * 32767)


def pickup_key():
    d = 0.5
    r = rng(4001)
    x = np.zeros(int(d * RATE))
    for i in range(4):
        f = r.uniform(3000, 4200)
        x += place(d, modes(0.3, [(f, 0.08, 1.0), (f * 1.47, 0.05, 0.6), (f * 2.1, 0.03, 0.3)], 4002 + i), 0.02 + i * r.uniform(0.05, 0.09))
    return normalise(x, 0.3 * 32767)


def pickup_coin():
    d = 0.6
    ring = modes(0.5, [(4150, 0.18, 1.0), (5870, 0.12, 0.6), (7610, 0.08, 0.35)], 4011)
    x = place(d, ring, 0.0) + place(d, ring * 0.4, 0.12)
    return normalise(x, 0.28 * 32767)


def pickup_paper():
    d = 0.45
    r = rng(4021)
    x = np.zeros(int(d * RATE))
    for i in range(7):
        x += place(d, band_noise(0.06, 1800, 9000, 4022 + i) * env(0.06, 0.004, 0.015) * r.uniform(0.4, 1.0), r.uniform(0, 0.35))
    return normalise(x, 0.25 * 32767)


def wav_bytes(samples):
    pcm = np.clip(np.round(samples), -32768, 32767).astype("<i2").tobytes()
    return (b"RIFF" + struct.pack("<I", 36 + len(pcm)) + b"WAVE" +
            b"fmt " + struct.pack("<IHHIIHH", 16, 1, 1, RATE, RATE * 2, 2, 16) +
            b"data" + struct.pack("<I", len(pcm)) + pcm)


def all_sounds():
    out = [("door_opening.wav", door_opening), ("door_closing.wav", door_closing),
           ("door_locked.wav", door_locked), ("door_unlock.wav", door_unlock)]
    for m in MATERIALS:
        for v in range(4):
            out.append(("pl_step_%s%02d.wav" % (m, v + 1), lambda m=m, v=v: step(m, v)))
    for m in MATERIALS:
        out.append(("pl_land_%s01.wav" % m, lambda m=m: step(m, 0, heavy=True)))
    out += [("pl_hurt01.wav", hurt), ("pl_death01.wav", death), ("pl_climb01.wav", climb),
            ("pickup_key.wav", pickup_key), ("pickup_coin.wav", pickup_coin), ("pickup_paper.wav", pickup_paper)]
    return out
