#!/usr/bin/env python3
"""engines_test.py slurm|parallel PROGRAM: the scripts that "lumiset export" prints render a film in parts.

Slurm is run for real, one controller and one node of this machine, with keys, states and sockets in a folder that is
gone afterwards. Exit status 77, with the reason, where the engine is not there or cannot start.
"""

import getpass
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SKIPPED = 77
PARTS = 4
# Hostile to every quoting there is.
FILM = "it's \"a\" $(touch gone) `touch gone`\nfilm;&.mkv"
OUTPUT = "out $HOME 'x'\n\"%x-\\.mkv"
LOOK = ["--effect", "Old TV", "--preset", "Snow", "--effect", "Outline", "--key", "Width@0=0", "--key", "Width@50%=60",
        "--codec", "ffv1"]


class Skip(Exception):
    pass


def need(*names):
    for name in names:
        if not shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin"):
            raise Skip(f"{name} is not installed")


def wait_for(what, condition, seconds=60):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.1)
    raise AssertionError(f"{what} did not come within {seconds} s")


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


class Film:
    """A film, what one run makes of it, and a folder for its parts."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.run([program, "render", "scene-full:320x180:8:25", FILM, "-q", "--effect", "Alpha Processor"])
        self.run([program, "render", FILM, "one.mkv", "-q", *LOOK])

    def run(self, words, **more):
        done = subprocess.run(words, cwd=self.folder, capture_output=True, text=True, **more)
        assert done.returncode == 0, f"{words}: {done.stdout}{done.stderr}"
        return done.stdout

    def script(self, engine, *options):
        text = self.run([self.program, "export", engine, FILM, OUTPUT, *LOOK, "--parts", str(PARTS), *options])
        path = self.folder / "a script.sh"
        path.write_text(text)
        return path

    def part(self, number):
        return self.folder / f"{OUTPUT}.part{number}of{PARTS}"

    def unfinished(self):
        return list(self.folder.glob(".lumiset-*part*"))

    def pictures(self, name):
        command = ["ffmpeg", "-v", "error", "-i", f"file:{name}", "-f", "framemd5", "-"]
        return [line for line in self.run(command).splitlines() if not line.startswith("#")]

    def check(self):
        expected = self.pictures("one.mkv")
        assert len(expected) == 200
        assert self.pictures(OUTPUT) == expected, "the film in parts is another one"
        assert not (self.folder / "gone").exists(), "a name was run as a command"
        assert not self.unfinished()

    def clear(self):
        for number in range(1, PARTS + 1):
            self.part(number).unlink(missing_ok=True)
        (self.folder / OUTPUT).unlink(missing_ok=True)


def children_of(folder, program):
    """The programs that render a part at the moment, by the number of their part."""
    found = {}
    for process in Path("/proc").iterdir():
        try:
            words = (process / "cmdline").read_bytes().split(b"\0")
            inside = os.readlink(process / "cwd") == str(folder)
        except OSError:
            continue
        if inside and words[0].decode() == program and b"--part" in words:
            found[int(words[words.index(b"--part") + 1].split(b"/")[0])] = int(process.name)
    return found


def kill_one(film):
    """Ends one render of a part at once, which leaves its unfinished file behind."""
    wait_for("a part", lambda: film.unfinished() and children_of(film.folder, film.program))
    number, process = next(iter(children_of(film.folder, film.program).items()))
    os.kill(process, signal.SIGKILL)
    return number


def test_parallel(program, folder):
    need("parallel", "ffmpeg")
    film = Film(program, folder)
    script = film.script("parallel", "--jobs", "2", "--threads", "1")
    running = subprocess.Popen(["bash", script.name], cwd=folder, stderr=subprocess.PIPE, text=True)
    kill_one(film)
    _, log = running.communicate(timeout=300)
    assert running.returncode == 0, log
    assert "\r" not in log and " frames in " in log, log
    film.check()

    # A part that fails in every attempt: the film does not come, and another run renders that part alone.
    film.clear()
    film.part(3).mkdir()
    failed = subprocess.run(["bash", script.name], cwd=folder, capture_output=True, text=True, timeout=300)
    assert failed.returncode != 0 and not (folder / OUTPUT).exists(), failed.stderr
    film.part(3).rmdir()
    before = {number: film.part(number).stat().st_mtime_ns for number in (1, 2, 4)}
    film.run(["bash", script.name], timeout=300)
    assert before == {number: film.part(number).stat().st_mtime_ns for number in before}
    film.check()
    again = subprocess.run(["bash", script.name], cwd=folder, capture_output=True, text=True, timeout=300)
    assert again.returncode != 0 and "--overwrite" in again.stderr, "a film that is there was not told of"


class Slurm:
    """One controller and one node."""

    def __init__(self, folder):
        need("munged", "slurmctld", "slurmd", "sbatch", "scontrol", "ffmpeg")
        self.folder = folder
        self.processes = {}
        control, node = free_ports(2)
        user = getpass.getuser()
        host = socket.gethostname().split(".")[0]
        for name in ("munge", "state", "spool"):
            (folder / name).mkdir(mode=0o700)
        key = folder / "munge/key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        self.munge = folder / "munge/socket"
        (folder / "cgroup.conf").write_text("CgroupPlugin=cgroup/v1\n")
        self.conf = folder / "slurm.conf"
        self.conf.write_text(f"""
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={control}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={self.munge},cred_expire=5
CredType=cred/munge
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
SlurmdTimeout=10
InactiveLimit=0
MinJobAge=300
KillWait=2
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=2,sched_min_interval=500000
NodeName={host} NodeAddr=127.0.0.1 Port={node} CPUs=2 State=UNKNOWN
PartitionName=films Nodes={host} Default=YES MaxTime=INFINITE State=UP OverSubscribe=NO
""")
        self.environment = {**os.environ, "SLURM_CONF": str(self.conf),
                            "PATH": os.environ["PATH"] + ":/usr/sbin:/sbin"}
        self.host = host

    def start(self, name, *words):
        log = open(self.folder / f"{name}.out", "ab")
        self.processes[name] = subprocess.Popen(words, env=self.environment, stdout=log, stderr=log)

    def start_node(self):
        self.start("slurmd", "slurmd", "-D", "-N", self.host)

    def stop(self, name):
        process = self.processes.pop(name, None)
        if process is not None:
            process.kill()
            process.wait()

    def __enter__(self):
        base = self.folder / "munge"
        self.start("munged", "munged", "--foreground", "--force", f"--socket={self.munge}", f"--key-file={base}/key",
                   f"--pid-file={base}/pid", f"--seed-file={base}/seed", f"--log-file={base}/log")
        self.start("slurmctld", "slurmctld", "-D", "-i")
        self.start_node()
        try:
            wait_for("the node", lambda: self.call("sinfo", "--noheader", "-o", "%T").strip() == "idle", 30)
        except AssertionError as reason:
            self.__exit__()
            text = "".join((self.folder / f"{name}.out").read_text(errors="replace")[-600:]
                           for name in ("munged", "slurmctld", "slurmd"))
            raise Skip(f"Slurm does not start here: {reason}\n{text}") from reason
        return self

    def __exit__(self, *_):
        for name in ("slurmd", "slurmctld", "munged"):
            self.stop(name)

    def call(self, *words):
        return subprocess.run(words, env=self.environment, capture_output=True, text=True, check=False).stdout

    def state(self, job):
        """The states of a job's tasks, with how often each was started anew."""
        tasks = {}
        for line in self.call("scontrol", "show", "job", job, "--oneliner").splitlines():
            fields = dict(word.split("=", 1) for word in line.split() if "=" in word)
            tasks[fields.get("ArrayTaskId", "0")] = (fields["JobState"], int(fields["Restarts"]))
        return tasks

    def wait(self, film, seconds=180):
        wait_for("the end of the film", lambda: all(state not in ("PENDING", "RUNNING", "COMPLETING", "CONFIGURING")
                                                    for state, _ in self.state(film).values()), seconds)


def test_slurm(program, folder):
    with Slurm(Path(tempfile.mkdtemp(dir=folder))) as slurm:
        film = Film(program, folder)
        script = film.script("slurm", "--partition", "films", "--threads", "1", "--retries", "1")

        def submit():
            ids = subprocess.run(["bash", script.name], cwd=folder, env=slurm.environment, capture_output=True,
                                 text=True, check=False)
            assert ids.returncode == 0, ids.stderr
            return ids.stdout.split()

        def logs(parts, join):
            return {name.name: name.read_text() for name in folder.glob("lumiset-*.log")
                    if f"-{parts}-" in name.name or name.name == f"lumiset-{join}.log"}

        # One render is killed: its task is run again, the others are not.
        parts, join = submit()
        killed = kill_one(film)
        slurm.wait(join)
        tasks = slurm.state(parts)
        told = f"{tasks}\n{slurm.state(join)}\n{logs(parts, join)}"
        assert set(tasks.values()) <= {("COMPLETED", 0), ("COMPLETED", 1)} and len(tasks) == PARTS, told
        assert tasks[str(killed)] == ("COMPLETED", 1), f"part {killed} was killed: {told}"
        assert sum(restarts for _, restarts in tasks.values()) == 1, told
        film.check()
        log = "".join(logs(parts, join).values())
        assert "\r" not in log and " frames in " in log, log
        assert f"part{killed}of" in log

        # The node is lost while it renders, and comes back.
        film.clear()
        parts, join = submit()
        wait_for("a part", film.unfinished)
        slurm.stop("slurmd")
        for process in children_of(folder, program).values():
            os.kill(process, signal.SIGKILL)
        slurm.call("scontrol", "update", f"NodeName={slurm.host}", "State=DOWN", "Reason=lost")
        slurm.start_node()
        slurm.call("scontrol", "update", f"NodeName={slurm.host}", "State=RESUME")
        slurm.wait(join)
        assert {state for state, _ in slurm.state(parts).values()} == {"COMPLETED"}, slurm.state(parts)
        film.check()

        # A part that fails in every attempt: no film, and no job that waits for ever. Then the rest alone is rendered.
        film.clear()
        film.part(2).mkdir()
        parts, join = submit()
        slurm.wait(join)
        assert slurm.state(parts)["2"] == ("FAILED", 1), slurm.state(parts)
        assert slurm.state(join)["0"][0] == "CANCELLED" and not (folder / OUTPUT).exists()
        film.part(2).rmdir()
        before = {number: film.part(number).stat().st_mtime_ns for number in (1, 3, 4)}
        parts, join = submit()
        slurm.wait(join)
        assert before == {number: film.part(number).stat().st_mtime_ns for number in before}
        film.check()


def main(engine, program):
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # goes through what ends the engine
    with tempfile.TemporaryDirectory(prefix="lumiset_test_") as name:
        folder = Path(name).resolve()
        os.environ["XDG_CONFIG_HOME"] = name
        try:
            {"parallel": test_parallel, "slurm": test_slurm}[engine](str(Path(program).resolve()), folder)
        except Skip as reason:
            print(f"Skipped: {reason}.")
            return SKIPPED
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
