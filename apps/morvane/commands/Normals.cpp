#include "morvane/Command.h"
#include "morvane/support/Images.h"
#include "morvane/support/Outputs.h"
#include "morvane/support/Pictures.h"
#include "morvane/support/Planes.h"
#include "morvane/support/ProgramError.h"

#include <morvane/features/Normals.h>
#include <morvane/filters/Statistics.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace program
{

namespace
{

namespace fs = std::filesystem;
using morvane::features::eNormalComputationMethod;

constexpr int kLargestRadius = 1000;
/// Windows across an edge fit far worse than the others, which would all have the first colour of the scale.
constexpr double kMediansInPicture = 5.0;

eNormalComputationMethod MethodCalled(std::string const & wanted)
{
    using namespace morvane::features;
    for (auto const & [name, method] : std::vector<std::pair<std::string, eNormalComputationMethod>>{
             {"moving", WindowMoving},
             {"pyramid", Pyramid},
             {"search", PyramidWindowMoving},
             {"search-root", PyramidWindowMovingSqrt}})
    {
        if (name == wanted) return method;
    }
    throw CLI::ValidationError("--method", wanted + " is none of moving, pyramid, search, search-root");
}

class NormalsCommand final : public Command
{
public:
    [[nodiscard]] std::string Name() const override { return "normals"; }

    [[nodiscard]] std::string Summary() const override
    {
        return "Find the surface normal at each point of a scan, by planes fitted to its surroundings";
    }

    void Declare(CLI::App & arguments) override
    {
        arguments
            .add_option(
                "--x", m_x,
                "X seen from the scanner, an image of one channel; where all three are 0, and where one is not finite, "
                "there is no point")
            ->required();
        arguments.add_option("--y", m_y, "Y, an image of the same size")->required();
        arguments.add_option("--z", m_z, "Z, an image of the same size")->required();
        DeclareLengthScale(arguments, m_scale, "the coordinates");
        DeclareWindow(arguments);
        arguments.add_option(
            "-o,--output", m_output,
            "the normals, of length 1 and towards the scanner, a TIFF of floats with the channels X, Y, Z; 0 where "
            "there is none. Pixels beside points have one too");
        arguments.add_option(
            "--rms", m_rms,
            "the root mean square distance of the points from their plane, in the unit of the scaled coordinates, a "
            "TIFF of floats; 0 where there is no normal");
        arguments.add_option(
            "--picture", m_picture,
            "a picture of the normals: X, Y, Z from -1 to 1 as red, green, blue, black where there is none");
        arguments.add_option(
            "--rms-picture", m_rmsPicture,
            "a picture of the distances in false colours, black where there is no normal, white from five times the "
            "median on");
    }

    void Run() override
    {
        Outputs outputs;
        std::vector<fs::path> const inputs{m_x, m_y, m_z};
        outputs.Declare(m_output, {".tif", ".tiff"}, inputs);
        outputs.Declare(m_rms, {".tif", ".tiff"}, inputs);
        outputs.Declare(m_picture, {}, inputs);
        outputs.Declare(m_rmsPicture, {}, inputs);

        cv::Mat const x = ReadCoordinate(m_x);
        cv::Mat const y = ReadCoordinate(m_y);
        cv::Mat const z = ReadCoordinate(m_z);
        CheckSize(m_y, y, x, m_x);
        CheckSize(m_z, z, x, m_x);
        Measure({x, y, z});

        if (!m_output.empty()) outputs.Write(m_output, m_normals);
        if (!m_rms.empty()) outputs.Write(m_rms, m_distances);
        if (!m_picture.empty()) outputs.Write(m_picture, PictureOfNormals(m_normals));
        if (!m_rmsPicture.empty())
        {
            outputs.Write(
                m_rmsPicture,
                FalseColourPicture(m_distances, {.isOfMeasured = true, .high = kMediansInPicture * m_median}));
        }
        outputs.Commit();

        PrintImage(m_x, x);
        std::cout << "points  " << m_points << "\nnormals  " << m_planes << "\nmedian rms  " << m_median << '\n';
        if (m_points > 0 && m_planes == 0) PrintAdviceOnScale();
    }

private:
    void DeclareWindow(CLI::App & arguments)
    {
        auto const take = [this](std::string const & wanted) {
            m_method = MethodCalled(wanted);
        };
        arguments
            .add_option_function<std::string>(
                "--method", take,
                "the window of a pixel: moving (one for all, the default); pyramid, search, search-root (the best of "
                "all radii up to the given one, by rms / points, and the last by rms / root of points)")
            ->type_name("NAME");
        arguments
            .add_option("--radius", m_radius, "of the window, or the largest that is tried, in pixels; 3 by default")
            ->check(CLI::Range(1, kLargestRadius));
        arguments.add_flag(
            "--wrap", m_wraps, "the first column is a neighbour of the last, as in a full panorama; not for pyramid");
    }

    [[nodiscard]] static cv::Mat ReadCoordinate(fs::path const & file)
    {
        cv::Mat image = ReadImage(file);
        CheckChannels(file, image, {1});
        return image;
    }

    /// Fits the planes, in double precision: integers of 32 bits are exact in it.
    void Measure(std::vector<cv::Mat> coordinates)
    {
        cv::Mat1b isFinite(coordinates[0].size(), uchar{255});
        for (cv::Mat & coordinate : coordinates)
        {
            // Not a finite product is 0 there and is not 0 here.
            cv::Mat const lengths = ScaledLengths(coordinate, CV_64F, m_scale);
            isFinite &= (lengths != 0.0) | (coordinate == 0);
            coordinate = lengths;
        }
        for (cv::Mat & coordinate : coordinates)
        {
            coordinate.setTo(0.0, ~isFinite);
        }
        cv::Mat cloud;
        cv::merge(coordinates, cloud);
        cv::Mat const isPoint = IsAnyChannelSet(cloud);
        cv::Mat existing;
        isPoint.convertTo(existing, CV_64F);
        cv::Mat normals;
        cv::Mat rms;
        if (!morvane::features::ComputeMatNormal(
                existing, coordinates[0], coordinates[1], coordinates[2], normals, rms, m_method, m_radius, m_wraps))
        {
            throw ProgramError(m_x, "was refused");
        }
        cv::Mat const hasPlane = IsAnyChannelSet(normals);
        rms.setTo(0.0, ~hasPlane);
        normals.convertTo(m_normals, CV_32F);
        rms.convertTo(m_distances, CV_32F);
        (void)morvane::filters::MedianNoZero(m_distances, m_median);
        m_points = cv::countNonZero(isPoint);
        m_planes = cv::countNonZero(hasPlane);
    }

    fs::path m_x;
    fs::path m_y;
    fs::path m_z;
    fs::path m_output;
    fs::path m_rms;
    fs::path m_picture;
    fs::path m_rmsPicture;
    eNormalComputationMethod m_method = morvane::features::WindowMoving;
    double m_scale = 1.0;
    int m_radius = 3;
    bool m_wraps = false;

    cv::Mat m_normals;
    cv::Mat m_distances;
    double m_median = 0.0;
    int m_points = 0;
    int m_planes = 0;
};

Registered<NormalsCommand> const registered;

} // namespace

} // namespace program
