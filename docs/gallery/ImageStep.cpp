#include "ImageStep.h"

namespace gallery
{

void ImageStep(
    Studio & studio, ImageStepWords const & words, std::vector<std::string> arguments, Figure const & shown, Look look)
{
    std::string const name = arguments.front() + "-" + std::to_string(studio.NextNumber());
    arguments.insert(arguments.end(), {"-o", name + ".tif"});
    studio.Step(words.title, words.text, arguments, [&]() -> std::vector<Figure> {
        return {shown, {Show(name, Load(name + ".tif"), look), words.caption}};
    });
}

} // namespace gallery
