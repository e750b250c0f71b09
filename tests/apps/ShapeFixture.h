/// @file
/// What the tests of the command `shape` share.
#pragma once

#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <string>
#include <vector>

namespace morvane::tests
{

/// An image with grey levels everywhere.
inline cv::Mat1b Texture()
{
    cv::Mat1b image(20, 27);
    cv::RNG random(11);
    random.fill(image, cv::RNG::UNIFORM, 1, 200);
    return image;
}

/// Runs the command, with texture.png at hand.
class ShapeProgram : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        ASSERT_TRUE(cv::imwrite(In("texture.png"), Texture()));
    }

    [[nodiscard]] static std::string Output(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "shape");
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }
};

} // namespace morvane::tests
