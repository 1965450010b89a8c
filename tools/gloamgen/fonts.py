"""The two bitmap fonts, rendered without smoothing from DejaVu (Debian's fonts-dejavu-core) into
the game's ".fnt" layout: a 256-glyph table in the order of the Windows-1251 code page, so that
ASCII and the Cyrillic letters (which the text decoder maps from UTF-8 onto that page) both draw.
Codes 9 and 10 are given the advance of a space: the word wrapper draws a separator after each
word, and a line feed between two lines of speech must read as a gap."""
import struct

from PIL import Image, ImageDraw, ImageFont

FONT_DIR = "/usr/share/fonts/truetype/dejavu/"
FONTS = [
    # file, face, pixel size, extra line spacing
    ("font_system.fnt", "DejaVuSansMono.ttf", 11, 2),
    ("font_dialogue.fnt", "DejaVuSerif.ttf", 13, 1),
]
FIRST, LAST = 9, 255


def glyph_char(code):
    if code < 0x20:
        return None
    try:
        return bytes([code]).decode("cp1251")
    except UnicodeDecodeError:
        return None


def build(face, size, spacing):
    font = ImageFont.truetype(FONT_DIR + face, size)
    space = int(round(font.getlength(" ")))
    entries = []
    bitmaps = bytearray()
    for code in range(FIRST, LAST + 1):
        ch = glyph_char(code)
        if code in (9, 10):
            entries.append((space, 0, 0, 0, 0, 0))
            continue
        if ch is None or code == 0x7F:
            entries.append((0, 0, 0, 0, 0, 0))
            continue
        advance = int(round(font.getlength(ch)))
        img = Image.new("1", (size * 3, size * 3), 0)
        draw = ImageDraw.Draw(img)
        draw.fontmode = "1"
        draw.text((size, size), ch, font=font, fill=1, anchor="la")
        box = img.getbbox()
        if box is None:
            entries.append((advance, 0, 0, 0, 0, 0))
            continue
        x0, y0, x1, y1 = box
        w, h = x1 - x0, y1 - y0
        offset = len(bitmaps)
        row_bytes = (w + 7) // 8
        for y in range(h):
            row = bytearray(row_bytes)
            for x in range(w):
                if img.getpixel((x0 + x, y0 + y)):
                    row[x // 8] |= 0x80 >> (x % 8)
            bitmaps += row
        entries.append((advance, x0 - size, y0 - size, w, h, offset))
    # the line is as tall as the inked glyphs need (accents included), not the face's whole ascent
    inked = [e for e in entries if e[4] > 0]
    top = min(e[2] for e in inked)
    bottom = max(e[2] + e[4] for e in inked)
    line_height = bottom - top + spacing
    entries = [(a, ox, oy - top if h else 0, w, h, off) for a, ox, oy, w, h, off in entries]
    out = bytearray(b"FNT\x00")
    out += struct.pack("<BBB", line_height, FIRST, LAST)
    for advance, ox, oy, w, h, offset in entries:
        out += struct.pack("<BbbBBI", advance, ox, oy, w, h, offset)
    out += struct.pack("<I", len(bitmaps))
    out += bitmaps
    return bytes(out)


def all_fonts():
    return [(name, build(face, size, spacing)) for name, face, size, spacing in FONTS]
