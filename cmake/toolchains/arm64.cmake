# 64-bit ARM: char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VELTO_SYSROOT arm64)
set(VELTO_TRIPLET aarch64-linux-gnu)
set(VELTO_MULTIARCH aarch64-linux-gnu)
set(VELTO_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
