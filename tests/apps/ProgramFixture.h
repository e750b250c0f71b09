/// @file
/// What the tests of the program share.
#pragma once

#include "process/Process.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace morvane::tests
{

/// Runs the program, with a folder of its own for each test, gone afterwards.
class Program : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string name = (std::filesystem::temp_directory_path() / "morvane-program-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        m_folder = name;
    }

    void TearDown() override { std::filesystem::remove_all(m_folder); }

    [[nodiscard]] std::string In(std::string const & name) const { return (m_folder / name).string(); }

    [[nodiscard]] std::set<std::string> Files() const
    {
        std::set<std::string> names;
        for (auto const & entry : std::filesystem::directory_iterator(m_folder))
        {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    static process::Outcome Run(std::vector<std::string> const & arguments)
    {
        return process::Run(MORVANE_PROGRAM, arguments);
    }

    /// Expects status 2, nothing on the standard output, and one line that names what is wrong.
    static void ExpectFailure(std::vector<std::string> const & arguments, std::vector<std::string> const & named)
    {
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        EXPECT_EQ(outcome.errors.rfind("morvane", 0), 0U) << outcome.errors;
        for (std::string const & word : named)
        {
            EXPECT_NE(outcome.errors.find(word), std::string::npos) << outcome.errors << " does not name " << word;
        }
    }

    void WriteText(std::string const & name, std::string const & text) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }

    [[nodiscard]] std::string ReadText(std::string const & name) const
    {
        std::ifstream stream(m_folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Three zones with 4 neighbours, two with 8, one with 8 round the circle.
    void WriteScan(std::string const & name, int type = CV_8UC1) const
    {
        cv::Mat const drawn =
            (cv::Mat_<uchar>(3, 5) << 7, 0, 0, 0, 0, //
             0, 9, 0, 0, 3,                          //
             0, 0, 0, 0, 3);
        cv::Mat image;
        drawn.convertTo(image, CV_MAT_DEPTH(type));
        std::vector<cv::Mat> const channels(static_cast<std::size_t>(CV_MAT_CN(type)), image);
        cv::merge(channels, image);
        ASSERT_TRUE(cv::imwrite(In(name), image));
    }

    [[nodiscard]] std::filesystem::path const & Folder() const { return m_folder; }

private:
    std::filesystem::path m_folder;
};

/// The image as it is in the file.
inline cv::Mat Read(std::string const & file)
{
    return cv::imread(file, cv::IMREAD_UNCHANGED);
}

} // namespace morvane::tests
