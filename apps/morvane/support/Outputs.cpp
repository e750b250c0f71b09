#include "morvane/support/Outputs.h"

#include "morvane/support/ProgramError.h"
#include "morvane/support/QuietStderr.h"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <random>
#include <system_error>

namespace program
{

namespace fs = std::filesystem;

namespace
{

std::string LowerExtension(fs::path const & file)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    return extension;
}

bool IsSamePlace(fs::path const & one, fs::path const & other)
{
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(one), error) == fs::weakly_canonical(fs::absolute(other), error);
}

fs::path FolderOf(fs::path const & file)
{
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

bool CanEncode(fs::path const & file)
{
    try
    {
        return !file.extension().empty() && cv::haveImageWriter(file.string());
    }
    catch (cv::Exception const &)
    {
        return false;
    }
}

/// How an image is encoded. OpenCV takes three channels of floats in a TIFF for radiances, and would keep neither their
/// signs nor their last digits; without compression it does.
std::vector<int> EncodingOf(cv::Mat const & image)
{
    constexpr int kNoCompression = 1;
    if (image.type() != CV_32FC3) return {};
    return {cv::IMWRITE_TIFF_COMPRESSION, kNoCompression};
}

/// A name beside the file that nobody uses; the extension stays, as it chooses the encoder.
fs::path TemporaryNameFor(fs::path const & file)
{
    std::random_device random;
    fs::path name;
    do
    {
        name = FolderOf(file) / file.stem();
        name += ".partial-" + std::to_string(random()) + file.extension().string();
    } while (fs::exists(name));
    return name;
}

} // namespace

Outputs::~Outputs()
{
    for (Pending const & pending : m_pending)
    {
        std::error_code error;
        fs::remove(pending.temporary, error);
    }
}

void Outputs::Declare(
    fs::path const & file, std::vector<std::string> const & extensions, std::vector<fs::path> const & inputs)
{
    if (file.empty()) return;
    std::string const extension = LowerExtension(file);
    if (!extensions.empty() && std::find(extensions.begin(), extensions.end(), extension) == extensions.end())
    {
        std::string accepted;
        for (std::string const & one : extensions)
        {
            accepted += (accepted.empty() ? "" : " or ") + one;
        }
        throw ProgramError(file, "must end in " + accepted);
    }
    if (!CanEncode(file)) throw ProgramError(file, "has no ending of an image format that can be written");

    DeclareText(file, inputs);
}

void Outputs::DeclareText(fs::path const & file, std::vector<fs::path> const & inputs)
{
    if (file.empty()) return;
    std::error_code error;
    if (!fs::is_directory(FolderOf(file), error)) throw ProgramError(file, "its folder does not exist");
    auto const status = fs::status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) throw ProgramError(file, "is there and is no plain file");
    for (fs::path const & input : inputs)
    {
        if (!input.empty() && IsSamePlace(file, input))
            throw ProgramError(file, "is the input, which would be overwritten");
    }
    for (fs::path const & other : m_declared)
    {
        if (IsSamePlace(file, other)) throw ProgramError(file, "is given for two outputs");
    }
    m_declared.push_back(file);
}

void Outputs::Write(fs::path const & file, cv::Mat const & image)
{
    m_pending.push_back({TemporaryNameFor(file), file});
    bool written = false;
    {
        QuietStderr const quiet;
        try
        {
            written = cv::imwrite(m_pending.back().temporary.string(), image, EncodingOf(image));
        }
        catch (cv::Exception const &)
        {
            written = false;
        }
    }
    if (!written) throw ProgramError(file, "cannot be written");
}

void Outputs::WriteText(fs::path const & file, std::string const & text)
{
    m_pending.push_back({TemporaryNameFor(file), file});
    std::ofstream stream(m_pending.back().temporary, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) throw ProgramError(file, "cannot be written");
}

void Outputs::Commit()
{
    for (Pending const & pending : m_pending)
    {
        std::error_code error;
        fs::rename(pending.temporary, pending.file, error);
        if (error) throw ProgramError(pending.file, "cannot be written: " + error.message());
    }
    m_pending.clear();
}

} // namespace program
