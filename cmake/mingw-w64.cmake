# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 compilers
# (posix threads, which Qt needs). Used for the Windows libraries and for our
# programs alike (scripts/windows); QUARV_WIN_PREFIX names the folder that
# holds the libraries built for Windows, searched before MinGW's own.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${MINGW_TRIPLE}-windres)
set(CMAKE_AR ${MINGW_TRIPLE}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${MINGW_TRIPLE}-gcc-ranlib-posix CACHE FILEPATH "")

# Carried into try_compile projects, which see only the toolchain file.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUARV_WIN_PREFIX)
set(CMAKE_FIND_ROOT_PATH /usr/${MINGW_TRIPLE})
if(QUARV_WIN_PREFIX)
  list(PREPEND CMAKE_FIND_ROOT_PATH ${QUARV_WIN_PREFIX})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
