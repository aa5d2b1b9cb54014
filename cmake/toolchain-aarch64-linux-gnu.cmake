# Cross build for 64-bit Arm Linux on a Debian multiarch host: the
# aarch64-linux-gnu GCC, the target's libraries and CMake packages from the
# arm64 packages (/usr/lib/aarch64-linux-gnu), moc from the host's Qt tools,
# and test programs run through qemu-user.
#
#   cmake -S . -B build-arm64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-aarch64-linux-gnu.cmake
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Debian keeps the target's libraries and CMake packages under
# /usr/lib/aarch64-linux-gnu, which CMAKE_LIBRARY_ARCHITECTURE makes the
# search path; no other sysroot is involved.

# pkg-config (FindOpenSSL asks it for hints) must describe the target too.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:/usr/share/pkgconfig)

# The target's dynamic loader and libraries come from the multiarch packages
# (libc6:arm64 puts /lib/ld-linux-aarch64.so.1 in place), so qemu needs no
# -L prefix; the cross compiler's own copy of glibc under
# /usr/aarch64-linux-gnu is a different build and must not be mixed in.
# The CPU model is left to QEMU_CPU so that tests can pick one.
find_program(ZTUTIL_QEMU_AARCH64 qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZTUTIL_QEMU_AARCH64})
