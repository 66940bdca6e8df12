import subprocess
import sys
import time
import unittest
from pathlib import Path

from scribokit.network.supply import Supply

PARENT = """
import time
from scribokit.network.supply import Supply
if __name__ == "__main__":
    supply = Supply("clean", "0123456789", 1, 512, 192, 1)
    supply.next()
    print(supply._processes[0].pid, flush=True)
    time.sleep(600)
"""


def is_running(process):
    """Whether a process of this number is there and has not ended."""
    try:
        return (
            Path(f"/proc/{process}/stat").read_text(encoding="utf-8").rsplit(")", 1)[1].split()[0]
            != "Z"
        )
    except OSError:
        return False


class Workers(unittest.TestCase):
    def test_draw_what_is_drawn_on_the_spot(self):
        supply = Supply("clean", "0123456789", 1, 512, 192, 1)
        try:
            drawn = supply.next()
        finally:
            supply.close()
        spot = Supply("clean", "0123456789", 1000, 512, 192, 0).next()
        self.assertEqual(drawn[1], spot[1])
        self.assertTrue((drawn[0] == spot[0]).all())

    def test_end_when_the_training_is_killed(self):
        parent = subprocess.Popen([sys.executable, "-c", PARENT], stdout=subprocess.PIPE, text=True)
        worker = int(parent.stdout.readline())
        parent.kill()
        parent.wait()
        parent.stdout.close()
        deadline = time.monotonic() + 120
        while is_running(worker) and time.monotonic() < deadline:
            time.sleep(0.2)
        self.assertFalse(is_running(worker))


if __name__ == "__main__":
    unittest.main()
