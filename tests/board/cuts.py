#!/usr/bin/env python3
"""Judges each state that a power cut could leave on the board's disk.

usage: cuts.py IMAGE WRITES VERSIONS STATES SEED

IMAGE is the disk before the series of board_changes, WRITES the record of its writes in the form of
dm-log-writes, VERSIONS a tar file of the versions that the files had. Judged are every prefix of
the writes, and STATES times, at a random one, all that was flushed and a random part of the rest.
A state is right if, once the file system's journal is replayed, each file is, but for blank lines
at its end, a version that is no older than what the last change that the disk knows of had left.
"""
import collections
import mmap
import multiprocessing
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tarfile
import tempfile

BLOCK = 4096
SECTOR = 512
FOLDER = "/config/system"


def read_writes(path):
    """Gives the written blocks in their order, each as (offset, data), and None for a flush."""
    with open(path, "rb") as log:
        magic, _, _, size = struct.unpack("<QQQL", log.read(28))
        assert magic == 0x6A736677736872 and size == SECTOR
        log.seek(size)
        while len(header := log.read(size)) == size:
            sector, count, flags, _ = struct.unpack_from("<QQQQ", header)
            data = log.read(count * size)
            if len(data) < count * size:
                return
            assert flags & ~1 == 0
            if flags & 1:
                yield None
            for at in range(0, len(data), BLOCK):
                yield sector * size + at, data[at : at + BLOCK]


def read_versions(path):
    """Gives for each file its versions as (number of the change, text)."""
    versions = collections.defaultdict(list)
    with tarfile.open(path) as tar:
        for member in tar:
            if member.isfile():
                number, name = pathlib.Path(member.name).parts
                versions[name].append((int(number), tar.extractfile(member).read().rstrip(b"\n")))
    return {name: sorted(texts) for name, texts in versions.items()}


def put(writes, disk):
    for offset, data in writes:
        disk[offset : offset + len(data)] = data


def last_change(disk):
    return struct.unpack_from("<L", disk, len(disk) - SECTOR)[0]


class Judge:
    def __init__(self, image, versions, folder):
        self.disk = bytearray(pathlib.Path(image).read_bytes())  # what was flushed
        self.versions = read_versions(versions)
        self.folder = pathlib.Path(folder)
        self.image = self.folder / "image"
        self.image.write_bytes(self.disk)
        with open(self.image, "r+b") as image:
            self.state = mmap.mmap(image.fileno(), 0)

    def judge(self, writes):
        """What is wrong with the state of the disk and these writes; nothing if it is right."""
        self.state[:] = self.disk
        put(writes, self.state)
        system = self.folder / "system"
        shutil.rmtree(system, ignore_errors=True)
        recovery = subprocess.run(
            ["/sbin/e2fsck", "-p", "-E", "journal_only", self.image], capture_output=True
        )
        if recovery.returncode > 1:
            return [f"e2fsck: {recovery.stdout}"]
        subprocess.run(
            ["/sbin/debugfs", "-R", f"rdump {FOLDER} {self.folder}", self.image],
            capture_output=True,
        )
        done = last_change(self.state)
        faults = []
        for name, versions in self.versions.items():
            path = system / name
            text = path.read_bytes().rstrip(b"\n") if path.exists() else None
            first = max((i for i, (number, _) in enumerate(versions) if number <= done), default=0)
            if all(text != version for _, version in versions[first:]):
                faults.append(f"after change {done} {name} is {text}")
        return faults


def judge_share(arguments):
    """Judges the share of one processor; gives two lists, for prefixes and reordered states."""
    (image, writes, versions, states, seed), share, shares = arguments
    chance = random.Random(int(seed))
    steps = list(read_writes(writes))
    picks = collections.Counter(
        chance.choices([at for at, step in enumerate(steps) if step], k=int(states))
    )
    found = [], []
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        judge = Judge(image, versions, folder)
        pending = []
        for at, step in enumerate(steps):
            if step is None:
                put(pending, judge.disk)
                pending = []
                continue
            pending.append(step)
            chance = random.Random(f"{seed} {at}")
            if at % shares != share:
                continue
            found[0].append((at, judge.judge(pending)))
            for _ in range(picks[at]):
                part = chance.random()
                kept = [write for write in pending if chance.random() < part]
                found[1].append((at, judge.judge(kept)))
        put(pending, judge.disk)
        # The record goes as far as the series.
        assert all(last_change(judge.disk) == texts[-1][0] for texts in judge.versions.values())
    return found


def main():
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    shares = os.cpu_count()
    with multiprocessing.Pool(shares) as pool:
        results = pool.map(judge_share, [(sys.argv[1:], i, shares) for i in range(shares)])
    wrong = 0
    for kind, what in enumerate(["prefixes of the writes", "states with writes missing"]):
        states = sorted(state for result in results for state in result[kind])
        faults = [(at, fault) for at, fault in states if fault]
        print(f"{len(states)} {what}, {len(faults)} wrong")
        wrong += len(faults)
        for at, fault in faults[:5]:
            print(f"  write {at}: {'; '.join(fault)}"[:400])
    return wrong > 0


if __name__ == "__main__":
    sys.exit(main())
