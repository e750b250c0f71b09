# Builds examples/consumer from nothing, against the library as `way` finds it, and runs it.
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(build_with_cmake directory)
    run(${CMAKE_COMMAND} -S ${directory} -B ${work} -G Ninja -D CMAKE_BUILD_TYPE=Release
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher} ${ARGN})
    run(${CMAKE_COMMAND} --build ${work} --target consumer)
endfunction()

if(way STREQUAL "find_package")
    build_with_cmake(${source}/examples/consumer -D CMAKE_PREFIX_PATH=${prefix})
elseif(way STREQUAL "add_subdirectory")
    build_with_cmake(${CMAKE_CURRENT_LIST_DIR}/subdirectory -D morvane_source=${source})
elseif(way STREQUAL "pkg_config")
    set(ENV{PKG_CONFIG_PATH} ${prefix}/${libdir}/pkgconfig)
    execute_process(
        COMMAND pkg-config --cflags --libs morvane
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND ${flags})
    run(${compiler} -std=c++20 ${source}/examples/consumer/main.cpp ${flags} -Wl,-rpath,${prefix}/${libdir}
        -o ${work}/consumer)
else()
    message(FATAL_ERROR "no such way: ${way}")
endif()

execute_process(COMMAND ${work}/consumer OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
if(NOT said STREQUAL "the second object has label 2 and 7200 pixels\n")
    message(FATAL_ERROR "the consumer said: ${said}")
endif()
