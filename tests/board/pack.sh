#!/usr/bin/env bash
# pack.sh FOLDER BUILD: makes board.dtb and initrd.gz in FOLDER from Debian's kernel and shell in
# FOLDER/system and the programs and libraries of BUILD, a build for 32-bit ARM.
set -euo pipefail
PATH=$PATH:/usr/sbin:/sbin

: "${2:?usage: tests/board/pack.sh FOLDER BUILD}"
here=$(cd -- "$(dirname -- "$0")" && pwd)
folder=$(cd -- "$1" && pwd)
build=$(cd -- "$2" && pwd)
root=$folder/initrd
kernel=$(basename "$folder"/system/boot/vmlinuz-*)
version=${kernel#vmlinuz-}
target=/usr/arm-linux-gnueabihf/lib
depmod -b "$folder/system" "$version"

for ((level = 0; level < 256; ++level)); do printf '<%d %d>,' $((20 * level)) $level; done |
    sed 's/^/gpio-fan,speed-map = /; s/,$/;\n/' >"$folder/fan-speeds.dtsi"
dtc -q -I dts -O dtb -i "$folder" -o "$folder/board.dtbo" "$here/board.dtso"
fdtoverlay -i "$folder/system/usr/lib/linux-image-$version/aspeed-ast2600-evb.dtb" -o "$folder/board.dtb" "$folder/board.dtbo"

rm -rf "$root"
mkdir -p "$root"/{bin,dev,etc,proc,run,sys,tmp,lib/modules,tests}
cp "$here/init" "$root/init"
cp "$here/not-on-board" "$root/tests/"
cp "$folder/system/bin/busybox" "$root/bin/"
# In load order: each module follows those that it needs.
for module in gpio-aspeed i2c-aspeed at24 lm75 leds-pca955x leds-gpio gpio-fan evdev; do
    modprobe -d "$folder/system" -S "$version" --show-depends "$module" | awk '$1 == "insmod" { print $2 }'
done | awk '!seen[$0]++' | while read -r file; do
    cp "$file" "$root/lib/modules/"
    basename "$file" >>"$root/lib/modules/order"
done

for library in ld-linux-armhf.so.3 libc.so.6 libm.so.6 libstdc++.so.6 libgcc_s.so.1; do
    cp -L "$target/$library" "$root/lib/"
done
strip=arm-linux-gnueabihf-strip
for library in "$build"/lib/lib*.so*; do
    if [[ -h $library ]]; then
        cp -P "$library" "$root/lib/"
    else
        "$strip" -o "$root/lib/$(basename "$library")" "$library"
    fi
done
for program in "$build"/bin/*_tests; do
    # These tests do not depend on the board, which lacks boardweb's libraries.
    [[ $program != */boardweb_tests ]] || continue
    "$strip" -o "$root/tests/$(basename "$program")" "$program"
done
# The tests of boardctl expect the programs in `emulated`.
mkdir -p "$root$build/emulated"
for program in boardctl canned-host; do
    "$strip" -o "$root/bin/$program" "$build/bin/$program"
    ln -s "/bin/$program" "$root$build/emulated/$program"
done
cp "$here/../../packaging/linux-board.toml" "$root/etc/board.toml"

(cd "$root" && find . | cpio -o -H newc -R 0:0 --quiet) | gzip -1 >"$folder/initrd.gz"
