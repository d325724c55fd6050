# 32-bit ARM Linux, soft-float ABI, with Debian's cross compiler.
#
# For a vendor toolchain, copy this file, change what is marked (1) to (4) and configure with
#   cmake -S . -B build/device -DCMAKE_TOOLCHAIN_FILE=<the copy> -DCMAKE_BUILD_TYPE=MinSizeRel
# docs/building.md has an example.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

# (1) The compilers. Both are needed; the module is linked with the C compiler.
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)

# (2) The processor, if the compiler's default is not the device's, for example:
#   set(CMAKE_C_FLAGS_INIT "-mcpu=arm926ej-s")
#   set(CMAKE_CXX_FLAGS_INIT "-mcpu=arm926ej-s")

# (3) Where headers and libraries of the device are. A toolchain with a sysroot of its own needs
#   set(CMAKE_SYSROOT <path>)
# and, when the Lua 5.3 headers are elsewhere, that place in TQ_DEVICE_ROOT.
set(TQ_DEVICE_ROOT "" CACHE PATH "Tree with the device's Lua 5.3")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TQ_DEVICE_ROOT)
set(CMAKE_FIND_ROOT_PATH ${TQ_DEVICE_ROOT} /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# (4) How the tests run here. Leave it out to build only.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/arm-linux-gnueabi)
