# What the files beside this one share: a build with one of Debian's cross compilers against the headers and libraries of a
# folder (scripts/test-arm makes build/sysroots/<architecture>), whose programs run under qemu. Set before: VELTO_SYSROOT,
# VELTO_TRIPLET (the compiler's), VELTO_MULTIARCH (the libraries') and, if it is wanted, VELTO_QEMU.
set(CMAKE_SYSTEM_NAME Linux)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroots/${VELTO_SYSROOT} ABSOLUTE)
set(CMAKE_C_COMPILER ${VELTO_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${VELTO_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${VELTO_MULTIARCH})
if(VELTO_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VELTO_QEMU} -L ${CMAKE_SYSROOT})
endif()

# Programs of this machine, everything else of that one.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${VELTO_MULTIARCH}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
