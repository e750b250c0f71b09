if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
endif()

# What every target of this repository is built with: morvane_settings is linked privately and never installed.
add_library(morvane_settings INTERFACE)
target_compile_features(morvane_settings INTERFACE cxx_std_20)

if(MSVC)
    target_compile_options(morvane_settings INTERFACE /W4 /permissive- /fp:precise
        $<$<BOOL:${MORVANE_WARNINGS_AS_ERRORS}>:/WX>)
else()
    target_compile_options(morvane_settings INTERFACE
        -Wall -Wextra -Wconversion -Wshadow
        $<$<BOOL:${MORVANE_WARNINGS_AS_ERRORS}>:-Werror>
        # Floating-point results are part of the contract: no fused multiply-add behind the source's back.
        -ffp-contract=off
        # Nobody asks errno or the exception flags after an operation; without them, loops with roots and choices compile to
        # vectors. The values stay the same.
        -fno-math-errno -fno-trapping-math)
    # The floor of the machines we serve: SSE4.2 and popcnt.
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        target_compile_options(morvane_settings INTERFACE -march=x86-64-v2)
    endif()
    target_compile_options(morvane_settings INTERFACE $<$<CONFIG:Release>:-O3>)
    if(MORVANE_SANITIZE)
        target_compile_options(morvane_settings INTERFACE
            -fsanitize=${MORVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
        target_link_options(morvane_settings INTERFACE -fsanitize=${MORVANE_SANITIZE})
    endif()
    if(MORVANE_COVERAGE)
        target_compile_options(morvane_settings INTERFACE --coverage)
        target_link_options(morvane_settings INTERFACE --coverage)
    endif()
endif()
