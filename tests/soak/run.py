#!/usr/bin/env python3
"""Wears the pool: run.py BINARY SECONDS [SEED]. Random chains and texts that fail, with random numbers of threads, SERIAL
and PARALLEL in between, and interrupts at any time. The process must come back from each, and end in order: with the
checking build that is no block lost, with a sanitizer's no report."""
import pathlib
import random
import signal
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "pool"))
import programmes  # noqa: E402


def session(r, binary):
    """One process. Returns what is wrong with its end, or nothing."""
    slots = r.randint(2, 17)
    texts = []
    for _ in range(r.randint(1, 6)):
        texts.append("%d SERIAL .\n" % r.choice([1, slots, 20, 200]))
        texts.append("%d PARALLEL .\n" % r.randint(1, slots))
        count = r.choice([slots + 1, 30, 300])
        texts.append(programmes.chain(r, r.randint(50, 300), count))
        texts.append(programmes.failures(r, r.randint(1, 6), count))
        if r.random() < 0.3:
            texts.append("CLEAR %d .. 1l1 * EXPONENTIAL NATURALLOG DUP * @big SET big big + DISCARD .\n" %
                         r.randint(1000, 100000))
    texts.append("CLEAR 20 .. DUP * SUM .\n")
    text = "".join(texts).encode("latin-1")
    process = subprocess.Popen([binary, "-q", "-c%d" % (slots - 1)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
    outputs, errors, started = [], [], threading.Event()

    def write():
        try:
            process.stdin.write(text)
            process.stdin.close()
        except BrokenPipeError:
            pass  # the status says why

    def read():
        outputs.append(process.stdout.read1())
        started.set()
        outputs.append(process.stdout.read())

    threads = [threading.Thread(target=write), threading.Thread(target=read),
               threading.Thread(target=lambda: errors.append(process.stderr.read()))]
    for thread in threads:
        thread.start()
    started.wait(60)  # before that, an interrupt ends a process as it ends any
    while process.poll() is None and r.random() < 0.9:
        time.sleep(r.uniform(0, 0.05))
        process.send_signal(signal.SIGINT)
    try:
        process.wait(timeout=120)
    except subprocess.TimeoutExpired:
        process.kill()
        return "hangs", text
    for thread in threads:
        thread.join()
    output = b"".join(outputs)
    said = errors[0].decode("latin-1")
    if process.returncode != 0 or "Sanitizer" in said:
        return "status %d: %s" % (process.returncode, said[-3000:]), text
    # The last text may be interrupted too.
    if b"\n 2870" not in output and b"User interrupt" not in output:
        return "wrong at the end", text
    return None, text


def main():
    binary, seconds = sys.argv[1], float(sys.argv[2])
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else int(time.time())
    print("seed", seed, flush=True)
    r, sessions, end = random.Random(seed), 0, time.monotonic() + seconds
    while time.monotonic() < end:
        wrong, text = session(r, binary)
        if wrong:
            pathlib.Path("soak.failed").write_bytes(text)
            print("after %d sessions: %s\nthe text is in soak.failed" % (sessions, wrong))
            return 1
        sessions += 1
    print("%d sessions" % sessions)
    return 0


if __name__ == "__main__":
    sys.exit(main())
