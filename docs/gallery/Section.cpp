#include "Section.h"

#include "process/Process.h"

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace gallery
{

namespace
{

std::vector<Section> & Registry()
{
    static std::vector<Section> sections;
    return sections;
}

/// As one would type it: words with blanks in quotes.
std::string CommandLine(std::vector<std::string> const & arguments)
{
    std::string line = "morvane";
    for (std::string const & argument : arguments)
    {
        bool const isPlain = argument.find_first_of(" '\"$\\;&|<>*?()") == std::string::npos;
        line += isPlain ? " " + argument : " '" + argument + "'";
    }
    return line;
}

} // namespace

Studio::Studio(Page & page, std::filesystem::path program)
    : m_page(page)
    , m_program(std::move(program))
{}

void Save(std::string const & file, cv::Mat const & image)
{
    if (!cv::imwrite(file, image)) throw std::runtime_error(file + ": cannot be written");
}

cv::Mat Load(std::string const & file)
{
    cv::Mat image = cv::imread(file, cv::IMREAD_UNCHANGED);
    if (image.empty()) throw std::runtime_error(file + ": cannot be read");
    return image;
}

std::string Number(double value)
{
    std::array<char, 32> digits{};
    char * const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::filesystem::path Show(std::string const & name, cv::Mat const & image, Look look)
{
    std::string const file = name + "-preview.png";
    Save(file, Preview(image, look));
    return file;
}

void Studio::Step(
    std::string const & title, std::string const & text, std::vector<std::string> const & arguments,
    std::vector<Figure> const & figures)
{
    Step(title, text, arguments, [&figures] { return figures; });
}

void Studio::Step(
    std::string const & title, std::string const & text, std::vector<std::string> const & arguments,
    std::function<std::vector<Figure>()> const & figures)
{
    process::Outcome const outcome = process::Run(m_program, arguments);
    std::string const command = CommandLine(arguments);
    if (outcome.status != 0) throw std::runtime_error(command + ": " + outcome.errors);
    m_page.AddStep(title, text, command, figures(), outcome.output, outcome.seconds);
}

std::vector<Section> Sections()
{
    std::vector<Section> sections = Registry();
    std::stable_sort(sections.begin(), sections.end(), [](Section const & one, Section const & other) {
        return one.order < other.order;
    });
    return sections;
}

RegisteredSection::RegisteredSection(Section section)
{
    Registry().push_back(std::move(section));
}

} // namespace gallery
