#!/usr/bin/env bash
# usage: run.sh BIN_DIR [SCENARIO...]
# The programs in BIN_DIR over the kernel's own USB: boots Debian's kernel in QEMU on the files of
# this machine, which stay as they are, plugs emulated chips into its virtual host controller, and
# does what a person does (the scenarios of guest.sh). A line a fact, and "N passed, N failed" at the
# end. Takes about five minutes. Needs the target usb-lab and packaging/apt-packages-long.txt; the
# kernel and what starts it are fetched once. Where they can't be had, or not be started, it says so
# and ends with 77.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
bin=$(cd "${1:?usage: run.sh BIN_DIR [SCENARIO...]}" && pwd)
work=${LAB:-$root/build/usb-lab}
limit=${LAB_SECONDS:-1200} # a machine that stands still is ended
mkdir -p "$work/fetched" "$work/out"
cd "$work"

fetch() { # PACKAGE: its files into a folder of the same name
  [ -d "$1" ] && return
  if [ -z "$1" ] || ! (cd fetched && timeout 300 apt-get download "$1" >/dev/null 2>&1); then
    echo "The package '$1' can't be fetched." >&2
    exit 77
  fi
  rm -rf "$1.part"
  dpkg -x fetched/"$1"_*.deb "$1.part"
  mv "$1.part" "$1"
}
kernel_package() {
  apt-cache depends linux-image-amd64 2>/dev/null |
    sed -n '0,/.*Depends: \(linux-image-[0-9].*\)/s//\1/p' || true
}
if [ ! -L kernel ]; then
  [ -n "$(kernel_package)" ] || timeout 300 apt-get update -qq >/dev/null 2>&1 || true
  name=$(kernel_package)
  fetch "$name"
  ln -s "$name" kernel
fi
packages=(udev kmod libkmod2)
for package in "${packages[@]}"; do fetch $package; done
version=$(ls kernel/lib/modules)
# Beside this machine's files, in one tree that may lie above them.
if [ ! -d tools ]; then
  rm -rf tools.part && mkdir tools.part
  for package in "${packages[@]}"; do
    for folder in bin sbin lib; do
      mkdir -p "tools.part/usr/$folder"
      [ ! -d $package/$folder ] || cp -a $package/$folder/. "tools.part/usr/$folder/"
    done
    [ ! -d $package/usr ] || cp -a $package/usr/. tools.part/usr/
  done
  (exec -a depmod tools.part/usr/bin/kmod -b "$work/kernel" "$version")
  mv tools.part tools
fi

cp "$here/guest.sh" "$root/packaging/60-corvane.rules" "$root/examples/police.lumora" out/
cp "$bin/usb-lab-chip" "$bin/usb-lab-claimer" out/

# What runs first: loads what reaches this machine's files, lays memory over them, and goes there.
rm -rf first && mkdir -p first/{bin,modules,proc,sys,dev,host,tools,memory,joined}
cp /bin/busybox first/bin/
modules=()
for wanted in virtio_pci 9pnet_virtio 9p overlay; do
  mapfile -t chain < <(awk -v end="/$wanted.ko:" 'index($0, end) { sub(":", ""); for (i = NF; i > 0; i--) print $i }' \
    "kernel/lib/modules/$version/modules.dep")
  for module in "${chain[@]}"; do
    [ -e "first/modules/$(basename "$module")" ] && continue
    cp "kernel/lib/modules/$version/$module" first/modules/
    modules+=("$(basename "$module")")
  done
done
share="trans=virtio,version=9p2000.L,msize=512000"
cat >first/init <<INIT
#!/bin/busybox sh
/bin/busybox --install -s /bin
export PATH=/bin
mount -t proc proc /proc; mount -t sysfs sysfs /sys; mount -t devtmpfs dev /dev
for module in ${modules[*]}; do insmod /modules/\$module; done
mount -t 9p -o $share,cache=loose,ro host /host
mount -t 9p -o $share,cache=loose,ro tools /tools
mount -t tmpfs memory /memory; mkdir /memory/above /memory/work
mount -t overlay -o lowerdir=/tools:/host,upperdir=/memory/above,workdir=/memory/work joined /joined
mkdir -p /joined/lib/modules /joined/lab
mount --bind /host$work/kernel/lib/modules /joined/lib/modules
mount -t 9p -o $share out /joined/lab
for folder in proc sys dev; do mount --move /\$folder /joined/\$folder; done
mount -t tmpfs run /joined/run; mkdir -p /joined/dev/shm; mount -t tmpfs shm /joined/dev/shm
chroot /joined /bin/bash /lab/guest.sh $bin ${*:2} </joined/dev/null
echo LAB-ENDS
poweroff -f
INIT
chmod +x first/init
(cd first && find . | cpio --quiet -o -H newc | gzip -1) >first.gz

shared() { # NAME FOLDER [OPTION]
  printf '%s\n' -fsdev "local,id=$1,path=$2,security_model=none,multidevs=remap$3" \
    -device "virtio-9p-pci,fsdev=$1,mount_tag=$1"
}
mapfile -t shares < <(shared host / ,readonly=on; shared tools "$work/tools" ,readonly=on; shared out "$work/out" "")
timeout "$limit" qemu-system-x86_64 -accel tcg,thread=multi -cpu max -smp 2 -m 1536 \
  -display none -nic none -no-reboot -kernel "$(echo kernel/boot/vmlinuz-*)" -initrd first.gz \
  -append "console=ttyS0 quiet panic=-1 mitigations=off" -serial stdio "${shares[@]}" \
  </dev/null >console.log 2>&1 || true
if ! grep -q LAB-BEGINS console.log; then
  echo "The virtual machine does not start here (see $work/console.log)." >&2
  tail -n 5 console.log >&2
  exit 77
fi
tr -d '\r' <console.log | sed -n 's/^.*\(PASS\|FAIL\|NOTE\) /\1 /p' | tee facts
grep -q LAB-ENDS console.log || echo "FAIL the lab ran to its end (see $work/console.log)" | tee -a facts
passed=$(grep -c '^PASS' facts || true)
failed=$(grep -c '^FAIL' facts || true)
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
