"""An Xvfb of the test's own. Xvfb picks a free display number itself and reports it through a
pipe, so tests running side by side (even other people's) never race for a number."""

import os
import subprocess


class virtual_display:
    def __enter__(self):
        read_end, write_end = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-ac"],
            pass_fds=(write_end,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write_end)
        number = b""
        with os.fdopen(read_end, "rb") as pipe:
            while not number.endswith(b"\n"):
                chunk = pipe.read(1)
                if not chunk:
                    raise RuntimeError("Xvfb did not start")
                number += chunk
        self.previous = os.environ.get("DISPLAY")
        os.environ["DISPLAY"] = ":" + number.decode().strip()
        return self

    def __exit__(self, *exception):
        self.server.terminate()
        self.server.wait()
        if self.previous is None:
            os.environ.pop("DISPLAY", None)
        else:
            os.environ["DISPLAY"] = self.previous


def end_wine_server(prefix, grace=30):
    """Lets a Wine prefix's server end after its display has gone, so that the next program starts
    Wine afresh on a display of its own. A server that outlives the grace (a desktop process stuck
    on the display that went away) is killed: a new program would otherwise wait for that desktop
    forever and never show a window."""
    environment = dict(os.environ, WINEPREFIX=prefix)
    try:
        subprocess.run(["wineserver", "-w"], env=environment, timeout=grace)
    except subprocess.TimeoutExpired:
        kill_wine_server(prefix)


def kill_wine_server(prefix):
    """Ends a Wine prefix's server and every program in it at once (nothing happens if none runs)."""
    environment = dict(os.environ, WINEPREFIX=prefix)
    subprocess.run(["wineserver", "-k"], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    subprocess.run(["wineserver", "-w"], env=environment, timeout=60)
