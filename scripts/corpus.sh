#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes a folder of real pictures for benchmarks (default: corpus/) from Debian packages, which are downloaded and unpacked
# but not installed. The pictures are the packages' own or converted from them in a fixed way.
# Usage: scripts/corpus.sh [FOLDER]      needs ImageMagick and python3 (scripts/setup.sh bench installs them)
set -euo pipefail
cd "$(dirname "$0")/.."
folder=${1:-corpus}
mkdir -p "$folder/packages" "$folder/unpacked" "$folder/pictures/icons"
folder=$(cd "$folder" && pwd)
pictures=$folder/pictures
[ -e "$folder/complete2" ] && { echo "corpus: $pictures"; exit 0; }

packages="plasma-workspace-wallpapers mate-backgrounds oxygen-icon-theme openclipart-png"
for package in $packages; do
    if ! ls "$folder/packages/${package}"_*.deb >/dev/null 2>&1; then
        echo "corpus: downloading $package"
        (cd "$folder/packages" && apt-get download "$package" >/dev/null)
    fi
    dpkg-deb -x "$folder/packages/${package}"_*.deb "$folder/unpacked"
done

convert=$(command -v convert-im6.q16 || command -v convert)
share=$folder/unpacked/usr/share
clipart=$share/openclipart/png
backgrounds=$share/backgrounds/mate
plain=(-depth 8 -strip -define png:exclude-chunk=all)
echo "corpus: making the pictures"
# PNG files as shipped
cp "$share/wallpapers/Patak/contents/images_dark/3840x2160.png" "$pictures/wall_rgb.png"          # 8 MP RGB, rendered
cp "$clipart/recreation/party/balloons-aj.png" "$pictures/draw_rgba.png"                          # 1.3 MP RGBA, soft gradients
cp "$clipart/animals/mammals/big_cats/tiger_graig_ryan_smith_-_01.png" "$pictures/clip_rgba.png"  # 2.3 MP RGBA, flat
cp "$clipart/recreation/religion/daedalus_and_ikarus_pete_01.png" "$pictures/pal_draw.png"        # 0.9 MP palette with tRNS
# converted, because photos are only shipped as JPEG
"$convert" "$backgrounds/abstract/Elephants_3840x2160.jpg" "${plain[@]}" "PNG24:$pictures/photo_rgb.png" # 8 MP RGB, noisy
"$convert" "$backgrounds/nature/TwoWings.jpg" -colorspace Gray "${plain[@]}" \
    -define png:color-type=0 -define png:bit-depth=8 "$pictures/grey.png"                         # 4 MP grey photo
"$convert" "$share/wallpapers/Autumn/contents/images/2560x1600.jpg" -colors 256 "${plain[@]}" "PNG8:$pictures/pal_photo.png"
"$convert" "$pictures/draw_rgba.png" -strip -interlace PNG "PNG32:$pictures/ilace_rgba.png"       # Adam7
"$convert" "$backgrounds/nature/Dune.jpg" "${plain[@]}" -interlace PNG "PNG24:$pictures/ilace_rgb.png"

# 8 MP with alpha: a photo under a vignette, and the drawings enlarged
"$convert" "$pictures/photo_rgb.png" \( -size 3840x2160 radial-gradient:white-gray30 \) -alpha off -compose CopyOpacity \
    -composite "${plain[@]}" "PNG32:$pictures/photo_rgba8.png"
"$convert" "$pictures/draw_rgba.png" -filter Catrom -resize 8294400@ "${plain[@]}" "PNG32:$pictures/draw_rgba8.png"
"$convert" "$pictures/clip_rgba.png" -filter Catrom -resize 8294400@ "${plain[@]}" "PNG32:$pictures/clip_rgba8.png"

# 200 small icons: of each size the first 40 (by path) that are 8-bit RGBA, not interlaced
python3 - "$share/icons/oxygen/base" "$pictures/icons" <<'PY'
import pathlib, shutil, struct, sys

source, target = map(pathlib.Path, sys.argv[1:])
for size in (16, 22, 32, 64, 128):
    taken = 0
    for path in sorted((source / f"{size}x{size}").rglob("*.png")):
        head = path.read_bytes()[:33]
        if path.is_symlink() or head[:8] != b"\x89PNG\r\n\x1a\n":
            continue
        width, _, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", head[16:29])
        if (width, depth, colour, interlaced) == (size, 8, 6, 0):
            shutil.copyfile(path, target / f"{size:03d}_{taken:02d}_{path.name}")
            taken += 1
            if taken == 40:
                break
PY
touch "$folder/complete2"
echo "corpus: $pictures"
