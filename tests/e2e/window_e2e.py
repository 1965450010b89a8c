#!/usr/bin/python3
"""End-to-end check of a game window on a virtual X server of its own (Xvfb).

Starts a host executable (natively, or under Wine with --wine), finds its window and checks, by
case:
  pattern  the title shows sensible counts, the client area shows the pattern that
           tests/e2e/pattern.h draws, scaled by SCREEN_SCALE (each channel exactly, or within
           --channel-tolerance), and Escape (mouse free) quits with 0;
  quit     the title shows sensible counts, the client area has the size SCREEN_SCALE gives (a
           screenshot is kept) and Escape quits with 0 (any drivers; with --click-first a click
           captures the mouse first, so the first Escape frees it and the second quits); with
           --no-sound-device the game must also say that it plays without sound; with --reference, the
           client area must also look like the headless host's frame of the same start (the
           lights flicker on their own clocks, so most pixels, not all, must match);
  crash    the drivers fault, "crash.dmp" is written and the "Crash" message box appears; the
           box is dismissed and the process ends;
  record   the game is played with --record and --state (a click captures the mouse, W walks,
           the mouse turns the view, Escape frees the mouse and Escape quits); the recording is
           replayed by the headless host (--reference) and its state must hold the same player
           position and yaw;
  script   the game plays --script FILE; once the script's last update has long passed, the
           window must show the headless host's frame after the same script (--reference).
With --package the program is taken from a release package unpacked into an empty folder and runs
there, on the settings and data it came with.
Screenshots are kept under --keep for people to look at. Exit status 0 when every check passed.
"""

import argparse
import ctypes
import json
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import time
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True  # nothing written into the source tree
sys.path.insert(0, HERE)
from virtual_display import end_wine_server, kill_wine_server, virtual_display  # noqa: E402

TITLE = re.compile(r"^Gloamhold \(FPS: (\d+), UPS: (\d+)\)$")


def fail(message):
    print("FAIL: " + message, flush=True)
    sys.exit(1)


def park_pointer():
    """Moves the pointer to the screen's top-left corner, away from where a window opens. Through
    Xlib itself (this xdotool cannot move the pointer while no window is open), on a connection kept
    open for the rest of the run: Xvfb resets, pointer and all, when its last client leaves."""
    xlib = ctypes.CDLL("libX11.so.6")
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    xlib.XDefaultRootWindow.restype = ctypes.c_ulong
    xlib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
    xlib.XWarpPointer.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_ulong, ctypes.c_int, ctypes.c_int,
                                  ctypes.c_uint, ctypes.c_uint, ctypes.c_int, ctypes.c_int]
    xlib.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
    display = xlib.XOpenDisplay(None)
    if not display:
        fail("cannot open the display to move the pointer")
    xlib.XWarpPointer(display, 0, xlib.XDefaultRootWindow(display), 0, 0, 0, 0, 0, 0)
    xlib.XSync(display, 0)
    if not xdotool("getmouselocation").startswith("x:0 y:0 "):
        fail("the pointer could not be moved out of the way")
    return display  # closed with the display itself


def xdotool(*arguments):
    """xdotool's answer, or "" when it fails or hangs (waiting on a window that went away, say)."""
    try:
        result = subprocess.run(["xdotool", *arguments], capture_output=True, text=True, timeout=20)
    except subprocess.TimeoutExpired:
        return ""
    return result.stdout.strip() if result.returncode == 0 else ""


def wait_for_window(name_pattern, process, timeout):
    """The X window whose name matches once it is there (Wine may take a while to start), or None."""
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        if process.poll() is not None:
            fail("the program ended with %d before its window appeared" % process.returncode)
        found = xdotool("search", "--name", name_pattern).split()
        if found:
            return found[0]
        time.sleep(0.25)
    return None


def window_names():
    """The names of the windows on the display, for a failure's message."""
    return xdotool("search", "--name", ".", "getwindowname", "%@").split("\n")


def find_window(name_pattern, process, timeout):
    window = wait_for_window(name_pattern, process, timeout)
    if window is None:
        fail("no window named like %r within %d s; windows on %s: %r"
             % (name_pattern, timeout, os.environ.get("DISPLAY"), window_names()))
    return window


def start_program(command, work, environment, wine_prefix, errors=None):
    """Starts the program and returns it with its main window. On a loaded machine a start now and
    then never shows its window (under Wine, a desktop process stuck from an earlier run can hold
    every new program back); such a start is ended, with the whole Wine prefix, and the program
    started again."""
    attempts = 3
    for attempt in range(1, attempts + 1):
        process = subprocess.Popen(command, cwd=work, env=environment, stderr=errors)
        window = wait_for_window("^Gloamhold", process, 60)
        if window is not None:
            return process, window
        print("no window after 60 s (start %d); windows on %s: %r"
              % (attempt, os.environ.get("DISPLAY"), window_names()), flush=True)
        process.kill()
        process.wait()
        if wine_prefix:
            kill_wine_server(wine_prefix)
    fail("the program never showed its window in %d starts" % attempts)


def wait_for_counts(window, timeout):
    """Polls the title until it shows a second's counts: some updates and frames, never more frames
    than the 60 a second the settings allow. How many a busy machine manages is not checked here (the
    schedule's own tests fix the counts on a virtual clock)."""
    deadline = time.monotonic() + timeout
    seen = []
    while time.monotonic() < deadline:
        title = xdotool("getwindowname", window)
        seen.append(title)
        match = TITLE.match(title)
        if match:
            fps, ups = int(match.group(1)), int(match.group(2))
            if ups >= 1 and 1 <= fps <= 64:
                print("title: %s" % title, flush=True)
                return
        time.sleep(0.5)
    fail("the title never showed a second's counts; last titles: %r" % seen[-5:])


def screenshot(window, keep_as):
    """The window's pixels as rows of (r, g, b), read from a binary PPM; also kept as a PNG."""
    ppm = subprocess.run(["import", "-window", window, "-depth", "8", "ppm:-"], capture_output=True, check=True,
                         timeout=60).stdout
    if keep_as:
        subprocess.run(["convert", "ppm:-", keep_as], input=ppm, check=True, timeout=60)
    return read_ppm(ppm)


def pattern_rgb(x, y):
    """tests/e2e/pattern.h, widened to 8 bits per channel as (c << 3) | (c >> 2)."""
    red, green, blue = x & 31, y & 31, (x // 32 + 3 * (y // 32)) & 31
    return tuple((c << 3) | (c >> 2) for c in (red, green, blue))


def check_client_size(window, width, height, scale, keep_as):
    """The screenshot of the client area, once its size is the resolution times the scale."""
    shot_width, shot_height, data = screenshot(window, keep_as)
    client_width, client_height = int(width * scale), int(height * scale)
    if (shot_width, shot_height) != (client_width, client_height):
        fail("client area is %dx%d, expected %dx%d" % (shot_width, shot_height, client_width, client_height))
    print("client area %dx%d" % (client_width, client_height), flush=True)
    return client_width, client_height, data


def check_pattern(window, width, height, scale, keep_as, tolerance):
    client_width, client_height, data = check_client_size(window, width, height, scale, keep_as)
    step = int(scale)
    if step != scale:
        print("scale %s is not whole: size checked, pixels not compared" % scale, flush=True)
        return
    wrong = []
    for y in range(client_height):
        row = data[3 * y * client_width:3 * (y + 1) * client_width]
        for x in range(client_width):
            got = tuple(row[3 * x:3 * x + 3])
            expected = pattern_rgb(x // step, y // step)
            if max(abs(a - b) for a, b in zip(got, expected)) > tolerance:
                wrong.append((x, y, got, expected))
    if wrong:
        fail("%d of %d pixels differ from the pattern, first: %r" % (len(wrong), client_width * client_height, wrong[:3]))
    print("all %d pixels of the %dx%d client area match the pattern%s"
          % (client_width * client_height, client_width, client_height,
             " (within %d per channel)" % tolerance if tolerance else ""), flush=True)


def read_ppm(ppm):
    """(width, height, rgb bytes) of a binary PPM; '#' comments are allowed between the fields."""
    fields = []
    at = 0
    while len(fields) < 4:  # magic, width, height, maximum
        while ppm[at:at + 1].isspace():
            at += 1
        if ppm[at:at + 1] == b"#":
            at = ppm.index(b"\n", at) + 1
            continue
        end = at
        while not ppm[end:end + 1].isspace():
            end += 1
        fields.append(ppm[at:end])
        at = end
    if fields[0] != b"P6" or fields[3] != b"255":
        fail("unexpected image format %r" % fields)
    return int(fields[1]), int(fields[2]), ppm[at + 1:]


def headless_reference(program, work, script=None, ticks=20):
    """The frame the headless host draws after a short run from the same start (or at the end of
    the script's run), as rgb rows."""
    shot = os.path.join(work, "reference.png")
    command = [program, "-C", work, "--ticks", str(ticks), "--shot", "%d:%s" % (ticks - 1, shot)]
    if script:
        command += ["--script", script]
    subprocess.run(command, check=True, timeout=120)
    ppm = subprocess.run(["convert", shot, "-depth", "8", "ppm:-"], capture_output=True, check=True,
                         timeout=60).stdout
    return read_ppm(ppm)


def check_like_reference(shot, reference):
    """Most pixels within a small distance of the reference: flickering lights and the pulse of
    missing textures are allowed to differ, a wrong picture is not."""
    shot_width, shot_height, shot_data = shot
    width, height, data = reference
    if shot_width % width == 0 and shot_width // width == shot_height // height and shot_height % height == 0:
        # A scaled window: each frame pixel's top-left screen pixel stands for it.
        step = shot_width // width
        shot_data = bytes(shot_data[3 * ((y * step) * shot_width + x * step) + k]
                          for y in range(height) for x in range(width) for k in range(3))
        shot_width, shot_height = width, height
    if (shot_width, shot_height) != (width, height):
        fail("window %dx%d, headless frame %dx%d" % (shot_width, shot_height, width, height))
    close = sum(1 for i in range(0, len(data), 3)
                if max(abs(shot_data[i + k] - data[i + k]) for k in range(3)) <= 24)
    share = close / (width * height)
    print("%.1f %% of the pixels match the headless frame" % (100 * share), flush=True)
    if share < 0.9:
        fail("the window does not show the headless host's frame (only %.1f %% close)" % (100 * share))


def press(window, key):
    xdotool("windowfocus", "--sync", window)
    xdotool("key", "--clearmodifiers", key)


def hold(window, key, seconds=0.15):
    """A key held long enough for an update to see it: the game reads keys once an update, and a
    press and release between two updates is never seen."""
    xdotool("windowfocus", "--sync", window)
    xdotool("keydown", key)
    time.sleep(seconds)
    xdotool("keyup", key)


def play_a_little(window):
    """A short session by hand: a click into the window captures the mouse, then W walks while the
    mouse turns the view right and down and back, and two Escapes free the mouse and quit."""
    xdotool("windowfocus", "--sync", window)
    xdotool("mousemove", "--window", window, "200", "150")
    xdotool("mousedown", "1")  # held over an update, or the game never sees the click
    time.sleep(0.1)
    xdotool("mouseup", "1")
    time.sleep(0.5)
    xdotool("keydown", "w")
    for step in range(12):
        xdotool("mousemove_relative", "--", "17" if step < 8 else "-9", "3" if step % 2 else "-2")
        time.sleep(0.08)
    xdotool("keyup", "w")
    hold(window, "d", 0.4)
    time.sleep(0.3)
    hold(window, "Escape")  # frees the mouse
    time.sleep(0.3)
    hold(window, "Escape")  # quits


def check_f12_screenshot(window, work, shown):
    """F12 saves the next frame as screenshots/gloamhold-0001.png in the game's folder: the frame
    buffer itself, which at scale 1 must look like the window."""
    saved = os.path.join(work, "screenshots", "gloamhold-0001.png")
    hold(window, "F12")
    deadline = time.monotonic() + 20
    while not os.path.exists(saved) and time.monotonic() < deadline:
        time.sleep(0.2)
    time.sleep(0.5)  # written whole
    if not os.path.exists(saved):
        fail("F12 wrote no screenshots/gloamhold-0001.png")
    ppm = subprocess.run(["convert", saved, "-depth", "8", "ppm:-"], capture_output=True, check=True,
                         timeout=60).stdout
    check_like_reference(read_ppm(ppm), shown)
    print("F12 saved %s" % os.path.relpath(saved, work), flush=True)


def player_of(path):
    with open(path) as state:
        player = json.load(state)["player"]
    return player["position"], player["yaw"]


def check_replay(headless, work, recorded_state):
    """The recording replayed headless reaches the state the live game quit with."""
    replayed_state = os.path.join(work, "replayed.json")
    subprocess.run([headless, "-C", work, "--script", os.path.join(work, "session.txt"),
                    "--state", replayed_state], check=True, timeout=120)
    with open(recorded_state) as state:
        live = json.load(state)
    with open(replayed_state) as state:
        replayed = json.load(state)
    (position, yaw), (replayed_position, replayed_yaw) = player_of(recorded_state), player_of(replayed_state)
    print("live: tick %d, position %r, yaw %r; replayed: tick %d, position %r, yaw %r"
          % (live["tick"], position, yaw, replayed["tick"], replayed_position, replayed_yaw), flush=True)
    if live["tick"] != replayed["tick"] or live["frames"] != replayed["frames"]:
        fail("the replay ran %d updates and %d frames, the live game %d and %d"
             % (replayed["tick"], replayed["frames"], live["tick"], live["frames"]))
    if abs(yaw) < 0.01 or abs(position[2]) < 0.1:
        fail("the session neither turned nor walked: nothing was recorded")
    for live_value, replayed_value in zip(position + [yaw], replayed_position + [replayed_yaw]):
        if abs(live_value - replayed_value) > 1e-5:
            fail("the replay ends at %r, yaw %r; the live game at %r, yaw %r"
                 % (replayed_position, replayed_yaw, position, yaw))
    print("the replay reaches the live game's position and yaw", flush=True)


def capture_then_free_the_mouse(window, process):
    """A click into the window captures the mouse; Escape then only frees it, and the game plays on."""
    xdotool("windowfocus", "--sync", window)
    xdotool("mousemove", "--window", window, "100", "100")
    # Held over a few updates: the game looks at the button's state once an update.
    xdotool("mousedown", "1")
    time.sleep(0.3)
    xdotool("mouseup", "1")
    time.sleep(1.0)
    # Held as well: a press and release that arrive before the same update are never seen by it,
    # and with the mouse captured only the update frees it.
    hold(window, "Escape", 0.3)
    time.sleep(1.0)
    if process.poll() is not None:
        fail("the first Escape after a click ended the program (%d): the click did not capture the mouse"
             % process.returncode)
    print("Escape after a click freed the mouse; the game plays on", flush=True)


def check_told_no_sound_device(errors):
    """The game said in one line of its own that it plays without sound (ALSA may add its own lines)."""
    errors.seek(0)
    said = errors.read().decode(errors="replace")
    print("stderr: %r" % said, flush=True)
    ours = [line for line in said.splitlines() if line.startswith("gloamhold:")]
    if len(ours) != 1 or not re.match(r"^gloamhold: no sound device \(.*\); playing on without sound$", ours[0]):
        fail("the game did not say in one line that it plays without sound: %r" % ours)


def wait_exit(process, timeout, what):
    try:
        return process.wait(timeout=timeout)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        fail("the program did not end %s within %d s" % (what, timeout))


def wine_prefix_of(arguments):
    """The Wine prefix the program runs in (tests/wine-run's own when none is given), or None natively."""
    if not arguments.wine:
        return None
    return arguments.wine_prefix or os.path.expanduser("~/.wine-gloamhold")


def unpack(archive, into):
    """Unpacks a release package into an empty folder, as a player would; the one folder it holds."""
    if archive.endswith(".zip"):
        with zipfile.ZipFile(archive) as packed:
            packed.extractall(into)
    else:
        with tarfile.open(archive) as packed:
            packed.extractall(into)
    folders = os.listdir(into)
    if len(folders) != 1 or not os.path.isdir(os.path.join(into, folders[0])):
        fail("the package should hold one folder, not %r" % folders)
    print("unpacked %s into %s" % (os.path.basename(archive), folders[0]), flush=True)
    return os.path.join(into, folders[0])


def run(arguments, work):
    width, height = (int(part) for part in arguments.resolution.split("x"))
    if arguments.package:
        # The game runs from the unpacked folder, with the settings and data it came with.
        work = unpack(arguments.package, os.path.join(work, "unpacked"))
        arguments.exe = os.path.join(work, arguments.exe)
        if not os.path.isfile(arguments.exe):
            fail("the package holds no %s" % os.path.relpath(arguments.exe, work))
        if arguments.reference and not os.path.isabs(arguments.reference):
            arguments.reference = os.path.join(work, arguments.reference)
    else:
        if arguments.data:
            os.symlink(os.path.abspath(arguments.data), os.path.join(work, "gloamhold_data"))
        else:
            # Test drivers load nothing, but the native game looks for its data folder first.
            os.mkdir(os.path.join(work, "gloamhold_data"))
        with open(os.path.join(work, "settings.ini"), "w", newline="\r\n") as settings:
            settings.write("SCREEN_RESOLUTION=%dx%d\nSCREEN_SCALE=%s\n" % (width, height, arguments.scale))
            if arguments.render_threads:
                settings.write("RENDER_THREADS=%s\n" % arguments.render_threads)

    environment = dict(os.environ)
    wine_prefix = wine_prefix_of(arguments)
    # No sound card on test machines: ALSA's default device discards what is played (wave-out under
    # Wine opens it), and SDL uses its own paced dummy device.
    environment["ALSA_CONFIG_PATH"] = os.path.join(HERE, "alsa-null.conf")
    environment.setdefault("SDL_AUDIODRIVER", "dummy")
    errors = None
    if arguments.no_sound_device:
        # A machine without a sound card: ALSA knows no device, and SDL picks its driver itself.
        environment["ALSA_CONFIG_PATH"] = os.path.join(HERE, "alsa-no-device.conf")
        environment.pop("SDL_AUDIODRIVER", None)
        errors = open(os.path.join(work, "stderr.txt"), "w+b")
    if wine_prefix:
        environment["GLOAMHOLD_WINEPREFIX"] = wine_prefix
    if arguments.case == "crash":
        environment["GLOAMHOLD_E2E_CRASH"] = "1"
    command = ([arguments.wine] if arguments.wine else []) + [arguments.exe]
    recorded_state = os.path.join(work, "state.json")
    if arguments.case == "record":
        command += ["--record", os.path.join(work, "session.txt"), "--state", recorded_state]
    if arguments.case == "script":
        script = os.path.join(work, "route.txt")
        with open(script, "w") as route:
            for part in arguments.script:
                with open(part) as text:
                    route.write(text.read())
        command += ["--script", script]
    if arguments.case == "script":
        # The pointer away from where the window opens: a window that appears under it is told of
        # it, and the scripted click that captures the mouse would turn the view by that much.
        pointer_connection = park_pointer()  # noqa: F841 (held open while the program runs)
    reference = None
    if arguments.reference and arguments.case in ("quit", "script"):
        reference = headless_reference(arguments.reference, work, script if arguments.case == "script" else None,
                                       arguments.ticks)
    process, window = start_program(command, work, environment, wine_prefix, errors)
    try:
        if arguments.case == "crash":
            # The box follows a full-memory dump (about 100 MB under Wine), which a busy machine
            # can take minutes to write.
            box = find_window("^Crash$", process, 300)
            dump = os.path.join(work, "crash.dmp")
            if not os.path.exists(dump) or os.path.getsize(dump) == 0:
                fail("the message box is up but crash.dmp was not written")
            with open(dump, "rb") as data:
                if data.read(4) != b"MDMP":
                    fail("crash.dmp is not a minidump")
            print("crash.dmp: %d bytes; message box shown" % os.path.getsize(dump), flush=True)
            if arguments.keep:
                screenshot(box, os.path.join(arguments.keep, "crash_box.png"))
            press(box, "Return")
            code = wait_exit(process, 30, "after the message box was dismissed")
            if code == 0:
                fail("a crashed program ended with 0")
            print("ended with %d after the box was dismissed" % code, flush=True)
            return
        wait_for_counts(window, 30)
        keep_as = os.path.join(arguments.keep, arguments.shot_name) if arguments.keep else None
        if arguments.case == "record":
            play_a_little(window)
            code = wait_exit(process, 30, "after Escape twice")
            if code != 0:
                fail("the recorded game ended with %d, not 0" % code)
            check_replay(arguments.reference, work, recorded_state)
            return
        if arguments.case == "script":
            # The script's updates at 40 a second, then time for the door or the talk to settle.
            time.sleep(arguments.ticks / 40.0 + 2.0)
        # A frame is drawn 60 times a second; give the first ones time to be painted.
        time.sleep(0.5)
        if arguments.case == "pattern":
            check_pattern(window, width, height, float(arguments.scale), keep_as, arguments.channel_tolerance)
        else:
            shot = check_client_size(window, width, height, float(arguments.scale), keep_as)
            if reference:
                check_like_reference(shot, reference)
            if arguments.screenshot:
                check_f12_screenshot(window, work, shot)
        if arguments.click_first:
            capture_then_free_the_mouse(window, process)
        hold(window, "Escape") if arguments.case == "script" else press(window, "Escape")
        if arguments.case == "script":
            try:  # a script that left the mouse captured: the first Escape only freed it
                process.wait(timeout=3)
            except subprocess.TimeoutExpired:
                hold(window, "Escape")
        code = wait_exit(process, 30, "after Escape")
        if code != 0:
            fail("Escape with the mouse free ended the program with %d, not 0" % code)
        print("Escape ended the program with 0", flush=True)
        if errors:
            check_told_no_sound_device(errors)
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--exe", required=True, help="the program; with --package, its path in the package's folder")
    parser.add_argument("--package", help="a release package (.zip or .tar.gz) to unpack into an empty folder "
                                          "and run the program from, with the settings and data it holds")
    parser.add_argument("--wine", help="run the program through this Wine wrapper")
    parser.add_argument("--wine-prefix", help="the Wine prefix to use (made on first use)")
    parser.add_argument("--case", choices=("pattern", "quit", "crash", "record", "script"), required=True)
    parser.add_argument("--resolution", default="320x240")
    parser.add_argument("--scale", default="1.0")
    parser.add_argument("--keep", help="folder for screenshots")
    parser.add_argument("--shot-name", default="window.png")
    parser.add_argument("--channel-tolerance", type=int, default=0,
                        help="how far a channel of the pattern may be from (c << 3) | (c >> 2): SDL widens "
                             "5-bit channels by its own table, which is within 1 of that")
    parser.add_argument("--no-sound-device", action="store_true",
                        help="run with ALSA knowing no device and SDL_AUDIODRIVER unset; the game must say so")
    parser.add_argument("--click-first", action="store_true",
                        help="click into the window before quitting: two Escapes (free the mouse, quit)")
    parser.add_argument("--data", help="the gloamhold_data folder the program starts from")
    parser.add_argument("--reference", help="a gloamhold-headless whose frame the window must show, or which "
                                            "replays the recording (with --package, a relative path is taken "
                                            "in the package's folder)")
    parser.add_argument("--script", action="append", default=[],
                        help="script files, played one after the other (case script)")
    parser.add_argument("--screenshot", action="store_true",
                        help="F12 must save the frame shown as screenshots/gloamhold-0001.png")
    parser.add_argument("--ticks", type=int, default=20,
                        help="updates the headless reference runs; its last frame is compared")
    parser.add_argument("--render-threads", help="RENDER_THREADS for the program and its reference")
    arguments = parser.parse_args()
    if arguments.keep:
        os.makedirs(arguments.keep, exist_ok=True)
    work = tempfile.mkdtemp(prefix="gloamhold-e2e-")
    wine_prefix = wine_prefix_of(arguments)
    if wine_prefix:
        kill_wine_server(wine_prefix)  # whatever an interrupted earlier run left behind
    try:
        with virtual_display():
            run(arguments, work)
    finally:
        shutil.rmtree(work, ignore_errors=True)
        if wine_prefix:
            end_wine_server(wine_prefix)
    print("PASS", flush=True)


if __name__ == "__main__":
    main()
