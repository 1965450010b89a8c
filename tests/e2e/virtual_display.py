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


def wait_for_wine_server(prefix):
    """Lets a Wine prefix's server end, so that the next program starts Wine on its own display."""
    subprocess.run(["wineserver", "-w"], env=dict(os.environ, WINEPREFIX=prefix))
