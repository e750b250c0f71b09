#include "morvane/support/Shapes.h"

#include "morvane/support/Choices.h"

#include <opencv2/imgproc.hpp>

namespace program
{

CLI::Option * DeclareShape(CLI::App & arguments, int & shape)
{
    return DeclareNamed<int>(
        arguments, "--shape", shape,
        {{"rectangle", cv::MORPH_RECT}, {"cross", cv::MORPH_CROSS}, {"ellipse", cv::MORPH_ELLIPSE}},
        "the element of one step: rectangle (the default), cross, ellipse");
}

} // namespace program
