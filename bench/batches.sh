#!/bin/bash
# SPDX-License-Identifier: MIT
# Measures `pixkit convert --resize` of many files of about 100 KB beside vipsthumbnail and mogrify: time, processors kept
# busy, most memory, and how near the results are to the same filter without a shortcut; then how long the command takes to
# start. docs/batches.md says what came of it.
#
#   batches.sh COMMAND [FILES [ROUNDS [MANY]]]   such as build/release/src/cli/pixkit 400 5 10000
#
# All programs work on FILES pictures in each of the ROUNDS (400 and 3 unless said otherwise), then the command alone on MANY.
#
# Needs imagemagick, libvips-tools and python3, and the pictures of scripts/corpus.sh in corpus/. The machine should be idle;
# rounds are interleaved and medians quoted all the same.
set -euo pipefail
[ $# -gt 0 ] || { sed -n '3,12p' "$0"; exit 2; }
command=$(realpath "$1") files=${2:-400} rounds=${3:-3} many=${4:-0}
cd "$(dirname "$0")/.."
corpus=${PIXKIT_CORPUS:-corpus/pictures}
[ -d "$corpus" ] || scripts/corpus.sh corpus
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Parts of photographs, as many as there are; more files are further links to them.
mkdir "$work/parts"
convert "$corpus/photo_rgb.png" -crop 768x720 +repage -quality 88 "$work/parts/photo%03d.jpg"
convert "$corpus/wall_rgb.png" -crop 768x720 +repage -quality 88 "$work/parts/wall%03d.jpg"
convert "$corpus/photo_rgb.png" -crop 256x180 +repage -depth 8 "PNG24:$work/parts/photo%03d.png"
for kind in jpg png; do
    mkdir "$work/$kind"
    parts=("$work"/parts/*."$kind")
    for ((i = 0; i < files || i < many; ++i)); do
        ln "${parts[i % ${#parts[@]}]}" "$work/$kind/$(printf %05d "$i").$kind"
    done
    echo "$kind: $files files of $(($(du -bc "${parts[@]}" | tail -n 1 | cut -f 1) / ${#parts[@]} / 1000)) kB on average"
done

PIXKIT=$command WORK=$work ROUNDS=$rounds FILES=$files MANY=$many python3 - <<'PYTHON'
import glob, os, resource, shutil, statistics, subprocess, time

PIXKIT, WORK = os.environ["PIXKIT"], os.environ["WORK"]
ROUNDS, FILES, MANY = (int(os.environ[name]) for name in ("ROUNDS", "FILES", "MANY"))
SIZE, QUALITY = "192x192", "80"  # PNG: our level 1 gives smaller files than the others' usual ones


def lines(kind, files, jobs="2"):
    """What makes the files smaller, by the name of the program. Others than ours are told to use one filter, too."""
    saving = {"jpg": ["--quality", QUALITY], "png": ["--png-level", "1"]}[kind]
    vips_saving = {"jpg": f"[Q={QUALITY}]", "png": ""}[kind]
    return {
        "pixkit": [PIXKIT, "convert", *files, f"{WORK}/out-pixkit/", "--to", kind, "--resize", SIZE, *saving, "--jobs", jobs, "-q", "--overwrite"],
        "vipsthumbnail": ["vipsthumbnail", "--size", SIZE, "-o", f"{WORK}/out-vipsthumbnail/%s.{kind}{vips_saving}", *files],
        "mogrify": ["mogrify", "-path", f"{WORK}/out-mogrify", "-resize", SIZE, "-quality", QUALITY if kind == "jpg" else "65", *files],
    }


def run(line):
    """Seconds, processors kept busy, and MB of memory at most."""
    start = time.monotonic()
    process = subprocess.Popen(line, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    wall = time.monotonic() - start
    if process.returncode != 0:
        raise SystemExit(f"{line[0]} failed")
    return wall, (usage.ru_utime + usage.ru_stime) / wall, usage.ru_maxrss / 1024, usage.ru_utime + usage.ru_stime


def fresh(name):
    shutil.rmtree(f"{WORK}/out-{name}", ignore_errors=True)
    os.mkdir(f"{WORK}/out-{name}")


def decibels(name, kind):
    """The mean over the parts of the distance to what the filter gives of the whole picture, without losses."""
    values = []
    for file in sorted(glob.glob(f"{WORK}/{kind}/*"))[:16]:
        made = f"{WORK}/out-{name}/{os.path.basename(file)}"
        size = subprocess.run(["identify", "-format", "%wx%h", made], capture_output=True, text=True, check=True).stdout
        exact = f"{WORK}/exact.png"
        subprocess.run(["convert", file, "-filter", "Lanczos", "-resize", size + "!", exact], check=True)
        answer = subprocess.run(["compare", "-metric", "PSNR", exact, made, "null:"], capture_output=True, text=True)
        values.append(float(answer.stderr.split()[0]))
    return statistics.mean(values)


def mean_size(name):
    return statistics.mean(file.stat().st_size for file in os.scandir(f"{WORK}/out-{name}"))


for kind in ("jpg", "png"):
    every = sorted(glob.glob(f"{WORK}/{kind}/*"))
    files = every[:FILES]
    found = {name: [] for name in lines(kind, files)}
    for _ in range(ROUNDS):
        for name, line in lines(kind, files).items():
            fresh(name)
            found[name].append(run(line))
    own = statistics.median(each[0] for each in found["pixkit"])
    work = statistics.median(each[3] for each in found["pixkit"])
    for name, runs in found.items():
        wall, busy, memory, processor = (statistics.median(column) for column in zip(*runs))
        print(f"{kind} {name:14} {wall:8.2f} s ({wall / own:5.2f} x)  {processor:8.2f} s of processors ({processor / work:5.2f} x)  "
              f"{busy:4.2f} busy  {memory:6.0f} MB  {decibels(name, kind):5.1f} dB  {mean_size(name):7.0f} bytes")
    fresh("pixkit")
    print(f"{kind} pixkit, the first 100 files: {run(lines(kind, files[:100])['pixkit'])[2]:.0f} MB")
    if MANY:
        fresh("pixkit")
        wall, busy, memory, _ = run(lines(kind, every[:MANY])["pixkit"])
        print(f"{kind} pixkit, {MANY} files: {wall:.1f} s, {busy:.2f} busy, {memory:.0f} MB")

small = f"{WORK}/small.png"
subprocess.run(["convert", "-size", "16x16", "gradient:red-blue", f"PNG24:{small}"], check=True)
for name, line in {"nothing (true)": ["true"], "--version": [PIXKIT, "--version"], "16 x 16 to BMP": [PIXKIT, "convert", small, f"{WORK}/small.bmp", "--overwrite", "-q"]}.items():
    runs = [run(line) for _ in range(100)]
    print(f"start: {name:15} {1000 * min(each[0] for each in runs):5.1f} ms at best, {1000 * statistics.median(each[0] for each in runs):5.1f} ms usually")
PYTHON
