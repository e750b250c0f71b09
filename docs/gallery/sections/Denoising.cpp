#include "ImageStep.h"
#include "Section.h"

#include "scansim/Scan.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace gallery
{

namespace
{

using namespace scansim;

/// The part of the room that is shown, large enough for the noise to be seen: floor, table and pillar.
cv::Rect const kPart(0, 150, 320, 280);

/// An image with noise at its measured pixels.
cv::Mat WithNoise(cv::Mat const & image, double deviation)
{
    cv::RNG random(1);
    cv::Mat noise(image.size(), CV_32F);
    random.fill(noise, cv::RNG::NORMAL, 0.0, deviation);
    cv::Mat noisy;
    cv::add(image, noise, noisy, image != 0, image.depth());
    return noisy;
}

/// The picture of errors from -8 to 8 mm, mid-grey for none; black where nothing was measured.
cv::Mat PictureOfErrors(cv::Mat const & heights, cv::Mat const & truth)
{
    cv::Mat picture;
    cv::Mat(heights - truth).convertTo(picture, CV_8U, 127.0 / 0.008, 128.0);
    picture.setTo(0, heights == 0);
    return picture;
}

void DrawIntensity(Studio & studio)
{
    cv::Mat const noisy = WithNoise(Load("room_intensity.png")(kPart), 2000.0);
    Save("noisy_intensity.png", noisy);
    ImageStep(
        studio,
        {"Noise of the receiver",
         "To a part of the room's intensity noise was added, of a deviation of 2000 levels. NLMeansParallel averages "
         "it away on walls and floor, where many patches look alike. Edges stay sharp, as patches across an edge look "
         "different and count for nothing; the legs of the table, fainter than the noise, go with it. A border of 12 "
         "pixels has no full patches, and stays as it is.",
         "The filtered intensity"},
        {"denoise", "noisy_intensity.png", "--strength", "700"},
        {Show("noisy_intensity", noisy, Look::Grey), "Intensity with noise"}, Look::Grey);
}

void DrawHeights(Studio & studio)
{
    cv::Mat const heights = Simulate(MakeRoom(), RoomStation(0), {}).z(kPart);
    cv::Mat const truth = Simulate(MakeRoom(), RoomStation(0), WithoutNoise({})).z(kPart);
    Save("room_heights.tif", heights);
    Save("height_errors.png", PictureOfErrors(heights, truth));
    studio.Step(
        "Noise of the ranges",
        "The scanner measures ranges with a deviation of 2 mm. Here are the heights in the same part, filtered in "
        "tenths of a millimetre, as means are cut to whole levels. Shown is what is wrong with them, from -8 mm, "
        "black, "
        "to 8 mm, white, which the simulation knows. What is left is noise at rims, where no patch looks alike, and in "
        "the border.",
        {"denoise", "room_heights.tif", "--scale", "10000", "--strength", "10", "-o", "smooth_heights.tif"}, [&] {
            Save("smooth_height_errors.png", PictureOfErrors(Load("smooth_heights.tif"), truth));
            return std::vector<Figure>{
                {Show("room_heights", heights, Look::Relief), "Heights in a part of the room"},
                {"height_errors.png", "Errors before"},
                {"smooth_height_errors.png", "Errors after"}};
        });
}

void DrawDenoising(Studio & studio)
{
    studio.ThePage().BeginSection(
        "Denoising",
        "Non-local means: each pixel becomes a mean of the pixels around it, weighted by how much the patches around "
        "them look alike.");
    DrawIntensity(studio);
    DrawHeights(studio);
}

/// The image, or the middle of one so large that it would take minutes.
cv::Mat MiddleOf(cv::Mat const & image)
{
    constexpr int kLargestSide = 2000;
    cv::Size const size(std::min(image.cols, kLargestSide), std::min(image.rows, kLargestSide));
    cv::Point const corner((image.cols - size.width) / 2, (image.rows - size.height) / 2);
    return image(cv::Rect(corner, size));
}

void DrawUserImage(Studio & studio, UserImage const & own)
{
    if (own.image.channels() != 1) return;
    Stretch const stretch = StretchOf(own.image);
    double const range = stretch.high - stretch.low;
    if (!(range > 0.0)) return;
    cv::Mat const middle = MiddleOf(own.image);
    bool const isWhole = middle.size() == own.image.size();
    if (!isWhole) Save("own-middle.tif", middle);

    studio.ThePage().BeginSection(
        "Denoising", "Each pixel becomes a mean of the pixels around it, weighted by how much the patches around them "
                     "look alike.");
    // A hundredth of the range, whatever the unit; in floats in a thousand levels.
    bool const isFloat = own.image.depth() == CV_32F || own.image.depth() == CV_64F;
    std::vector<std::string> arguments{"denoise", isWhole ? own.file.string() : "own-middle.tif", "--strength"};
    arguments.push_back(isFloat ? "10" : Number(std::max(std::round(range / 100.0), 1.0)));
    if (isFloat) arguments.insert(arguments.end(), {"--scale", Number(1000.0 / range)});
    ImageStep(
        studio,
        {"Noise of a hundredth of the range",
         isWhole ? "Edges and details that stand out by more stay." : "The middle of the image, as it is large.",
         "The filtered image"},
        arguments, {Show("own-noisy", middle, Look::Grey), isWhole ? "The image" : "Its middle"}, Look::Grey);
}

RegisteredSection const registered({100, DrawDenoising, DrawUserImage});

} // namespace

} // namespace gallery
