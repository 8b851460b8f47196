#!/usr/bin/python3
"""Ten minutes of the running program, with its window opened now and then: what it holds stays what it was.

FERROBANK_SOAK_MINUTES sets another length, at least four.
"""
import os
import pathlib
import subprocess
import time

import program
from program import wait_until

MINUTES = max(4, int(os.environ.get("FERROBANK_SOAK_MINUTES", "10")))
#: The first minutes load what stays loaded.
WARM_UP = 2
#: The allocator's slack, in KiB; each opening that left its engine behind would be thousands.
SLACK = 1536
#: A minute has twelve polls; each may wake the process for its timer, its child's start and its child's end, and
#: things of the desktop now and then.
WAKE_UPS = 60


class Soak(program.ProgramTest):
    def test_what_is_held_stays_what_it_was(self):
        self.drive.says(volume_used=12_400_000_000, saved=8_100_000_000, store_bytes=4_300_000_000)
        self.program.finish_setup()
        self.program.start()
        item = self.tray()
        minutes = []
        print("minute  PSS KiB  RSS KiB  own KiB  descriptors  threads  children  wake-ups  CPU ms")
        for minute in range(MINUTES):
            end = time.monotonic() + 60
            self.drive.says(volume_used=12_400_000_000 + minute * 10**9, saved=8_100_000_000, store_bytes=4_300_000_000)
            for _ in range(2):
                self.open_and_close(item)
            time.sleep(2)
            before = self.spent()
            began = time.monotonic()
            time.sleep(max(10, end - time.monotonic()))
            after = self.spent()
            share = 60 / (time.monotonic() - began)
            held = self.held() | {
                "wake-ups": (after[0] - before[0]) * share,
                "cpu": (after[1] - before[1]) * share,
            }
            minutes.append(held)
            print("{:6}".format(minute + 1), *(f"{value:8.1f}" for value in held.values()), flush=True)

        settled = minutes[WARM_UP]
        last = minutes[-1]
        self.assertLess(last["rss"], settled["rss"] + SLACK)
        self.assertLess(last["own"], settled["own"] + SLACK)
        self.assertLessEqual(last["descriptors"], settled["descriptors"])
        self.assertLessEqual(last["threads"], settled["threads"])
        self.assertLessEqual(max(minute["wake-ups"] for minute in minutes[WARM_UP:]), WAKE_UPS)
        wait_until(lambda: self.program.figures()["children"] == 0, "no child process is left")
        self.assertGreaterEqual(self.drive.runs("status", "--json"), MINUTES * 10)

    def open_and_close(self, item):
        item.choose("Open Ferrobank")
        window = self.wait_for_window()[0]
        time.sleep(1)
        subprocess.run(["xdotool", "windowactivate", "--sync", window], check=True)
        self.key("alt+F4")
        self.wait_for_no_window()

    def held(self):
        process = pathlib.Path("/proc") / str(self.program.process.pid)
        rollup = dict(line.split(":", 1) for line in (process / "smaps_rollup").read_text().splitlines()[1:])
        return {
            "pss": int(rollup["Pss"].split()[0]),  # changes with those who share the libraries
            "rss": int(rollup["Rss"].split()[0]),
            "own": int(rollup["Anonymous"].split()[0]),
            "descriptors": len(list((process / "fd").iterdir())),
            "threads": len(list((process / "task").iterdir())),
            "children": self.program.figures()["children"],
        }

    def spent(self):
        """How often the main thread was woken, and the processor time of the whole process in ms."""
        pid = self.program.process.pid
        status = (pathlib.Path("/proc") / str(pid) / "status").read_text().splitlines()
        wakes = next(int(line.split()[1]) for line in status if line.startswith("voluntary_ctxt_switches"))
        return wakes, time.clock_gettime_ns(program.processor_clock(pid)) / 1e6


if __name__ == "__main__":
    program.main()
