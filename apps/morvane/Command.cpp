#include "morvane/Command.h"

namespace program
{

std::vector<std::unique_ptr<Command>> & Commands()
{
    // Inside a function: commands register before main, in any order.
    static std::vector<std::unique_ptr<Command>> commands;
    return commands;
}

} // namespace program
