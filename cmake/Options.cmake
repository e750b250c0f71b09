# Everything beside the library is built only when morvane is the top-level project.
option(MORVANE_BUILD_APPS "Build the morvane program, the scan simulator and the gallery" ${PROJECT_IS_TOP_LEVEL})
option(MORVANE_BUILD_TESTS "Build the tests (needs the programs)" ${PROJECT_IS_TOP_LEVEL})
option(MORVANE_BUILD_BENCHMARKS "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
option(MORVANE_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" ${PROJECT_IS_TOP_LEVEL})
set(MORVANE_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread; empty for none")
option(MORVANE_COVERAGE "Instrument for line and branch coverage" OFF)
option(MORVANE_INSTALL "Install the library, its headers and package files, and the program" ${PROJECT_IS_TOP_LEVEL})
