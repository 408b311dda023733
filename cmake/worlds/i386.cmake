# 32-bit programs of the host's own compiler, run by an emulator: not every kernel takes them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_C_COMPILER gcc -m32)
set(CMAKE_CXX_COMPILER g++ -m32)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
