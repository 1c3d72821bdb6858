# shellcheck shell=bash
# Makes and boots the virtual board; to be sourced, in the top folder of the tree.

BOARD=build/board
MODULES=(crc16 crc32c_generic libcrc32c mbcache jbd2 virtio_mmio virtio_blk ext4)

# Kernel, modules and BusyBox for the board: downloaded and unpacked, not installed. apt gets a
# state of its own, so that the machine keeps its architectures and package lists.
fetch_debian() {
    if [[ -d $BOARD/debian ]]; then return; fi
    echo "board: fetching kernel and BusyBox"
    local new=$BOARD/debian.new apt=$PWD/$BOARD/apt kernel package
    rm -rf $new "$apt"
    mkdir -p $new "$apt"/{state/lists,cache/archives}/partial
    : >"$apt/status"
    cat >"$apt/conf" <<CONF
#clear APT::Update;
APT::Architecture "armhf";
APT::Sandbox::User "root";
Dir::State "$apt/state";
Dir::State::status "$apt/status";
Dir::Cache "$apt/cache";
CONF
    apt-get -c "$apt/conf" -q update || echo "board: an index did not load; trying without it"
    kernel=$(apt-cache -c "$apt/conf" show --no-all-versions linux-image-armmp |
        sed -n 's/^Depends: \(linux-image-[^ ,]*\).*/\1/p')
    if [[ -z $kernel ]]; then board_fail "no index of armhf packages"; fi
    (cd "$apt/cache" && apt-get -c "$apt/conf" -q download "$kernel" busybox-static)
    for package in "$apt"/cache/*.deb; do dpkg-deb -x "$package" $new; done
    rm -rf "$apt"
    mv $new $BOARD/debian
}

# pack FOLDER: an archive that the kernel unpacks; several may follow one another.
pack() { (cd "$1" && find . | cpio -o -H newc --owner 0:0 --quiet) | gzip -1; }

# The initial RAM disk, and in $BOARD/config what a new disk holds.
make_initrd() {
    local root=$BOARD/root component module
    rm -rf $root $BOARD/config
    mkdir -p $root/{bin,lib,modules,job}
    for component in runtime board; do
        DESTDIR=$PWD/$root cmake --install build/arm --prefix /usr --strip \
            --component $component >/dev/null
    done
    rm -r "${root:?}/usr/share"
    install -s --strip-program=arm-linux-gnueabihf-strip -t $root/usr/bin \
        build/arm/tests/{shared_memory_tests,board/board_{changes,peer}}
    cp -L -t $root/lib \
        /usr/arm-linux-gnueabihf/lib/{ld-linux-armhf.so.3,lib{c,m,stdc++}.so.6,libgcc_s.so.1}
    cp $BOARD/debian/bin/busybox $root/bin
    ln -s bin/busybox $root/init
    for module in "${MODULES[@]}"; do
        find $BOARD/debian/lib/modules -name "$module.ko" -exec cp {} $root/modules \;
        if [[ ! -f $root/modules/$module.ko ]]; then board_fail "the kernel has no $module"; fi
    done
    echo "${MODULES[@]}" >$root/modules/order
    cp -R tests/board/root/. $root
    mv $root/etc/quenvel $BOARD/config
    mkdir $root/etc/quenvel
    pack $root >$BOARD/initrd
}

board_fail() {
    echo "board: $*" >&2
    exit 1
}

prepare_board() {
    install_packages "${BUILD_PACKAGES[@]}" g++-arm-linux-gnueabihf googletest \
        qemu-system-arm cpio e2fsprogs python3 xz-utils
    mkdir -p $BOARD
    fetch_debian
    cmake --preset arm >/dev/null
    cmake --build --preset arm --target src/all tools/all tests/board/all shared_memory_tests
    make_initrd
}

# make_disk IMAGE [SIZE]: with the shipped configuration.
make_disk() {
    rm -f "$1"
    /sbin/mke2fs -q -t ext4 -b 4096 -E root_owner=0:0 -d $BOARD/config "$1" "${2:-16M}" >/dev/null
}

# load_board IMAGE [FILE...]: makes the disk if there is none, and takes the files aboard.
load_board() {
    local job
    if [[ ! -f $1 ]]; then make_disk "$1"; fi
    job=$(mktemp -d -p $BOARD)
    mkdir "$job/job"
    if (($# > 1)); then cp -R "${@:2}" "$job/job"; fi
    { cat $BOARD/initrd && pack "$job"; } >"$1.initrd"
    rm -r "$job"
}

# boot_board IMAGE [NAME=VALUE...]: becomes the machine; the variables are init's. Where there is an
# IMAGE.writes, it gets a record of the disk's writes, and IMAGE.versions is a second disk.
boot_board() {
    local drive=format=raw,file=$1 second=()
    if [[ -e $1.writes ]]; then
        drive=driver=blklogwrites,file.driver=file,file.filename=$1
        drive+=,log.driver=file,log.filename=$1.writes
        second=(-drive "if=none,id=second,format=raw,file=$1.versions"
            -device "virtio-blk-device,drive=second")
    fi
    exec ${limit:+timeout --foreground "$limit"} \
        qemu-system-arm -M virt -cpu cortex-a15 -m 192 -nographic -nic none -no-reboot \
        -kernel $BOARD/debian/boot/vmlinuz-* -initrd "$1.initrd" \
        -append "console=ttyAMA0 loglevel=3 panic=-1 MOUNT=${BOARD_MOUNT-} ${*:2}" \
        "${second[@]}" -drive "if=none,id=disk,cache=writeback,$drive" \
        -device virtio-blk-device,drive=disk
}

# run_board IMAGE [NAME=VALUE...]: without a keyboard; its status is that of the job. `limit` is
# how long it may take, in seconds.
run_board() {
    (boot_board "$@") </dev/null | sed -u 's/\r$//' | tee "$1.log" |
        sed -u '/^board: exit status\|] reboot: Power down$/d; s/board: exit status [0-9]*$//'
    local status
    status=$(sed -n 's/.*board: exit status \([0-9]*\)$/\1/p' "$1.log")
    if [[ -z $status ]]; then board_fail "it ended without a status"; fi
    return "$status"
}
