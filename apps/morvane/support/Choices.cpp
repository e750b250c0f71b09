#include "morvane/support/Choices.h"

#include "morvane/support/ProgramError.h"

#include <algorithm>
#include <cmath>

namespace program
{

void CheckExactlyOne(std::vector<Choice> const & choices)
{
    auto const count =
        std::count_if(choices.begin(), choices.end(), [](Choice const & choice) { return choice.isGiven; });
    if (count == 1) return;
    std::string names;
    for (Choice const & choice : choices)
    {
        names += (names.empty() ? "" : ", ") + choice.name;
    }
    throw ProgramError("exactly one of these must be given: " + names);
}

CLI::Validator IsNumberAbove(double bound)
{
    auto const check = [bound](std::string const & text) -> std::string {
        double number = 0.0;
        bool const isFit = CLI::detail::lexical_cast(text, number) && std::isfinite(number) && number > bound;
        return isFit ? "" : text + " is no number above " + CLI::detail::to_string(bound);
    };
    return {check, ""};
}

} // namespace program
