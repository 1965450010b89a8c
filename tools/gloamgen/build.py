"""Puts every part of the data set in its place."""
import os

from . import fonts, level, sounds, textures, sky, world, figure
from .texture_kit import png_bytes

DIALOGUES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "dialogues")


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    mode = "wb" if isinstance(data, bytes) else "w"
    with open(path, mode, **({} if mode == "wb" else {"newline": "\n", "encoding": "utf-8"})) as f:
        f.write(data)


def write_all(out):
    rooms, props = level.build()
    models = {r.model.name: r.model for r in rooms}
    models.update(props)
    models["warden.mdl"] = figure.figure("warden.mdl", "warden.png", skinned=True)
    models["maud.mdl"] = figure.figure("maud.mdl", "maud.png", skinned=False, stout=1.2)
    for name in sorted(models):
        write(os.path.join(out, "models", name), models[name].text())
    write(os.path.join(out, "animations", "warden_idle.anm"), figure.animation_text("warden_idle.anm"))
    bsp, roots = world.bsp_text(rooms)
    write(os.path.join(out, world.BSP_NAME), bsp)
    write(os.path.join(out, "scene.xml"), world.scene_text(rooms, roots))
    write(os.path.join(out, "items.xml"), world.items_text())
    for name, recipe in textures.all_textures():
        rgb, alpha = recipe()
        write(os.path.join(out, "textures", name), png_bytes(rgb, alpha))
    for name, rgb in sky.faces():
        write(os.path.join(out, "textures", name), png_bytes(rgb))
    for name, recipe in sounds.all_sounds():
        write(os.path.join(out, "sounds", name), sounds.wav_bytes(recipe()))
    for name, data in fonts.all_fonts():
        write(os.path.join(out, "fonts", name), data)
    for name in sorted(os.listdir(DIALOGUES)):
        with open(os.path.join(DIALOGUES, name), "rb") as f:
            write(os.path.join(out, "dialogues", name), f.read())


def self_check(out):
    from . import check
    return check.check_all(out)
