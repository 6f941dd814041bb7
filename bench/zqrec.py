#!/usr/bin/env python3
"""Decodes one 1,000,000-record file to CSV with zqrec and with a compiled
GnuCOBOL program doing the same work, and prints both rates and their ratio.

Each record holds a packed, a zoned, a big-endian binary and a 20-byte text
field (bench/zqrec.layout). The input is written by bench/zqrec_gen.cbl; the
COBOL decoder is bench/zqrec_decode.cbl. Both outputs must be identical (line
ends aside) or the run fails. Each program runs three times; the best run
counts. Rates are given by CPU time (user + system, what the program itself
costs) and by wall-clock time (what a user waits, which on a loaded machine
includes waiting for a processor).

Usage: bench/zqrec.py [BUILD_DIR] [RECORDS]
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
TOP = os.path.dirname(HERE)


def run(cmd):
    """Runs `cmd`; returns (wall seconds, cpu seconds)."""
    start = time.perf_counter()
    proc = subprocess.Popen(cmd)
    _, status, usage = os.wait4(proc.pid, 0)
    wall = time.perf_counter() - start
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit("bench: %s failed with status %d" % (cmd[0], os.waitstatus_to_exitcode(status)))
    return wall, usage.ru_utime + usage.ru_stime


def best(cmd, runs=3):
    results = [run(cmd) for _ in range(runs)]
    return min(r[0] for r in results), min(r[1] for r in results)


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(TOP, "build")
    records = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    zqrec = os.path.join(build, "bin", "zqrec")
    if not os.access(zqrec, os.X_OK):
        sys.exit("bench: %s is not built (cmake --build %s --target zqrec)" % (zqrec, build))
    cobc = shutil.which("cobc")
    if cobc is None:
        sys.exit("bench: cobc (GnuCOBOL) is not installed")
    fields = 4
    with tempfile.TemporaryDirectory(prefix="zqrec-bench-") as tmp:
        gen, dec = os.path.join(tmp, "gen"), os.path.join(tmp, "dec")
        for exe, src in ((gen, "zqrec_gen.cbl"), (dec, "zqrec_decode.cbl")):
            subprocess.run([cobc, "-x", "-O2", "-o", exe, os.path.join(HERE, src)], check=True,
                           cwd=tmp)
        data = os.path.join(tmp, "in.dat")
        subprocess.run([gen, data, str(records)], check=True)
        z_out, c_out = os.path.join(tmp, "zqrec.csv"), os.path.join(tmp, "cobol.csv")
        z_wall, z_cpu = best([zqrec, "decode", os.path.join(HERE, "zqrec.layout"), data,
                              "-o", z_out, "-q"])
        c_wall, c_cpu = best([dec, data, c_out])
        with open(z_out, "rb") as a, open(c_out, "rb") as b:
            if a.read().replace(b"\r\n", b"\n") != b.read():
                sys.exit("bench: zqrec and the COBOL program wrote different CSV")
    print("records: %d, fields per record: %d, outputs identical" % (records, fields))
    print("%-8s %14s %16s %14s %16s" % ("", "records/s cpu", "fields/s cpu", "records/s wall",
                                         "fields/s wall"))
    for name, wall, cpu in (("zqrec", z_wall, z_cpu), ("GnuCOBOL", c_wall, c_cpu)):
        print("%-8s %14.0f %16.0f %14.0f %16.0f" % (name, records / cpu, records * fields / cpu,
                                                    records / wall, records * fields / wall))
    print("ratio zqrec / GnuCOBOL: %.2f (cpu), %.2f (wall)" % (c_cpu / z_cpu, c_wall / z_wall))


if __name__ == "__main__":
    main()
