# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 (g++-mingw-w64-x86-64).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(tamlo_mingw_triplet x86_64-w64-mingw32)
# The posix thread model: the one whose libstdc++ has std::thread and std::mutex in GCC 12.
find_program(CMAKE_C_COMPILER NAMES ${tamlo_mingw_triplet}-gcc-posix ${tamlo_mingw_triplet}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${tamlo_mingw_triplet}-g++-posix ${tamlo_mingw_triplet}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${tamlo_mingw_triplet}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${tamlo_mingw_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
# Libraries outside the MinGW root too: MATLAB's import libraries live in its own tree.
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The C and C++ runtimes go inside the DLL, so a simulator loads it without MinGW's DLLs.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
