#include "LabelStep.h"

namespace gallery
{

std::string LabelStep(
    Studio & studio, std::string const & title, std::string const & text, std::string const & input,
    Figure const & shown, std::vector<std::string> const & switches)
{
    std::string const name = "zones-" + std::to_string(studio.NextNumber());
    std::vector<std::string> arguments{"label", input};
    arguments.insert(arguments.end(), switches.begin(), switches.end());
    arguments.insert(arguments.end(), {"-o", name + ".tif", "--picture", name + ".png"});
    studio.Step(
        title, text, arguments, {shown, {name + ".png", "One colour for each zone, black where there is none"}});
    return name + ".tif";
}

} // namespace gallery
