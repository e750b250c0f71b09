#include "morvane/support/Shapes.h"

#include <opencv2/imgproc.hpp>

#include <string>
#include <utility>
#include <vector>

namespace program
{

CLI::Option * DeclareShape(CLI::App & arguments, int & shape)
{
    auto const take = [&shape](std::string const & wanted) {
        for (auto const & [name, code] : std::vector<std::pair<std::string, int>>{
                 {"rectangle", cv::MORPH_RECT}, {"cross", cv::MORPH_CROSS}, {"ellipse", cv::MORPH_ELLIPSE}})
        {
            if (name != wanted) continue;
            shape = code;
            return;
        }
        throw CLI::ValidationError("--shape", wanted + " is none of rectangle, cross, ellipse");
    };
    return arguments
        .add_option_function<std::string>(
            "--shape", take, "the element of one step: rectangle (the default), cross, ellipse")
        ->type_name("NAME");
}

} // namespace program
