# 32-bit ARM: char is unsigned, a 64-bit number is aligned to eight bytes; time has 64 bits, as is Debian 13's own choice there.
# Libraries of Debian 12 have 32 bits there; the only time that tests hand to one, by its address, is read right all the same.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VELTO_SYSROOT armhf)
set(VELTO_TRIPLET arm-linux-gnueabihf)
set(VELTO_MULTIARCH arm-linux-gnueabihf)
set(VELTO_QEMU qemu-arm)
set(CMAKE_CXX_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64 -Wno-psabi")
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
