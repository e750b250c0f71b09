# The program that the README shows is the one that is compiled and run.
file(READ ${source}/README.md readme)
file(READ ${source}/examples/consumer/main.cpp program)
string(FIND "${readme}" "```cpp\n${program}```\n" position)
if(position EQUAL -1)
    message(FATAL_ERROR "README.md does not show examples/consumer/main.cpp as it is")
endif()
