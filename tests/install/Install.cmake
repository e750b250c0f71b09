# Installs the tree `build`, then moves it to `prefix`: what is installed must not remember where it was put first.
file(REMOVE_RECURSE ${prefix} ${prefix}-first)
execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${prefix}-first
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${prefix}-first ${prefix})

file(GLOB_RECURSE texts ${prefix}/*.cmake ${prefix}/*.pc)
foreach(text IN LISTS texts)
    file(STRINGS ${text} traces REGEX "prefix-first|morvane_settings")
    if(traces)
        message(FATAL_ERROR "${text} holds what only the build knows: ${traces}")
    endif()
endforeach()

# The installed program finds the library it came with.
execute_process(COMMAND ${prefix}/${bin}/morvane --help OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
