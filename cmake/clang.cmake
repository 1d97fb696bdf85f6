# Clang: the version that the project is checked with or, on a release without it, that release's own.
find_program(ZEL_CLANG NAMES clang-16 clang REQUIRED)
find_program(ZEL_CLANGXX NAMES clang++-16 clang++ REQUIRED)
set(CMAKE_C_COMPILER ${ZEL_CLANG})
set(CMAKE_CXX_COMPILER ${ZEL_CLANGXX})
