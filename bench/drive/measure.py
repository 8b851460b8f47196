"""Measurements of the drive: see ./run. Every figure is the median of several runs; what is compared with the
host's own file system was measured beside it in the same run."""

import argparse
import json
import os
import pathlib
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
REPOSITORY = HERE.parent.parent
OPTIONS = "loop,noatime,compress=zstd:1,discard=sync"


def run(*arguments, **options):
    options.setdefault("stdout", subprocess.DEVNULL)
    return subprocess.run([str(argument) for argument in arguments], check=True, **options)


def output(*arguments, **options):
    return run(*arguments, stdout=subprocess.PIPE, text=True, **options).stdout


def timed(work, folder):
    """Seconds for `work`, with everything it wrote on the disk."""
    start = time.monotonic()
    work()
    run("sync", "-f", folder)
    return time.monotonic() - start


class Drive:
    """A volume like the real one, mounted for the time of a `with` block."""

    def __init__(self, folder, name):
        self.image = folder / f"{name}.btrfs"
        self.mount = folder / name

    def __enter__(self):
        self.mount.mkdir()
        host = os.statvfs(self.mount.parent)
        length = max(host.f_blocks * host.f_frsize >> 30, 16) << 30
        with open(self.image, "wb") as image:
            image.truncate(length)
        run("mkfs.btrfs", "-q", self.image)
        run("mount", "-o", OPTIONS, self.image, self.mount)
        # As the tool does it where it may: no second copy of everything in memory.
        device = output("findmnt", "-no", "SOURCE", self.mount).strip()
        run("losetup", "--direct-io=on", device)
        # The space guard, as the tool makes it: a file without a name for what the disk has not got.
        run("btrfs", "-q", "subvolume", "create", self.mount / "space")
        self.guard = os.open(self.mount / "space", os.O_TMPFILE | os.O_RDWR, 0o600)
        piece = 256 << 20
        for number in range((length - (host.f_bavail * host.f_frsize - (5 << 30))) // piece):
            os.posix_fallocate(self.guard, number * piece, piece)
        run("sync", "-f", self.mount)
        return self

    def __exit__(self, *_):
        os.close(self.guard)
        run("umount", self.mount)
        self.image.unlink()
        self.mount.rmdir()

    def in_use(self):
        run("sync", "-f", self.mount)
        uuid = output("findmnt", "-no", "UUID", self.mount).strip()
        base = pathlib.Path("/sys/fs/btrfs") / uuid / "allocation"
        used = sum(int((base / kind / "disk_used").read_text()) for kind in ("data", "metadata", "system"))
        return used - os.fstat(self.guard).st_blocks * 512


def make_sources(folder, files):
    """A set with what people repeat: source trees with small changes, builds, dependencies, images.

    `files` is about how many files it has. The same number makes the same bytes."""
    generator = random.Random(4711)
    words = [f"{generator.getrandbits(64):016x}"[: generator.randint(2, 12)] for _ in range(5000)]

    def text(size):
        pieces = []
        length = 0
        while length < size:
            piece = " ".join(generator.choices(words, k=12)) + "\n"
            pieces.append(piece)
            length += len(piece)
        return "".join(pieces)[:size].encode()

    # One tree, three copies, some of whose files differ.
    per_tree = files // 6
    tree = folder / "tree-0"
    for number in range(per_tree):
        path = tree / f"dir{number % 97}" / f"sub{number % 13}" / f"file{number}.txt"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text(min(int(generator.lognormvariate(8.6, 1.2)), 400_000)))
    for copy in (1, 2):
        shutil.copytree(tree, folder / f"tree-{copy}")
        for number in range(per_tree // 100):
            chosen = generator.randrange(per_tree)
            path = folder / f"tree-{copy}" / f"dir{chosen % 97}" / f"sub{chosen % 13}" / f"file{chosen}.txt"
            path.write_bytes(text(6000))
    # Dependencies: many small files, three times the same.
    for copy in range(3):
        modules = folder / f"modules-{copy}"
        for number in range(per_tree):
            path = modules / f"package{number // 40}" / f"m{number}.js"
            path.parent.mkdir(parents=True, exist_ok=True)
            seed = random.Random(number)
            path.write_bytes((" ".join(seed.choices(words, k=seed.randint(20, 2500)))).encode())
    # Disk images: a copy, one with a block inserted, one with bytes inserted, one with blocks rewritten.
    images = folder / "images"
    images.mkdir()
    base = b"".join(text(1 << 19) + generator.randbytes(1 << 19) for _ in range(96))
    (images / "base").write_bytes(base)
    (images / "copy").write_bytes(base)
    middle = len(base) // 3
    (images / "block-inserted").write_bytes(base[:middle] + generator.randbytes(4096) + base[middle:])
    (images / "bytes-inserted").write_bytes(base[:middle] + generator.randbytes(777) + base[middle:])
    changed = bytearray(base)
    for _ in range(200):
        place = generator.randrange(len(base) // 4096) * 4096
        changed[place : place + 4096] = generator.randbytes(4096)
    (images / "blocks-changed").write_bytes(bytes(changed))


def allocated(folder):
    return int(output("du", "-s", "-B1", folder).split()[0])


def borg_bytes(source, folder):
    repository = folder / "borg"
    environment = dict(os.environ, BORG_BASE_DIR=str(folder / "borg-home"), BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK="yes")
    run("borg", "init", "-e", "none", repository, env=environment)
    run("borg", "create", "-C", "zstd,3", f"{repository}::all", ".", env=environment, cwd=source)
    size = allocated(repository)
    shutil.rmtree(repository)
    return size


def scan(program, root, index, share):
    text = output(program, root, index, share)
    return {key: float(value) for key, value in (line.split("=") for line in text.splitlines())}


def measure_scanner(work, program, files, runs, rows):
    source = work / "set"
    source.mkdir()
    make_sources(source, files)
    run("sync", "-f", source)
    plain = allocated(source)
    firsts, again, paced = [], [], []
    # At ordinary priority: at the drive's own, idle one, other programs would be measured.
    for turn in range(runs):
        with Drive(work, f"scan{turn}") as drive:
            index = work / f"index{turn}"
            run("cp", "-a", "--reflink=never", f"{source}/.", drive.mount)
            before = drive.in_use()
            first = scan(program, drive.mount, index, 1)
            after = drive.in_use()
            first["before"], first["after"] = before, after
            firsts.append(first)
            again.append(scan(program, drive.mount, index, 1))
            paced.append(scan(program, drive.mount, index, 0.25))
            shutil.rmtree(index)
    bound = borg_bytes(source, work)
    shutil.rmtree(source)

    def median(results, key):
        return statistics.median(result[key] for result in results)

    after = median(firsts, "after")
    rows += [
        ("files of the set", f"{median(firsts, 'files'):,.0f}"),
        ("the set on the host", f"{plain / 1e6:,.0f} MB"),
        ("on the drive before a pass (compressed)", f"{median(firsts, 'before') / 1e6:,.0f} MB"),
        ("on the drive after a pass", f"{after / 1e6:,.0f} MB"),
        ("borgbackup's repository (zstd,3), the bound", f"{bound / 1e6:,.0f} MB"),
        ("share of what the bound saves", f"{(plain - after) / (plain - bound):.0%}"),
        ("first pass, not throttled: wall / processor", f"{median(firsts, 'seconds'):.1f} s / {median(firsts, 'processor'):.1f} s"),
        ("first pass: memory", f"{max(r['memory_kib'] for r in firsts) / 1024:.0f} MiB"),
        ("unchanged pass, not throttled: wall / processor", f"{median(again, 'seconds'):.2f} s / {median(again, 'processor'):.2f} s"),
        ("unchanged pass at 25 % of a core: wall", f"{median(paced, 'seconds'):.2f} s"),
    ]


def drop_caches():
    run("sync")
    pathlib.Path("/proc/sys/vm/drop_caches").write_text("3")


def measure_throughput(work, runs, rows):
    origin = work / "origin.git"
    run("git", "clone", "-q", "--bare", REPOSITORY, origin)
    archive = work / "tree.tar"
    tree = work / "tree"
    tree.mkdir()
    make_sources(tree, 44_000)
    run("tar", "-cf", archive, "-C", tree, ".")
    shutil.rmtree(tree)
    block = random.Random(1).randbytes(1 << 20)

    def write_big(folder):
        with open(folder / "big", "wb") as file:
            for number in range(1024):
                file.write(number.to_bytes(8, "big") + block[8:])
            os.fsync(file.fileno())

    def read_big(folder):
        with open(folder / "big", "rb") as file:
            while file.read(1 << 20):
                pass

    def commit_often(folder):
        with open(folder / "journal", "wb") as file:
            for number in range(500):
                file.write(number.to_bytes(8, "big") + block[8:4096])
                file.flush()
                os.fsync(file.fileno())

    def build(folder):
        run("cmake", "-S", folder / "clone" / "drive", "-B", folder / "build", "-G", "Ninja", "-DFERROBANK_DRIVE_TESTS=OFF")
        run("ninja", "-C", folder / "build", "drive_figures")

    def unpack(folder):
        (folder / "tree").mkdir()
        run("tar", "-xf", archive, "-C", folder / "tree")

    steps = [
        ("git clone of this repository", lambda folder: run("git", "clone", "-q", "--no-local", origin, folder / "clone")),
        ("configure and build a part of it", build),
        ("unpack 44,000 files", unpack),
        ("remove them", lambda folder: shutil.rmtree(folder / "tree")),
        ("write 1 GiB, fsync", write_big),
        ("read it again, cold", read_big),
        ("write 4 KiB and fsync, 500 times", commit_often),
    ]
    times = {name: ([], []) for name, _ in steps}
    for turn in range(runs):
        host = work / f"host{turn}"
        host.mkdir()
        with Drive(work, f"drive{turn}") as drive:
            for name, step in steps:
                for place, folder in enumerate((host, drive.mount)):
                    if "cold" in name:
                        drop_caches()
                    times[name][place].append(timed(lambda: step(folder), folder))
        shutil.rmtree(host)
    slower = []
    for name, (host_times, drive_times) in times.items():
        host_median, drive_median = statistics.median(host_times), statistics.median(drive_times)
        rows.append((name, f"{host_median:.2f} s", f"{drive_median:.2f} s", f"{drive_median / host_median:.2f}"))
        if drive_median > host_median * 1.05:
            slower.append(f"{name} ({drive_median / host_median:.1f} times)")
    return slower


class Served:
    """The drive tool itself, serving a drive of a home folder of its own for the time of a `with` block."""

    def __init__(self, work, tool):
        self.tool = str(tool)
        self.home = work / "home"
        self.runtime = work / "runtime"
        self.environment = dict(os.environ, HOME=str(self.home), XDG_RUNTIME_DIR=str(self.runtime))

    def __enter__(self):
        self.home.mkdir()
        self.runtime.mkdir(mode=0o700)
        self.server = subprocess.Popen([self.tool, "serve"], env=self.environment)
        self.wait_until(lambda status: status["mounted"])
        return self

    def __exit__(self, *_):
        subprocess.run([self.tool, "uninstall", "--delete-store"], env=self.environment, check=False)
        self.server.terminate()
        self.server.wait()

    def wait_until(self, condition):
        end = time.monotonic() + 300
        while not condition(json.loads(output(self.tool, "status", "--json", env=self.environment))):
            if time.monotonic() > end:
                sys.exit("The drive did not become what was waited for.")
            time.sleep(0.2)

    def milliseconds(self, arguments, turns):
        """Median of whole processes."""
        nothing = [(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)]
        times = []
        for _ in range(turns):
            start = time.perf_counter()
            process = os.posix_spawn(arguments[0], arguments, self.environment, file_actions=nothing)
            _, status = os.waitpid(process, 0)
            times.append((time.perf_counter() - start) * 1000)
            if status != 0:
                sys.exit(f"{' '.join(arguments)} failed.")
        return statistics.median(times)


def measure_status(work, tool, runs, rows):
    turns = max(runs, 3) * 40
    status = [str(tool), "status", "--json"]
    with Served(work, tool) as served:
        rows.append(("`/bin/true`, whole process, median", f"{served.milliseconds(['/bin/true'], turns):.1f} ms"))
        rows.append(("`status --json`, new drive", f"{served.milliseconds(status, turns):.1f} ms"))
        for number in range(100):
            folder = served.home / "Ferrobank" / str(number)
            folder.mkdir()
            for file in range(1000):
                (folder / str(file)).write_text(f"{number} {file}")
        # The figure of the files is there once the server has walked them.
        served.wait_until(lambda known: known.get("volume_used", 0) > 0)
        rows.append(("`status --json`, 100,000 files on the drive", f"{served.milliseconds(status, turns):.1f} ms"))


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return lines + ["| " + " | ".join(row) + " |" for row in rows]


def write(text):
    """Puts the text between its marks in the document."""
    file = REPOSITORY / "docs" / "drive.md"
    before, _, rest = file.read_text().partition("<!-- bench/drive -->\n")
    _, _, after = rest.partition("<!-- end of bench/drive -->")
    file.write_text(f"{before}<!-- bench/drive -->\n{text}\n<!-- end of bench/drive -->{after}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--work", type=pathlib.Path, default=pathlib.Path("/var/tmp"))
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--files", type=int, default=60_000)
    parser.add_argument("--tool", type=pathlib.Path, default=REPOSITORY / "build/release/drive/ferrobank")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    if os.geteuid() != 0:
        sys.exit("Mounting volumes needs root.")
    # Whoever ends the script gets the mounts and the folder removed as well.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("Ended by a signal."))
    work = pathlib.Path(tempfile.mkdtemp(prefix="ferrobank-bench-", dir=arguments.work))
    try:
        run("cmake", "-S", HERE, "-B", work / "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release")
        run("ninja", "-C", work / "build", "scan-once")
        before = os.getloadavg()[0]
        figures, speeds = [], []
        measure_status(work, arguments.tool.resolve(), arguments.runs, figures)
        measure_scanner(work, work / "build" / "scan-once", arguments.files, arguments.runs, figures)
        slower = measure_throughput(work, arguments.runs, speeds)
    finally:
        shutil.rmtree(work, ignore_errors=True)
    load = f"load average {before:.1f} before and {os.getloadavg()[0]:.1f} after"
    lines = [f"Medians of {arguments.runs} runs, {os.cpu_count()} processors, {load}.", ""]
    lines += table(("figure", "measured"), figures) + [""]
    lines += table(("operation, written out", "host", "drive", "drive / host"), speeds) + [""]
    lines += ["Slower than the host: " + ", ".join(slower) + "." if slower else "Nothing was slower than the host."]
    text = "\n".join(lines)
    print(text)
    if arguments.write:
        write(text)


main()
