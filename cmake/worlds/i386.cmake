# 32-bit programs of the host's own compiler, run by an emulator: not every kernel takes them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_C_COMPILER gcc -m32)
set(CMAKE_CXX_COMPILER g++ -m32)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
# Times and files beyond what 32 bits count.
set(CMAKE_CXX_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64")
