# 32-bit PC: a 64-bit number is aligned to four bytes, and numbers are calculated with more digits than they keep.
# Time and sizes of files have 32 bits. A 64-bit PC runs its programs without qemu.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(VELTO_SYSROOT i386)
set(VELTO_TRIPLET i686-linux-gnu)
set(VELTO_MULTIARCH i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_SYSROOT}/lib/ld-linux.so.2 --library-path
    ${CMAKE_SYSROOT}/lib/i386-linux-gnu:${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu)
