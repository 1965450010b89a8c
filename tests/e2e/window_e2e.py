#!/usr/bin/python3
"""End-to-end check of a game window on a virtual X server of its own (Xvfb).

Starts a host executable (natively, or under Wine with --wine), finds its window and checks, by
case:
  pattern  the title shows sensible counts, the client area shows the pattern that
           tests/e2e/pattern.h draws, scaled by SCREEN_SCALE, and Escape (mouse free) quits with 0;
  quit     the title shows sensible counts, the client area has the size SCREEN_SCALE gives (a
           screenshot is kept) and Escape quits with 0 (any drivers); with --reference, the
           client area must also look like the headless host's frame of the same start (the
           lights flicker on their own clocks, so most pixels, not all, must match);
  crash    the drivers fault, "crash.dmp" is written and the "Crash" message box appears; the
           box is dismissed and the process ends.
Screenshots are kept under --keep for people to look at. Exit status 0 when every check passed.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True  # nothing written into the source tree
sys.path.insert(0, HERE)
from virtual_display import end_wine_server, kill_wine_server, virtual_display  # noqa: E402

TITLE = re.compile(r"^Gloamhold \(FPS: (\d+), UPS: (\d+)\)$")


def fail(message):
    print("FAIL: " + message, flush=True)
    sys.exit(1)


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


def start_program(command, work, environment, wine_prefix):
    """Starts the program and returns it with its main window. On a loaded machine a start now and
    then never shows its window (under Wine, a desktop process stuck from an earlier run can hold
    every new program back); such a start is ended, with the whole Wine prefix, and the program
    started again."""
    attempts = 3
    for attempt in range(1, attempts + 1):
        process = subprocess.Popen(command, cwd=work, env=environment)
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


def check_pattern(window, width, height, scale, keep_as):
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
            if got != expected:
                wrong.append((x, y, got, expected))
    if wrong:
        fail("%d of %d pixels differ from the pattern, first: %r" % (len(wrong), client_width * client_height, wrong[:3]))
    print("all %d pixels of the %dx%d client area match the pattern" % (client_width * client_height,
                                                                         client_width, client_height), flush=True)


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


def headless_reference(program, work):
    """The frame the headless host draws after a short run from the same start, as rgb rows."""
    shot = os.path.join(work, "reference.png")
    subprocess.run([program, "-C", work, "--ticks", "20", "--shot", "19:" + shot], check=True, timeout=60)
    ppm = subprocess.run(["convert", shot, "-depth", "8", "ppm:-"], capture_output=True, check=True,
                         timeout=60).stdout
    return read_ppm(ppm)


def check_like_reference(shot, reference):
    """Most pixels within a small distance of the reference: flickering lights and the pulse of
    missing textures are allowed to differ, a wrong picture is not."""
    shot_width, shot_height, shot_data = shot
    width, height, data = reference
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


def run(arguments, work):
    width, height = (int(part) for part in arguments.resolution.split("x"))
    if arguments.data:
        os.symlink(os.path.abspath(arguments.data), os.path.join(work, "gloamhold_data"))
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
    if wine_prefix:
        environment["GLOAMHOLD_WINEPREFIX"] = wine_prefix
    if arguments.case == "crash":
        environment["GLOAMHOLD_E2E_CRASH"] = "1"
    command = ([arguments.wine] if arguments.wine else []) + [arguments.exe]
    reference = headless_reference(arguments.reference, work) if arguments.reference else None
    process, window = start_program(command, work, environment, wine_prefix)
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
        # A frame is drawn 60 times a second; give the first ones time to be painted.
        time.sleep(0.5)
        if arguments.case == "pattern":
            check_pattern(window, width, height, float(arguments.scale), keep_as)
        else:
            shot = check_client_size(window, width, height, float(arguments.scale), keep_as)
            if reference:
                check_like_reference(shot, reference)
        press(window, "Escape")
        code = wait_exit(process, 30, "after Escape")
        if code != 0:
            fail("Escape with the mouse free ended the program with %d, not 0" % code)
        print("Escape ended the program with 0", flush=True)
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--exe", required=True)
    parser.add_argument("--wine", help="run the program through this Wine wrapper")
    parser.add_argument("--wine-prefix", help="the Wine prefix to use (made on first use)")
    parser.add_argument("--case", choices=("pattern", "quit", "crash"), required=True)
    parser.add_argument("--resolution", default="320x240")
    parser.add_argument("--scale", default="1.0")
    parser.add_argument("--keep", help="folder for screenshots")
    parser.add_argument("--shot-name", default="window.png")
    parser.add_argument("--data", help="the gloamhold_data folder the program starts from")
    parser.add_argument("--reference", help="a gloamhold-headless whose frame the window must show")
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
